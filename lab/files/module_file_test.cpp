// Modules of fabric files, what becomes of them, and every mistake with its line.
#include "base/input_error.h"
#include "lab/files/fabric_file.h"
#include "lab/run_text.h"

#include <gtest/gtest.h>

namespace ribkit::lab {
namespace {

const std::string head = R"(local = "a"
[[vsan]]
id = 1
[[switch]]
name = "a"
domain = 1
)"; // 6 lines
const std::string left = "[[module]]\nnumber = 2\nname = \"left\"\n";
const std::string event = "[[event]]\nat = \"1s\"\n";

std::string mistake(const std::string &text) {
    try {
        parse_fabric(head + text, "f");
    } catch (const base::input_error &error) {
        return error.what();
    }
    return "none";
}

TEST(module_file, modules_have_numbers_and_sizes) {
    const fabric f = parse_fabric(head + left +
                                      "unicast = 7\nlabel = 9\nper_vsan = 5\nports = 3\nslow = \"20ms\"\n"
                                      "[[module]]\nnumber = 1\n",
                                  "f");
    ASSERT_EQ(f.modules.size(), 2U);
    EXPECT_EQ(f.modules[0].number, 2U);
    EXPECT_EQ(f.modules[0].name, "left");
    EXPECT_EQ(f.modules[0].sizes.unicast, 7U);
    EXPECT_EQ(f.modules[0].sizes.multicast, fib::fib_sizes{}.multicast);
    EXPECT_EQ(f.modules[0].sizes.label, 9U);
    EXPECT_EQ(f.modules[0].sizes.per_vsan, 5U);
    EXPECT_EQ(f.modules[0].ports, 3U);
    EXPECT_EQ(f.modules[0].slow, std::chrono::milliseconds(20));
    EXPECT_EQ(f.modules[1].ports, usual_ports);
}

TEST(module_file, events_name_a_module_by_name_or_number) {
    fabric f = parse_fabric(head + left + event + "module = 2\nstate = \"upgrading\"\n" + event +
                                "module = \"left\"\nstate = \"restarting\"\n"
                                "room = { unicast = 6, label = 1, per_vsan = 7 }\n",
                            "f");
    ASSERT_EQ(f.events().size(), 2U);
    EXPECT_EQ(f.events()[0].turn, module_turn::upgrades);
    EXPECT_EQ(event_text(f, f.events()[0]), "module 2 (left) is upgrading");
    EXPECT_EQ(event_text(f, f.events()[1]),
              "module 2 (left) starts again, with room for 6 unicast, 1 label entries, 7 of a VSAN at most");
    f.apply(f.events()[0]);
    EXPECT_EQ(f.modules[0].sizes.unicast, fib::fib_sizes{}.unicast);
    f.apply(f.events()[1]);
    EXPECT_EQ(f.modules[0].sizes.unicast, 6U);
    EXPECT_EQ(f.modules[0].sizes.multicast, fib::fib_sizes{}.multicast);
    EXPECT_EQ(f.modules[0].sizes.label, 1U);
    EXPECT_EQ(f.modules[0].sizes.per_vsan, 7U);
}

TEST(module_file, a_room_says_something_of_one_table_or_of_none) {
    const auto of_room = [](const std::string &room) {
        const fabric f =
            parse_fabric(head + left + event + "module = 2\nstate = \"restarting\"\nroom = {" + room + "}\n", "f");
        const fabric_event &only = f.events().at(0);
        return event_text(f, only) + (only.room.says_something() ? "" : " with what it had");
    };
    const std::string again = "module 2 (left) starts again";
    EXPECT_EQ(of_room(""), again + " with what it had");
    EXPECT_EQ(of_room("multicast = 5"), again + ", with room for 5 multicast entries");
    EXPECT_EQ(of_room("label = 6"), again + ", with room for 6 label entries");
    EXPECT_EQ(of_room("per_vsan = 7"), again + ", 7 of a VSAN at most");
}

TEST(module_file, who_has_no_modules_forgets_their_events) {
    fabric f = parse_fabric(head + left + event + "module = 2\nstate = \"down\"\n", "f");
    f.forget_modules();
    EXPECT_TRUE(f.modules.empty());
    EXPECT_TRUE(f.events().empty());
}

TEST(module_file, mistakes_are_named_with_their_lines) {
    const std::string of_left = left + event + "module = \"left\"\n";
    const std::pair<std::string, std::string> cases[] = {
        {"[[module]]\nnumber = 0\n", "f:8: module 0 is outside 1 to 256"},
        {"[[module]]\nnumber = 257\n", "f:8: module 257 is outside 1 to 256"},
        {"[[module]]\nnumber = 1\n[[module]]\nnumber = 1\n", "f:10: module 1 is already there"},
        {left + "[[module]]\nnumber = 3\nname = \"left\"\n", "f:12: module 2 has the name \"left\" already"},
        {"[[module]]\nname = \"left\"\n", "f:7: [[module]] needs a key \"number\""},
        {"[[module]]\nnumber = 1\nports = 256\n", "f:9: ports 256 is more than 255"},
        {"[[module]]\nnumber = 1\nlabel = 16777217\n", "f:9: label 16777217 is more than 16777216"},
        {"[[module]]\nnumber = 1\nslow = \"soon\"\n", "f:9: \"soon\" is no time: \"3s\", \"250ms\" and \"1.5m\" are"},
        {event + "module = 2\nstate = \"up\"\n", "f:9: there is no module 2"},
        {left + event + "module = \"right\"\nstate = \"up\"\n", "f:12: there is no module \"right\""},
        {left + event + "module = true\nstate = \"up\"\n", "f:12: module takes a whole number from 0 to 4294967295"},
        {of_left, "f:10: [[event]] needs a key \"state\""},
        {of_left + "state = \"gone\"\n",
         "f:13: state of a module is \"up\", \"down\", \"upgrading\" or \"restarting\", not \"gone\""},
        {of_left + "state = \"up\"\ncost = 3\n", "f:14: cost means nothing beside module"},
        {of_left + "state = \"up\"\nroom = { unicast = 3 }\n", "f:14: room means nothing beside state \"up\""},
        {of_left + "state = \"restarting\"\nroom = 3\n", "f:14: room takes a table in curly brackets"},
        {of_left + "state = \"restarting\"\nroom = { ports = 3 }\n",
         "f:14: unknown key \"ports\" in room, which knows unicast, multicast, label, per_vsan"},
        {of_left + "state = \"restarting\"\nroom = { label = 16777217 }\n",
         "f:14: label 16777217 is more than 16777216"},
        {of_left + "client = 12\nstate = \"up\"\n", "f:12: an event has one subject, client or module"},
        {event + "client = 12\ndistance = 3\nroom = { label = 1 }\n", "f:11: room means nothing beside client"},
    };
    for (const auto &[text, said] : cases) {
        EXPECT_EQ(mistake(text), said) << text;
    }
}

} // namespace
} // namespace ribkit::lab
