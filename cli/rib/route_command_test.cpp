// Routes that are sent by hand, one by one and from a file, and what the RIB says to them.
#include "testing/running_rib.h"

#include <nlohmann/json.hpp>

namespace ribkit::cli {
namespace {

using testing::running_rib;

constexpr const char *to_101 = "0x650000/0xff0000 --vsan 1";

TEST_F(running_rib, a_route_is_added_found_and_deleted) {
    expect_run("route add", std::string(to_101) + " --via fc1/1",
               "unicast route 0x650000/0xff0000 of VSAN 1: added; the RIB holds 1 route of this VSAN's table\n");
    EXPECT_EQ(run("route get", to_101).output, run("show fcu").output);
    EXPECT_EQ(run("route get", "0x650102 --vsan 1").output, run("show fcu").output);
    expect_run("route get", "0x650102/0xffffff --vsan 1",
               "ribkit: unicast route 0x650102/0xffffff of VSAN 1: the RIB at " + url + " holds none\n", 1);
    expect_run("route del", to_101,
               "unicast route 0x650000/0xff0000 of VSAN 1: deleted; the RIB holds 0 routes of this VSAN's table\n");
    expect_run("route del", to_101, "ribkit: unicast route 0x650000/0xff0000 of VSAN 1: no entry\n", 1);
}

TEST_F(running_rib, routes_of_all_tables_are_found_and_deleted) {
    add_routes();
    for (const char *route : {"0x660000/0xff0000 --vsan 1", "--mcast 0xff1234 --vsan 1", "--mcast 0 --vsan 1",
                              "--label 0x700000/0xff0000 --match 0x64100 --vsan 1",
                              "--label --source fc1/7 --match 0x10100 --match 0x20100 --vsan 20"}) {
        EXPECT_EQ(run("route get", route).exit_code, 0) << route;
        EXPECT_EQ(run("route del", route).exit_code, 0) << route;
        EXPECT_EQ(run("route get", route).exit_code, 1) << route;
    }
    expect_run("show fcm", "", "nothing to show\n");
    expect_run("show fcl", "", "nothing to show\n");
}

TEST_F(running_rib, a_label_without_match_goes_with_a_unicast_route) {
    expect_run("route add", "--label 0x650000/0xff0000 --vsan 1 --via fc1/1+0x10100",
               "label route 0x650000/0xff0000 of VSAN 1: added; the RIB holds 1 route of this VSAN's table\n");
    EXPECT_NE(run("show fcl").output.find("      Labels  00010100\n"), std::string::npos);
}

TEST_F(running_rib, a_label_alone_is_matched_and_its_hops_are_all_told) {
    const std::string route = "--label --match 0x10100 --vsan 1";
    testing::background monitor(command("monitor"));
    ASSERT_TRUE(testing::in_time([&] { return monitor.so_far().find("0 label routes\n") != std::string::npos; }));
    expect_run("route add", route + " --via fc1/1 --via fc1/2+0x20100",
               "label route of label 0x10100 in VSAN 1: added; the RIB holds 1 route of this VSAN's table\n");
    const std::string said = "label label route of label 0x10100 in VSAN 1, rib-config: by fc1/1, by fc1/2+0x20100\n";
    EXPECT_TRUE(testing::in_time([&] { return monitor.so_far().find(said) != std::string::npos; })) << monitor.so_far();
    EXPECT_EQ(run("route del", route).exit_code, 0);
    EXPECT_EQ(run("route get", route).exit_code, 1);
}

// Answers are all that comes to who deletes, the last one to the delete itself.
TEST_F(running_rib, a_delete_whose_answer_was_damaged_has_taken_effect) {
    for (const char *damaged : {"1", "2", "3"}) {
        EXPECT_EQ(run("route add", std::string(to_101) + " --via fc1/1").exit_code, 0);
        const testing::input_file script(std::string("truncate ") + damaged + " 3\n");
        const testing::outcome ended = run("route del", std::string(to_101) + " --faults " + script.path());
        EXPECT_EQ(ended.exit_code, 0) << damaged << ": " << ended.output;
        EXPECT_NE(ended.output.find(": deleted; the RIB holds "), std::string::npos) << ended.output;
        EXPECT_EQ(run("route get", to_101).exit_code, 1);
    }
}

TEST_F(running_rib, who_owns_a_route_keeps_it) {
    EXPECT_EQ(run("client", "examples/fabrics/small.toml").exit_code, 0);
    expect_run("route del", to_101,
               "ribkit: unicast route 0x650000/0xff0000 of VSAN 1: object is owned by another app\n", 1);
    const testing::outcome json = run("route del", std::string(to_101) + " --json 2>/dev/null");
    EXPECT_EQ(json.exit_code, 1);
    EXPECT_NE(json.output.find(R"("text": "object is owned by another app")"), std::string::npos) << json.output;
}

TEST_F(running_rib, a_file_is_loaded) {
    const testing::input_file file("# by hand\n\nadd --vsan 1 0x650000/0xff0000 --via fc1/1 --domain 101\n"
                                   "add --mcast --vsan 1 0xff0001 --via fc1/1 --via \"port-channel 3\"\n"
                                   "del --vsan 1 0x990000/0xff0000\ndel --mcast --vsan 1 0xff0001\n");
    expect_run("route load", file.path(),
               "ribkit: " + file.path() + ":5: unicast route 0x990000/0xff0000 of VSAN 1: no entry\n" +
                   "2 added, 1 deleted, 1 refused\n",
               1);
    expect_run("route load", "- < " + file.path(),
               "ribkit: standard input:5: unicast route 0x990000/0xff0000 of VSAN 1: no entry\n"
               "2 added, 1 deleted, 1 refused\n",
               1);
    const testing::input_file none("# nothing\n");
    expect_run("route load", none.path(), "0 added, 0 deleted, 0 refused\n");
}

TEST_F(running_rib, what_became_of_a_file_is_told_in_json) {
    const testing::input_file file("# two\nadd --vsan 1 0x650000/0xff0000 --via fc1/1\n"
                                   "del --vsan 1 0x990000/0xff0000\n");
    const testing::outcome ended = run("route load", file.path() + " --json"); // standard error first
    EXPECT_EQ(ended.exit_code, 1);
    const auto json = nlohmann::json::parse(ended.output.substr(ended.output.find('[')));
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["line"], 2);
    EXPECT_EQ(json[0]["action"], "add");
    EXPECT_EQ(json[0]["route"], "unicast route 0x650000/0xff0000 of VSAN 1");
    EXPECT_EQ(json[0]["result"], 0);
    EXPECT_EQ(json[0]["held"], 1);
    EXPECT_EQ(json[1]["line"], 3);
    EXPECT_EQ(json[1]["action"], "del");
    EXPECT_EQ(json[1]["text"], "no entry");
    const testing::input_file none("# nothing\n");
    EXPECT_EQ(nlohmann::json::parse(run("route load", none.path() + " --json").output), nlohmann::json::array());
}

TEST_F(running_rib, nothing_of_a_file_with_a_mistake_is_sent) {
    const auto refused = [&](const std::string &line) {
        const testing::input_file file("add --vsan 1 0x650000/0xff0000 --via fc1/1\n" + line + "\n");
        const testing::outcome ended = run("route load", file.path());
        EXPECT_EQ(ended.exit_code, 2) << line;
        return ended.output.substr(std::min(file.path().size(), ended.output.size()));
    };
    EXPECT_EQ(refused("get --vsan 1 0x650000"), ":2: \"get\": a line begins with add or del\n");
    EXPECT_EQ(refused("add --vsan 1 0x650000/0xff00 --via fc1/1"),
              ":2: 0x650000/0xff00: the FC ID has bits outside of the mask\n");
    EXPECT_EQ(refused("add 0x650000 --via fc1/1"), ":2: --vsan is required\n");
    EXPECT_EQ(refused("add --vsan 1 0x650000"), ":2: --via is required\n");
    EXPECT_EQ(refused("add 0x650000 --via fc1/1 --vsan"), ":2: --vsan: 1 required VSAN missing\n");
    EXPECT_EQ(
        refused("add --vsan 1 0x650000 --vai fc1/1"),
        ":2: ribkit route: --vai: no option has this name; near: --vsan, --via; ribkit route --help names them all\n");
    EXPECT_EQ(refused("add --vsan 1 0x650000 --via fc1/1 fc1/2"),
              ":2: ribkit route: one argument too many: fc1/2 (see ribkit route --help)\n");
    expect_run("show fcu", "", "nothing to show\n");
}

std::string repeated(const std::string &word, size_t count) {
    std::string all;
    for (size_t i = 0; i < count; i++) {
        all += word;
    }
    return all;
}

TEST(route_command, mistakes_are_named) {
    EXPECT_EQ(testing::complaint("route ad 0x650000 --vsan 1"),
              "ad: no action has this name; near: add, load; ribkit route --help names them all\n");
    EXPECT_EQ(testing::complaint("route load"), "ribkit route load: FILE is required, - for standard input\n");
    EXPECT_EQ(testing::complaint("route add --vsan 0 0x650000 --via fc1/1"),
              "0 is no VSAN: they are numbered from 1\n");
    EXPECT_EQ(testing::complaint("route add --vsan 1 0x650000 --via fc1/1 --via fc1/2 --domain 3"),
              "--domain: is given for each --via or for none\n");
    EXPECT_EQ(testing::complaint("route add --vsan 1 0x650000 --via fc1/1 --domain 240"),
              "\"240\" is no domain: a number from 0 to 0xef is\n");
    EXPECT_EQ(testing::complaint("route add --vsan 1 --mcast 0xff1234 --via fc1/1 --cost 3"),
              "--cost: is nothing that a multicast route has\n");
    EXPECT_EQ(testing::complaint("route del --vsan 1 0x650000 --via fc1/1"),
              "--via: is nothing that a removed or wanted route has\n");
    EXPECT_EQ(testing::complaint("route add --vsan 1 --label --via fc1/1"),
              "a destination, --source or --match is required\n");
    EXPECT_EQ(testing::complaint("route add --vsan 1 --label --match 1 --match 2 --match 3 --via fc1/1"),
              "--match: at most two labels are matched\n");
    EXPECT_EQ(testing::complaint("route add --vsan 1 --label --match 1 --via fc1/1" + repeated("+1", 256)),
              "--via: at most 255 labels are pushed\n");
    EXPECT_EQ(testing::complaint("route add --vsan 1 --label --match x --via fc1/1"),
              "\"x\" is no label: a number from 0 to 0xffffffff is\n");
    EXPECT_EQ(testing::complaint("route add --vsan 1 --label --mcast --match 1 --via fc1/1"),
              "--mcast and --label: a route is in one of the tables\n");
}

} // namespace
} // namespace ribkit::cli
