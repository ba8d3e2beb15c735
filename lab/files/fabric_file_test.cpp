// Fabric files: what they say arrives in the model, and every mistake is named with its line.
#include "lab/files/fabric_file.h"

#include "base/input_error.h"

#include <gtest/gtest.h>

namespace ribkit::lab {
namespace {

/// Lines 1 to 15: two switches and one link.
const std::string pair_of_switches = R"(name = "pair"
local = "a"
[[vsan]]
id = 1
[[vsan]]
id = 20
name = "backup"
[[switch]]
name = "a"
domain = 1
[[switch]]
name = "b"
domain = 239
[[link]]
ends = ["a fc1/1", "b port-channel 7"]
)";

/// What is wrong with the pair and these lines, from line 16 on.
std::string complaint(const std::string &more) {
    try {
        parse_fabric(pair_of_switches + more, "f.toml");
    } catch (const base::input_error &error) {
        return error.what();
    }
    return "nothing";
}

std::string complaint_about(const std::string &text) {
    try {
        parse_fabric(text, "f.toml");
    } catch (const base::input_error &error) {
        return error.what();
    }
    return "nothing";
}

TEST(fabric_file, everything_arrives_in_the_model) {
    const fabric f = parse_fabric(pair_of_switches + R"(cost = 250
vsans = [20]
state = "down"
[[event]]
at = "5s"
link = "b port-channel 7"
cost = 1000
[[event]]
at = "3s"
link = "a fc1/1"
state = "up"
)",
                                  "f.toml");
    EXPECT_EQ(f.name, "pair");
    EXPECT_EQ(f.local().name, "a");
    ASSERT_EQ(f.vsans().size(), 2U);
    EXPECT_EQ(f.vsans()[1].id, 20U);
    EXPECT_EQ(f.vsans()[1].name, "backup");
    ASSERT_EQ(f.switches().size(), 2U);
    EXPECT_EQ(f.switches()[1].domain, 239U);
    ASSERT_EQ(f.links().size(), 1U);
    const fabric_link &link = f.links()[0];
    EXPECT_EQ(f.link_name(link), "a fc1/1 - b port-channel 7");
    EXPECT_NE(link.ends[0].if_index, link.ends[1].if_index);
    EXPECT_EQ(link.cost, 250U);
    EXPECT_FALSE(link.up);
    EXPECT_FALSE(link.carries(1));
    EXPECT_TRUE(link.carries(20));
    ASSERT_EQ(f.events().size(), 2U);
    EXPECT_EQ(f.events()[0].at, std::chrono::seconds(3));
    EXPECT_EQ(f.events()[0].up, true);
    EXPECT_EQ(f.events()[0].cost, std::nullopt);
    EXPECT_EQ(f.events()[1].cost, 1000U);
    EXPECT_EQ(f.events()[1].up, std::nullopt);
}

TEST(fabric_file, what_is_left_out_has_a_default) {
    const fabric f = parse_fabric(pair_of_switches, "f.toml");
    EXPECT_EQ(f.links()[0].cost, default_cost);
    EXPECT_TRUE(f.links()[0].up);
    EXPECT_EQ(f.links()[0].vsans, (std::vector<uint32_t>{1, 20}));
    EXPECT_TRUE(f.events().empty());
}

TEST(fabric_file, a_vsan_says_how_its_rib_begins_with_it) {
    const std::string head = "local = \"a\"\n";
    const auto read = [&](const std::string &more) {
        return parse_fabric(head + "[[vsan]]\nid = 7\n" + more + "[[switch]]\nname = \"a\"\ndomain = 1\n", "f.toml")
            .vsan_records()
            .at(7);
    };
    EXPECT_EQ(read(""), model::vsan_attributes{});
    EXPECT_EQ(
        read("state = \"suspended\"\nbalance = \"SID/DID\"\nin_order = true\nlatency = 250\n"),
        (model::vsan_attributes{model::vsan_state::suspended, model::flow_balance::source_and_destination, true, 250}));
    EXPECT_EQ(complaint("[[vsan]]\nid = 30\nstate = \"off\"\n"),
              "f.toml:18: state is \"active\" or \"suspended\", not \"off\"");
    EXPECT_EQ(complaint("[[vsan]]\nid = 30\nbalance = \"OXID\"\n"),
              "f.toml:18: balance is \"SID/DID\" or \"SID/DID/OXID\", not \"OXID\"");
    EXPECT_EQ(complaint("[[vsan]]\nid = 30\nin_order = 1\n"), "f.toml:18: in_order is true or false");
    EXPECT_EQ(complaint("[[vsan]]\nid = 30\nlatency = 60001\n"), "f.toml:17: latency 60001 is more than 60000");
}

TEST(fabric_file, the_rib_has_room_for_all_domains_unless_the_file_says_otherwise) {
    const rib::rib_spaces otherwise = parse_fabric(pair_of_switches, "f.toml").spaces();
    EXPECT_EQ(otherwise.vsans, 2U);
    EXPECT_EQ(otherwise.positions, 512U);
    EXPECT_EQ(otherwise.path_units, 8192U);
    const rib::rib_spaces said =
        parse_fabric(pair_of_switches + "[rib]\npositions = 24\nunits = 112\n", "f.toml").spaces();
    EXPECT_EQ(said.positions, 24U);
    EXPECT_EQ(said.path_units, 112U);
    EXPECT_EQ(complaint("[rib]\npositions = 16\n"), "nothing");
    EXPECT_EQ(complaint("[rib]\nunits = 16\n"), "nothing");
    for (const char *positions : {"8", "17", "16777224"}) {
        EXPECT_EQ(complaint(std::string("[rib]\npositions = ") + positions + "\n"),
                  std::string("f.toml:16: positions ") + positions +
                      " is no multiple of 8 from 16 (8 for each VSAN) to 16777216");
    }
    for (const char *units : {"0", "15", "17", "16777232"}) {
        EXPECT_EQ(complaint(std::string("[rib]\nunits = ") + units + "\n"),
                  std::string("f.toml:16: units ") + units + " is no multiple of 16 from 16 to 16777216");
    }
    EXPECT_EQ(complaint("[rib]\nroutes = 1\n"),
              "f.toml:17: unknown key \"routes\" in [rib], which knows positions, units");
    EXPECT_EQ(complaint("[[rib]]\nunits = 1\n"), "f.toml:16: rib is written as a [rib] table");
}

TEST(fabric_file, a_fabric_without_a_name_has_that_of_its_file) {
    EXPECT_EQ(parse_fabric(pair_of_switches.substr(pair_of_switches.find('\n') + 1), "f.toml").name, "f.toml");
}

TEST(fabric_file, texts_are_printed_as_they_are) {
    EXPECT_EQ(complaint("[[vsan]]\nid = 3\nname = \"a\\nb\"\n"), "f.toml:18: name holds a control character");
    EXPECT_EQ(complaint("\"x\\u0000\\u001b\\u007f\" = 1\n"),
              "f.toml:16: unknown key \"x\\x00\\x1b\\x7f\" in [[link]], which knows ends, cost, state, vsans");
}

TEST(fabric_file, keys_without_end_are_refused) {
    std::string key = "a";
    for (int part = 1; part < 40000; part++) {
        key += ".a";
    }
    EXPECT_EQ(complaint(key + " = 1\n"), "f.toml:16: more than 1000 dots in one statement");
    EXPECT_EQ(complaint('[' + key + "]\n"), "f.toml:16: more than 1000 dots in one statement");
    EXPECT_EQ(complaint("# " + std::string(2000, '.') + "\n"), "nothing");
}

TEST(fabric_file, brackets_without_end_are_refused) {
    std::string tables = "a = ";
    for (int i = 0; i < 40000; i++) {
        tables += "{a=";
    }
    EXPECT_EQ(complaint(tables), "f.toml:16: more than 64 brackets inside each other");
    EXPECT_EQ(complaint("a = [\n[\n" + std::string(100000, '[')), "f.toml:18: more than 64 brackets inside each other");
    EXPECT_NE(complaint("a = " + std::string(64, '[') + std::string(64, ']')), complaint(tables)) << "not too deep";
}

TEST(fabric_file, events_of_one_moment_keep_their_order) {
    const fabric f = parse_fabric(pair_of_switches + R"([[event]]
at = "2s"
link = "a fc1/1"
state = "down"
[[event]]
at = "1s"
link = "a fc1/1"
cost = 1
[[event]]
at = "2s"
link = "a fc1/1"
state = "up"
)",
                                  "f.toml");
    ASSERT_EQ(f.events().size(), 3U);
    EXPECT_EQ(f.events()[0].cost, 1U);
    EXPECT_EQ(f.events()[1].up, false);
    EXPECT_EQ(f.events()[2].up, true);
}

TEST(fabric_file, an_unknown_key_is_named_with_its_line) {
    EXPECT_EQ(complaint("costs = 3\n"),
              "f.toml:16: unknown key \"costs\" in [[link]], which knows ends, cost, state, vsans");
    EXPECT_EQ(complaint("[[switch]]\nname = \"c\"\ndomian = 3\n"),
              "f.toml:18: unknown key \"domian\" in [[switch]], which knows name, domain");
    EXPECT_EQ(complaint("[switches]\n"), "f.toml:16: unknown key \"switches\" in the file, which knows name, local, "
                                         "roles, vsan, switch, link, static, group, label, distance, event, rib, "
                                         "module, quota, who");
}

TEST(fabric_file, switches_are_distinct_and_their_domains_in_range) {
    EXPECT_EQ(complaint("[[switch]]\nname = \"c\"\ndomain = 239\n"), "f.toml:16: domain 239 is already that of \"b\"");
    EXPECT_EQ(complaint("[[switch]]\nname = \"a\"\ndomain = 3\n"),
              "f.toml:16: switch \"a\" is already there, on line 8");
    EXPECT_EQ(complaint("[[switch]]\nname = \"c\"\ndomain = 240\n"), "f.toml:16: domain 240 is outside 1 to 239");
    EXPECT_EQ(complaint("[[switch]]\nname = \"c\"\ndomain = 0\n"), "f.toml:16: domain 0 is outside 1 to 239");
    EXPECT_EQ(complaint("[[switch]]\nname = \"c d\"\ndomain = 3\n"),
              "f.toml:16: \"c d\" is no name for a switch: letters, digits, '-', '_' and '.' make one");
    EXPECT_EQ(complaint("[[switch]]\nname = \"\"\ndomain = 3\n"),
              "f.toml:16: \"\" is no name for a switch: letters, digits, '-', '_' and '.' make one");
    EXPECT_EQ(complaint("[[switch]]\nname = \"c\"\n"), "f.toml:16: [[switch]] needs a key \"domain\"");
}

TEST(fabric_file, vsans_are_distinct_and_in_range) {
    EXPECT_EQ(complaint("[[vsan]]\nid = 20\n"), "f.toml:17: VSAN 20 is already there");
    EXPECT_EQ(complaint("[[vsan]]\nid = 21\nname = \"backup\"\n"),
              "f.toml:17: VSAN 20 has the name \"backup\" already");
    EXPECT_EQ(complaint("[[vsan]]\nid = 0\n"), "f.toml:17: VSAN 0 is outside 1 to 4095");
    EXPECT_EQ(complaint("[[vsan]]\nid = 4096\n"), "f.toml:17: VSAN 4096 is outside 1 to 4095");
    EXPECT_EQ(complaint("[[vsan]]\nid = 4095\n"), "nothing");
    const fabric f = parse_fabric(pair_of_switches + "vsans = [20, 1]\n", "f.toml");
    EXPECT_TRUE(f.links()[0].carries(1) && f.links()[0].carries(20));
    EXPECT_EQ(complaint("vsans = [2]\n"), "f.toml:14: link in VSAN 2, but there is no such VSAN");
    EXPECT_EQ(complaint("vsans = [20, 20]\n"), "f.toml:14: VSAN 20 is there twice");
}

TEST(fabric_file, links_join_two_switches_by_interfaces_of_their_own) {
    const auto link = [](const char *a, const char *b) {
        return complaint("[[link]]\nends = [\"" + std::string(a) + "\", \"" + b + "\"]\n");
    };
    EXPECT_EQ(link("a fc1/2", "b fc1/2"), "nothing");
    EXPECT_EQ(link("a fc1/2", "b fc-tunnel0"), "nothing");
    EXPECT_EQ(link("a fc1/2", "c fc1/1"), "f.toml:16: link to \"c\", but there is no such switch");
    EXPECT_EQ(link("a fc1/2", "a fc1/3"), "f.toml:16: link from \"a\" to itself");
    EXPECT_EQ(link("a fc1/1", "b fc1/2"), "f.toml:16: a fc1/1 has a link already, on line 14");
    for (const std::string name : {"eth0", "mgmt0", "vsan1", "", "fc1", "fc1/1 "}) {
        EXPECT_EQ(link("a fc1/2", ("b " + name).c_str()),
                  "f.toml:16: \"" + name +
                      "\" is no interface for a link: fcS/P (slot 1 to 255, port 1 to 65535), "
                      "\"port-channel N\" (1 to 65535) and fc-tunnelN (0 to 65535) are");
    }
    EXPECT_EQ(link("a", "b fc1/2"), "f.toml:16: link to \"a\" names no interface: \"a fc1/1\" would");
    EXPECT_EQ(complaint("[[link]]\nends = [\"a fc1/2\"]\n"),
              "f.toml:17: a link has two ends: [\"edge-1 fc1/1\", \"core-1 fc1/1\"]");
    EXPECT_EQ(complaint("cost = 0\n"), "f.toml:14: cost 0 is outside 1 to 65535");
    EXPECT_EQ(complaint("cost = 65536\n"), "f.toml:14: cost 65536 is outside 1 to 65535");
}

TEST(fabric_file, events_change_a_link_that_is_there) {
    const auto event = [](const std::string &lines) { return complaint("[[event]]\n" + lines); };
    EXPECT_EQ(event("at = \"3\"\nlink = \"a fc1/1\"\nstate = \"up\"\n"),
              "f.toml:17: \"3\" is no time: \"3s\", \"250ms\" and \"1.5m\" are, up to 1440m");
    EXPECT_EQ(event("at = \"3s\"\nlink = \"a fc1/2\"\nstate = \"up\"\n"), "f.toml:16: a fc1/2 has no link");
    EXPECT_EQ(event("at = \"3s\"\nlink = \"c fc1/2\"\nstate = \"up\"\n"),
              "f.toml:16: link of \"c\", but there is no such switch");
    EXPECT_EQ(event("at = \"3s\"\nlink = \"a fc1/1\"\nstate = \"off\"\n"),
              "f.toml:19: state is \"up\" or \"down\", not \"off\"");
    EXPECT_EQ(event("at = \"3s\"\nlink = \"a fc1/1\"\nstate = \"\"\n"),
              "f.toml:19: state is \"up\" or \"down\", not \"\"");
    EXPECT_EQ(event("at = \"3s\"\nlink = \"a fc1/1\"\n"),
              "f.toml:16: the event changes nothing: give it a state or a cost");
    EXPECT_EQ(event("at = \"3s\"\nlink = \"a fc1/1\"\ncost = 0\n"), "f.toml:16: cost 0 is outside 1 to 65535");
}

TEST(fabric_file, values_have_their_types) {
    EXPECT_EQ(complaint("cost = \"250\"\n"), "f.toml:16: cost takes a whole number from 0 to 4294967295");
    EXPECT_EQ(complaint("cost = -1\n"), "f.toml:16: cost takes a whole number from 0 to 4294967295");
    EXPECT_EQ(complaint("cost = 4294967297\n"), "f.toml:16: cost takes a whole number from 0 to 4294967295");
    EXPECT_EQ(complaint("vsans = 20\n"), "f.toml:16: vsans takes a list in square brackets");
    EXPECT_EQ(complaint("vsans = [\"20\"]\n"), "f.toml:16: vsans takes a whole number from 0 to 4294967295");
    EXPECT_EQ(complaint("[[switch]]\nname = 4\ndomain = 3\n"), "f.toml:17: name takes a text in quotation marks");
    EXPECT_EQ(complaint_about("event = 4\nlocal = \"a\"\n[[vsan]]\nid = 1\n[[switch]]\nname = \"a\"\ndomain = 1\n"),
              "f.toml:1: event is written as [[event]] tables");
}

TEST(fabric_file, a_fabric_needs_a_vsan_a_switch_and_a_local_one) {
    EXPECT_EQ(complaint_about(""), "f.toml:1: a fabric needs a [[vsan]] and a [[switch]] at least");
    EXPECT_EQ(complaint_about("[[vsan]]\nid = 1\n"), complaint_about(""));
    EXPECT_EQ(complaint_about("[[vsan]]\nid = 1\n[[switch]]\nname = \"a\"\ndomain = 1\n"),
              "f.toml:1: the file needs a key \"local\"");
    EXPECT_EQ(complaint_about("local = \"b\"\n[[vsan]]\nid = 1\n[[switch]]\nname = \"a\"\ndomain = 1\n"),
              "f.toml:1: the local switch is \"b\", but there is no such switch");
}

TEST(fabric_file, malformed_toml_is_one_line_with_its_place) {
    const std::string text = complaint("[[switch\n");
    EXPECT_EQ(text.substr(0, 10), "f.toml:16:");
    EXPECT_EQ(text.find('\n'), std::string::npos);
    EXPECT_EQ(complaint_about("name = \"\xff\"\n").substr(0, 9), "f.toml:1:");
}

TEST(fabric_file, a_file_that_is_not_there_is_said_so) {
    try {
        read_fabric_file("/nowhere/small.toml");
        FAIL();
    } catch (const base::input_error &error) {
        EXPECT_STREQ(error.what(), "/nowhere/small.toml: cannot be read: No such file or directory");
    }
    EXPECT_THROW(read_fabric_file("/"), base::input_error);
}

} // namespace
} // namespace ribkit::lab
