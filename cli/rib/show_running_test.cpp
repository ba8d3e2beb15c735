// Every display of a RIB that runs: as text, as JSON that makes the same text again, and chosen by filters.
#include "cli/rib/shown_kinds.h"
#include "testing/running_rib.h"

#include "cli/messages/displays.h"

namespace ribkit::cli {
namespace {

using testing::running_rib;

/// What varies from run to run is only the time.
constexpr const char *without_times =
    " 2>&1 | sed -E 's/[A-Z][a-z]{2} [A-Z][a-z]{2} [0-9 ]{2} [0-9:]{8} [0-9]{4}/(a time)/'";

constexpr const char *nothing = "nothing to show\n";

TEST(show_running, every_display_has_a_row) {
    EXPECT_EQ(shown_kinds().size(), displays().size());
    for (const display &kind : displays()) {
        EXPECT_NE(find_shown_kind(kind.short_name()), nullptr) << kind.name;
    }
}

TEST_F(running_rib, shows_every_display) {
    add_routes();
    for (const shown_kind &kind : shown_kinds()) {
        const std::string name(kind.display);
        const testing::outcome shown = testing::run_command(command("show " + name) + without_times);
        if (name != "in_mem") { // which says how large things are on this machine
            testing::expect_golden("cli/golden/running/" + name + ".txt", shown.output);
        } else {
            EXPECT_NE(shown.output.find("\nucast   "), std::string::npos) << shown.output;
        }
    }
}

TEST_F(running_rib, what_json_says_is_what_is_shown) {
    add_routes();
    for (const shown_kind &kind : shown_kinds()) {
        const std::string name(kind.display);
        const testing::outcome shown = run("show " + name);
        const testing::outcome json = run("show " + name, "--json");
        EXPECT_EQ(json.exit_code, 0) << json.output;
        if (shown.output == nothing) {
            EXPECT_EQ(json.output, "[]\n") << name;
            continue;
        }
        const std::string file = home.file(name + ".json");
        std::ofstream(file) << json.output;
        EXPECT_EQ(testing::run_command("encode " + file + " | " RIBKIT_COMMAND " show " + name + " --raw -").output,
                  shown.output)
            << name;
    }
}

/// The FC IDs of the routes that are shown, as the rows have them.
std::string fcids(const std::string &shown) {
    constexpr size_t column = 18;
    std::string all;
    for (size_t at = 0; (at = shown.find("\nrib-config", at)) != std::string::npos; at++) {
        all += shown.substr(at + 1 + column, 6) + " ";
    }
    return all;
}

TEST_F(running_rib, filters_choose) {
    add_routes();
    const auto chosen = [&](const std::string &filter) { return fcids(run("show fcu", filter).output); };
    EXPECT_EQ(chosen(""), "650000 660000 650000 ");
    EXPECT_EQ(chosen("--vsan 20"), "650000 ");
    EXPECT_EQ(chosen("--fcid 0x650101"), "650000 650000 ");
    EXPECT_EQ(chosen("--fcid 0x660000/0xff0000"), "660000 ");
    EXPECT_EQ(chosen("--fcid 0x660000/0xffff00"), "");
    EXPECT_EQ(chosen("--via fc1/2"), "660000 ");
    EXPECT_EQ(chosen("--via 'port-channel 3'"), "650000 ");
    EXPECT_EQ(chosen("--owner rib-config --vsan 1"), "650000 660000 ");
    EXPECT_EQ(chosen("--owner 39 --vsan 1 --via fc1/1 --fcid 0x660001"), "660000 ");
    expect_run("show fcu", "--owner fspf", nothing);
    expect_run("show fcm", "--via fc1/7", nothing);
    expect_run("show fcl", "--via fc1/6", nothing);
    EXPECT_NE(run("show fcl", "--via fc1/7").output, nothing); // where frames come in
    EXPECT_NE(run("show fcl", "--via fc1/2").output, nothing);
    EXPECT_NE(run("show snmp_fcroute", "--via fc1/2 --owner 39").output, nothing);
    expect_run("show dm", "--vsan 2", nothing);
    expect_run("show vsan", "--vsan 2", nothing);
    EXPECT_EQ(run("show db", "--vsan 20").output.find("\n1  "), std::string::npos);
    EXPECT_NE(run("show vsan", "--vsan 20").output, nothing);
    expect_run("show snmp_fcroute", "--owner fspf", nothing);
}

TEST_F(running_rib, logs_without_a_change_have_no_state) {
    expect_run("show sync_gbl", "", nothing);
    EXPECT_EQ(run("route add", "--vsan 1 --mcast 0xff1234 --via fc1/1").exit_code, 0);
    const std::string one = run("show sync_gbl").output;
    EXPECT_NE(one, nothing);
    EXPECT_EQ(run("route add", "--vsan 1 0x650000/0xff0000 --via fc1/1").exit_code, 0);
    EXPECT_GT(run("show sync_gbl").output.size(), one.size());
}

TEST_F(running_rib, goes_through_envelopes_too) {
    add_routes();
    EXPECT_EQ(run("show fcl", "--envelopes").output, run("show fcl").output);
    EXPECT_EQ(run("show db_total", "--envelopes").output, run("show db_total").output);
}

TEST(show_running, mistakes_are_named) {
    const std::string bus = " --bus unix:/tmp ";
    EXPECT_EQ(testing::complaint("show fcx" + bus),
              "fcx: no display has this name; near: fcu, fcl, fcm, fct; ribkit show --list names them all\n");
    EXPECT_EQ(testing::complaint("show db" + bus + "--via fc1/1"), "--via: the display db cannot be chosen by it\n");
    EXPECT_EQ(testing::complaint("show fcu" + bus + "--via fx1"),
              "\"fx1\" is no interface: names are such as fc1/1 and port-channel 3\n");
    EXPECT_EQ(testing::complaint("show fcu" + bus + "--owner fspg"),
              "fspg: no client has this name; near: fspf; ribkit text rib_uuid names them all\n");
    EXPECT_EQ(testing::complaint("show fcu" + bus + "--owner 4294967295"),
              "4294967295: no client has this name; ribkit text rib_uuid names them all\n");
    for (const std::string number : {"0x65zz", "0X", "99999999999", "65 "}) {
        EXPECT_EQ(testing::complaint("show fcu" + bus + "--fcid '" + number + "'"),
                  '"' + number + "\" is no FC ID: a number from 0 to 0xffffff is\n");
    }
    EXPECT_EQ(testing::complaint("show fcu" + bus + "--fcid 0x1000000"),
              "\"0x1000000\" is no FC ID: a number from 0 to 0xffffff is\n");
    EXPECT_EQ(testing::complaint("show fcu --vsan 1"), "ribkit show: --vsan requires --bus (see ribkit show --help)\n");
    EXPECT_EQ(
        testing::complaint("show fcu --bus local:"),
        "ribkit show: --bus: local: stays in this process, where nobody could reach it (see ribkit show --help)\n");
    EXPECT_EQ(testing::complaint("show fcu examples/messages/fcu.hex" + bus),
              "ribkit show: FILE excludes --bus (see ribkit show --help)\n");
}

TEST(show_running, a_vsan_is_as_the_fabric_file_says) {
    const testing::temporary_directory home;
    const std::string bus = " --bus unix:" + home.file("bus");
    const testing::input_file fabric("local = \"a\"\n[[vsan]]\nid = 7\nstate = \"suspended\"\nbalance = \"SID/DID\"\n"
                                     "in_order = true\nlatency = 250\n[[switch]]\nname = \"a\"\ndomain = 1\n");
    const testing::background rib("rib " + fabric.path() + bus);
    const std::string shown = testing::run_command("show vsan" + bus).output;
    EXPECT_NE(shown.find("\n7       suspended    SID/DID         250              enabled "), std::string::npos)
        << shown;
}

} // namespace
} // namespace ribkit::cli
