// What changes is printed in the order in which it changes, whatever happens to the RIB meanwhile.
#include "fib/service/fib_service.h"
#include "testing/running_rib.h"

#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

namespace ribkit::cli {
namespace {

using testing::running_rib;

/// A monitor that has said so much.
bool has_said(const testing::background &monitor, const std::string &text) {
    return testing::in_time([&] { return monitor.so_far().find(text) != std::string::npos; });
}

constexpr const char *nothing_held = "the RIB holds 0 unicast, 0 multicast and 0 label routes\n";

constexpr const char *all_added =
    "add unicast route 0x650000/0xff0000 of VSAN 1, rib-config: cost 500, R P A, by fc1/1 to domain 101\n"
    "add unicast route 0x660000/0xff0000 of VSAN 1, rib-config: cost 750, R V A, by fc1/1, by fc1/2\n"
    "add unicast route 0x650000/0xff0000 of VSAN 20, rib-config: cost 0, D P A, by port-channel 3\n"
    "add multicast route 0xff1234/0xffffff of VSAN 1, rib-config: by fc1/1, by fc1/3\n"
    "add multicast route 0x000000/0xffffff of VSAN 1, rib-config: by fc1/2\n"
    "add fc+label label route 0x700000/0xff0000 of label 0x64100 in VSAN 1, rib-config: by fc1/2+0x65000+0x66100\n"
    "add label label route from fc1/7 of label 0x10100 and 0x20100 in VSAN 20, rib-config: by fc1/8\n";

TEST_F(running_rib, changes_of_all_tables_are_printed) {
    testing::background monitor(command("monitor"));
    ASSERT_TRUE(has_said(monitor, nothing_held));
    add_routes();
    EXPECT_EQ(run("route del", "--vsan 1 --mcast 0xff1234").exit_code, 0);
    EXPECT_TRUE(has_said(monitor, "delete multicast route"));
    const auto before = std::chrono::steady_clock::now();
    const testing::outcome ended = monitor.stopped(SIGTERM);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5)); // it does not wait for anything
    EXPECT_EQ(ended.exit_code, 0);
    EXPECT_EQ(ended.output, std::string(nothing_held) + all_added +
                                "delete multicast route 0xff1234/0xffffff of VSAN 1, rib-config: by fc1/1, by fc1/3\n");
}

TEST_F(running_rib, json_lines_are_messages) {
    testing::background monitor(command("monitor", "--json"));
    ASSERT_TRUE(has_said(monitor, "{\"read\":{\"unicast\":0,\"multicast\":0,\"label\":0}}\n"));
    add_routes();
    EXPECT_TRUE(testing::in_time([&] {
        const std::string text = monitor.so_far();
        return std::count(text.begin(), text.end(), '\n') == 8;
    }));
    std::istringstream lines(monitor.stopped(SIGINT).output);
    std::vector<std::string> messages;
    for (std::string line; std::getline(lines, line);) {
        const auto read = nlohmann::json::parse(line);
        if (read.contains("message")) {
            messages.push_back(read["message"]);
        }
    }
    const std::string unicast = "rib_fcurt_update";
    EXPECT_EQ(messages, (std::vector<std::string>{unicast, unicast, unicast, "rib_fcmrt_update", "rib_fcmrt_update",
                                                  "rib_fclrt_update", "rib_fclrt_update"}));
}

TEST_F(running_rib, what_a_new_rib_has_lost_is_printed) {
    add_routes();
    testing::background monitor(command("monitor"));
    ASSERT_TRUE(has_said(monitor, "the RIB holds 3 unicast, 2 multicast and 2 label routes\n"));
    EXPECT_EQ(rib.stopped(SIGTERM).exit_code, 0);
    const testing::background other(command("rib"));
    ASSERT_TRUE(has_said(monitor, "something may have been missed: "));
    ASSERT_TRUE(has_said(monitor, nothing_held));
    EXPECT_EQ(run("route add", "--vsan 1 0x670000/0xff0000 --via fc1/1").exit_code, 0);
    ASSERT_TRUE(has_said(monitor, "add unicast route 0x670000/0xff0000"));
    const testing::outcome ended = monitor.stopped(SIGINT);
    EXPECT_EQ(ended.exit_code, 0);
    size_t deleted = 0;
    for (size_t at = 0; (at = ended.output.find("\ndelete ", at)) != std::string::npos; at++) {
        deleted++;
    }
    EXPECT_EQ(deleted, 7U) << ended.output;
}

TEST_F(running_rib, a_monitor_is_registered_while_it_runs) {
    const testing::background monitor(command("monitor"));
    ASSERT_TRUE(has_said(monitor, nothing_held));
    EXPECT_NE(run("show register").output, "nothing to show\n");
    EXPECT_NE(run("status").output.find("  client    66 "), std::string::npos) << run("status").output;
}

TEST_F(running_rib, tells_whom_it_knows_and_whom_it_has_refused) {
    const testing::background monitor(command("monitor"));
    ASSERT_TRUE(has_said(monitor, nothing_held));
    const auto clients = nlohmann::json::parse(run("status", "--json").output)["clients"];
    ASSERT_EQ(clients.size(), 1U);
    EXPECT_EQ(clients[0]["client"], 66);
    EXPECT_EQ(clients[0].size(), 3U);
    EXPECT_EQ(run("client", "--role fspf examples/fabrics/small.toml").exit_code, 0);
    EXPECT_EQ(run("route del", "0x650000/0xff0000 --vsan 1").exit_code, 1);
    EXPECT_NE(run("status").output.find("\n  refused   1 object is owned by another app: rib-config 1\n"),
              std::string::npos);
}

TEST(status, tells_of_vsans_that_are_suspended) {
    const testing::temporary_directory home;
    const std::string bus = " --bus unix:" + home.file("bus");
    const testing::input_file fabric("local = \"a\"\n[[vsan]]\nid = 7\nstate = \"suspended\"\n[[vsan]]\nid = 8\n"
                                     "[[switch]]\nname = \"a\"\ndomain = 1\n");
    const testing::background rib("rib " + fabric.path() + bus);
    const std::string said = testing::run_command("status" + bus + " 2>/dev/null").output;
    EXPECT_NE(said.find("\n  VSANs     2, 1 suspended\n"), std::string::npos) << said;
}

TEST_F(running_rib, tells_its_status) {
    add_routes();
    const std::string said = run("status").output;
    EXPECT_NE(said.find("the RIB at " + url + "\n  role      active, started with empty tables\n"), std::string::npos)
        << said;
    EXPECT_NE(said.find("\n  routes    3 unicast, 2 multicast, 2 label\n"), std::string::npos) << said;
    EXPECT_NE(said.find("\n  VSANs     2, 0 suspended\n  modules   0\n  waiting   "), std::string::npos) << said;
    const auto json = nlohmann::json::parse(run("status", "--json").output);
    EXPECT_EQ(json["role"], "active");
    EXPECT_EQ(json["unicast"], 3);
    EXPECT_EQ(json["multicast"], 2);
    EXPECT_EQ(json["label"], 2);
    EXPECT_EQ(json["vsans"], 2);
    EXPECT_EQ(json["clients"], nlohmann::json::array());
    EXPECT_EQ(json["waiting"].size(), 6U);
}

TEST_F(running_rib, tells_its_modules) {
    const fib::fib_service module(url, {.number = 2, .ports = fib::usual_ports(2, 3)});
    const auto modules = [&] { return nlohmann::json::parse(run("status", "--json").output)["modules"]; };
    while (modules().empty() || modules()[0]["state"] != "active") {
        std::this_thread::yield();
    }
    EXPECT_EQ(modules(), nlohmann::json::parse(R"([{"module": 2, "state": "active", "ports": 3}])"));
    EXPECT_NE(run("status").output.find("\n  modules   1\n  module    2 active, 3 ports\n"), std::string::npos);
}

TEST_F(running_rib, tells_what_it_has_refused) {
    EXPECT_EQ(nlohmann::json::parse(run("status", "--json").output)["refused"], nlohmann::json::array());
    EXPECT_EQ(run("route del", "--vsan 1 --mcast 0xff1234 2>&1").exit_code, 1);
    EXPECT_EQ(run("route del", "--vsan 1 --mcast 0xff1234 2>&1").exit_code, 1);
    const std::string said = run("status").output;
    EXPECT_NE(said.find("\n  refused   2 no entry: rib-config 2\n"), std::string::npos) << said;
    const auto json = nlohmann::json::parse(run("status", "--json").output)["refused"];
    ASSERT_EQ(json.size(), 1U);
    EXPECT_EQ(json[0]["text"], "no entry");
    EXPECT_EQ(json[0]["clients"], nlohmann::json::parse(R"([{"client":39,"count":2}])"));
}

TEST(monitor, where_there_is_no_rib_it_says_so) {
    const testing::temporary_directory home;
    const testing::outcome ended = testing::run_command("monitor --wait 0 --bus unix:" + home.file("bus") + " 2>&1");
    EXPECT_EQ(ended.exit_code, 1);
    EXPECT_EQ(ended.output, "ribkit: no answer from the RIB: nobody listens\n");
}

} // namespace
} // namespace ribkit::cli
