// RIB and clients as processes of their own, over a server that the test starts.
#include "base/duration.h"
#include "platform/nats/nats_fixture.h"
#include "testing/background_command.h"

#include <chrono>
#include <list>
#include <memory>
#include <thread>
#include <tuple>

namespace ribkit::cli {
namespace {

using platform::nats_server;

constexpr const char *small = "examples/fabrics/small.toml";
constexpr const char *last_step = "fc1/11 joins\n  mcast: 1 route changed, in ";

class processes : public ::testing::Test {
  protected:
    [[nodiscard]] std::string command(const std::string &name, const std::string &arguments = "") const {
        return name + " --bus " + server.url() + " " + arguments;
    }

    [[nodiscard]] bool holds_lab_tables() const {
        return testing::in_time(
            [this] { return testing::tables(testing::run_command(command("routes") + " 2>&1").output) == wanted; });
    }

    nats_server server;
    std::string wanted = testing::tables(testing::run_command(std::string("lab --tables all ") + small).output);
};

TEST_F(processes, are_stopped_while_they_wait_for_a_server) {
    server.stop();
    for (const std::string &arguments :
         {command("rib --wait 600"), command("client --wait 600", small), command("routes --wait 600")}) {
        testing::background waiting(arguments);
        ASSERT_TRUE(
            testing::in_time([&] { return waiting.so_far().find("waiting for a server") != std::string::npos; }));
        const auto start = std::chrono::steady_clock::now();
        waiting.stopped(SIGTERM);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60)) << arguments;
    }
}

TEST_F(processes, start_in_any_order) {
    ASSERT_NE(wanted, "");
    server.stop();
    testing::background production(command("client --vsan 1", small));
    testing::background backup(command("client --envelopes --vsan 20", small));
    ASSERT_TRUE(testing::in_time([&] { return !production.so_far().empty() && !backup.so_far().empty(); }));
    server.start();
    ASSERT_TRUE(testing::in_time([&] { return backup.so_far().find("waiting for a RIB") != std::string::npos; }));
    testing::background rib(command("rib", small));
    const testing::outcome first = production.ended();
    const testing::outcome second = backup.ended();
    EXPECT_EQ(first.exit_code, 0) << first.output;
    EXPECT_EQ(second.exit_code, 0) << second.output;
    EXPECT_NE(first.output.find("ribkit: waiting for a server at " + server.url() + ", for 30s at most\n"),
              std::string::npos);
    EXPECT_NE(first.output.find("30 sent: 4 added, 0 deleted, 19 changed, 7 merged\n"), std::string::npos)
        << first.output;
    EXPECT_NE(second.output.find("35 sent: 13 added, 9 deleted, 8 changed, 5 merged\n"), std::string::npos)
        << second.output;
    const testing::outcome again = testing::run_command(command("client", small)); // finds what the others have left
    EXPECT_NE(again.output.find("at 0s: the fabric starts\n  static: 1 route merged, in "), std::string::npos)
        << again.output;
    const testing::outcome routes = testing::run_command(command("routes"));
    EXPECT_EQ(testing::tables(routes.output), wanted);
    EXPECT_NE(routes.output.find("\n\n16 routes\n"), std::string::npos);
    const testing::outcome last = rib.stopped(SIGINT);
    EXPECT_EQ(last.exit_code, 0);
    EXPECT_EQ(testing::tables(last.output), wanted);
    EXPECT_EQ(last.output.substr(0, last.output.find('\n')), "the RIB answers at " + server.url());
    EXPECT_NE(last.output.find("20 routes, 27 of 8192 path units, 19 of 512 hardware positions"), std::string::npos);
}

TEST_F(processes, modules_get_what_the_clients_want_and_end_at_a_signal) {
    testing::background left(command("module left", "--number 1 --ports 16"));
    testing::background right(command("module right", "--number 2 --ports 16"));
    testing::background rib(command("rib", small));
    const auto serves = [this](const char *module) {
        return testing::run_command(command("status") + " 2>&1").output.find(module) != std::string::npos;
    };
    ASSERT_TRUE(testing::in_time([&] { return serves("module    1 active") && serves("module    2 active"); }));
    const testing::outcome client = testing::run_command(command("client", small));
    EXPECT_EQ(client.exit_code, 0) << client.output;
    EXPECT_EQ(client.output.find("module"), std::string::npos) << "they are not its business";
    for (const char *kind : {"show fcu", "show fcm", "show fcl"}) {
        const testing::outcome one = testing::run_command(command(kind, "--module 1"));
        EXPECT_EQ(one.exit_code, 0);
        EXPECT_EQ(one.output, testing::run_command(command(kind, "--module 2")).output);
    }
    const std::string has = " had 16 unicast, 2 multicast and 1 label entries; it answered ";
    for (auto [module, signal, name] : {std::tuple{&left, SIGTERM, "left"}, {&right, SIGINT, "right"}}) {
        const testing::outcome last = module->stopped(signal);
        EXPECT_EQ(last.exit_code, 0);
        EXPECT_NE(last.output.find('\n' + std::string(name) + has), std::string::npos) << last.output;
    }
    EXPECT_EQ(rib.stopped(SIGTERM).exit_code, 0);
}

TEST_F(processes, several_clients_of_one_fabric_end_with_its_tables) {
    testing::background rib(command("rib"));
    std::list<testing::background> clients;
    for (int i = 0; i < 5; i++) {
        clients.emplace_back(command("client", small));
    }
    for (testing::background &client : clients) {
        const testing::outcome run = client.ended();
        EXPECT_EQ(run.exit_code, 0) << run.output;
    }
    EXPECT_TRUE(holds_lab_tables());
}

TEST_F(processes, a_client_that_stays_tells_a_new_rib) {
    auto rib = std::make_unique<testing::background>(command("rib"));
    testing::background client(command("client --stay", small));
    ASSERT_TRUE(testing::in_time([&] { return client.so_far().find(last_step) != std::string::npos; }));
    EXPECT_TRUE(holds_lab_tables());
    rib->stopped(SIGTERM);
    rib = std::make_unique<testing::background>(command("rib"));
    EXPECT_TRUE(holds_lab_tables());
    const testing::outcome run = client.stopped(SIGINT);
    EXPECT_EQ(run.exit_code, 0) << run.output;
    const size_t again = run.output.find(": the RIB is there again\n  fspf: 8 routes added, in ");
    ASSERT_NE(again, std::string::npos) << run.output;
    const size_t time = run.output.rfind("at ", again) + 3;
    EXPECT_GE(base::parse_duration(run.output.substr(time, again - time)), std::chrono::milliseconds(5500))
        << run.output;
    EXPECT_NE(run.output.find("ribkit: stopped\n"), std::string::npos) << run.output;
    EXPECT_EQ(rib->stopped(SIGINT).exit_code, 0);
}

// A RIB that starts before its clients have found the server again tells them in vain that it has.
TEST_F(processes, a_client_that_stays_outlives_the_server_and_what_it_misses_meanwhile) {
    auto rib = std::make_unique<testing::background>(command("rib"));
    testing::background client(command("client --stay", small));
    ASSERT_TRUE(testing::in_time([&] { return client.so_far().find(last_step) != std::string::npos; }));
    server.stop();
    server.start();
    ASSERT_TRUE(
        testing::in_time([&] { return client.so_far().find("again\n  no route changed\n") != std::string::npos; }));
    EXPECT_TRUE(holds_lab_tables());
    server.stop();
    rib->stopped(SIGKILL);
    std::this_thread::sleep_for(std::chrono::seconds(2)); // the client's pauses between its attempts grow
    server.start();
    rib = std::make_unique<testing::background>(command("rib"));
    EXPECT_TRUE(holds_lab_tables());
    EXPECT_EQ(client.stopped(SIGINT).exit_code, 0);
}

TEST_F(processes, a_monitor_that_has_lost_the_server_shows_each_change_once) {
    testing::background rib(command("rib"));
    testing::background monitor(command("monitor"));
    const auto shows = [&](const std::string &what) {
        return testing::in_time([&] { return monitor.so_far().find(what) != std::string::npos; });
    };
    const auto add = [&](const std::string &route) {
        return testing::run_command(command("route add", "--vsan 1 " + route + " --via fc1/1 --wait 30")).exit_code ==
               0;
    };
    ASSERT_TRUE(shows("the RIB holds 0 unicast"));
    ASSERT_TRUE(add("0x650000/0xff0000"));
    ASSERT_TRUE(shows("0x650000"));
    server.stop();
    server.start();
    ASSERT_TRUE(add("0x660000/0xff0000")); // the monitor may not be there again
    ASSERT_TRUE(shows("0x660000"));
    ASSERT_TRUE(add("0x670000/0xff0000"));
    ASSERT_TRUE(shows("0x670000"));
    const testing::outcome run = monitor.stopped(SIGTERM);
    EXPECT_EQ(run.exit_code, 0);
    for (const char *route : {"0x650000", "0x660000", "0x670000"}) {
        EXPECT_EQ(run.output.find(route), run.output.rfind(route)) << run.output;
    }
    EXPECT_EQ(run.output.find("delete"), std::string::npos) << run.output;
}

TEST_F(processes, a_client_without_a_rib_gives_up_or_is_stopped) {
    const testing::outcome tired = testing::run_command(command("client --wait 1", small) + " 2>&1");
    EXPECT_EQ(tired.exit_code, 1);
    EXPECT_NE(tired.output.find("ribkit: no answer from the RIB: nobody listens\n"), std::string::npos) << tired.output;
    testing::background client(command("client", small));
    ASSERT_TRUE(testing::in_time([&] { return client.so_far().find("waiting for a RIB") != std::string::npos; }));
    const testing::outcome stopped = client.stopped(SIGTERM);
    EXPECT_EQ(stopped.exit_code, 1);
    EXPECT_NE(stopped.output.find("0 sent: 0 added, 0 deleted, 0 changed\n"), std::string::npos) << stopped.output;
    EXPECT_EQ(testing::run_command(command("routes --wait 0") + " 2>&1").output,
              "ribkit: no answer from the RIB: nobody listens\n");
}

TEST_F(processes, routes_are_displayed_once_a_rib_is_there) {
    const testing::temporary_directory home;
    testing::background routes(command("routes --json=" + home.file("routes")));
    ASSERT_TRUE(testing::in_time(
        [&] { return routes.so_far().starts_with("ribkit: waiting for a RIB at " + server.url() + ", for "); }));
    testing::background rib(command("rib"));
    const testing::outcome run = routes.ended();
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.output.find("No response"), std::string::npos) << run.output;
    EXPECT_EQ(testing::content(home.file("routes")), "[]\n");
}

TEST_F(processes, a_run_that_fails_leaves_what_was_written_before) {
    const testing::temporary_directory home;
    std::ofstream(home.file("outcome")) << "of an earlier run";
    const std::string into = " --json=" + home.file("outcome");
    EXPECT_EQ(testing::run_command(command("routes --wait 0" + into) + " 2>&1").exit_code, 1);
    EXPECT_EQ(testing::content(home.file("outcome")), "of an earlier run");
    testing::background rib(command("rib"));
    EXPECT_EQ(testing::run_command(command("routes" + into)).exit_code, 0);
    EXPECT_EQ(testing::content(home.file("outcome")), "[]\n");
}

TEST_F(processes, a_rib_that_is_busy_is_one_too) {
    testing::background rib(command("rib"));
    ASSERT_TRUE(testing::in_time([&] { return !rib.so_far().empty(); }));
    rib.suspend();
    const testing::outcome second = testing::run_command(command("rib") + " 2>&1");
    EXPECT_EQ(second.exit_code, 1);
    EXPECT_EQ(second.output, "ribkit: another RIB listens, but does not answer, at " + server.url() + "\n");
}

TEST_F(processes, a_server_has_no_virtual_clock) {
    const testing::input_file script("clock virtual\n");
    const testing::outcome run = testing::run_command(command("rib --faults " + script.path()) + " 2>&1");
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.output, server.url() + ": other processes keep real time: no fault script with \"clock virtual\"\n");
}

TEST_F(processes, a_second_rib_is_refused_unless_its_fabric_is_another) {
    testing::background rib(command("rib"));
    ASSERT_TRUE(testing::in_time([&] { return !rib.so_far().empty(); }));
    const testing::outcome second = testing::run_command(command("rib") + " 2>&1");
    EXPECT_EQ(second.exit_code, 1);
    EXPECT_EQ(second.output, "ribkit: another RIB answers at " + server.url() + "\n");
    EXPECT_EQ(testing::run_command(command("lab", small) + " 2>&1").output, second.output);
    testing::background elsewhere("rib --bus " + server.url() + "/elsewhere");
    ASSERT_TRUE(testing::in_time([&] { return !elsewhere.so_far().empty(); }));
    EXPECT_EQ(elsewhere.stopped(SIGINT).exit_code, 0);
}

TEST_F(processes, of_two_ribs_that_start_together_one_stays) {
    for (int round = 0; round < 3; round++) {
        testing::background first(command("rib"));
        testing::background second(command("rib"));
        const auto gives_way = [](const testing::background &one) {
            return one.so_far().find("ribkit: another RIB ") != std::string::npos;
        };
        ASSERT_TRUE(testing::in_time([&] { return gives_way(first) || gives_way(second); }));
        testing::background &loser = gives_way(first) ? first : second;
        testing::background &winner = &loser == &first ? second : first;
        EXPECT_EQ(loser.ended().exit_code, 1);
        EXPECT_EQ(testing::run_command(command("routes")).exit_code, 0);
        const testing::outcome stayed = winner.stopped(SIGTERM);
        EXPECT_EQ(stayed.exit_code, 0) << stayed.output;
        EXPECT_EQ(stayed.output.find("another RIB"), std::string::npos) << stayed.output;
    }
}

TEST_F(processes, the_lab_runs_over_the_server_as_it_does_alone) {
    const auto steady = [](const testing::outcome &run) {
        EXPECT_EQ(run.exit_code, 0);
        return run.output.substr(0, run.output.find("  seconds "));
    };
    EXPECT_EQ(steady(testing::run_command(command("lab", small))),
              steady(testing::run_command(std::string("lab ") + small)));
}

TEST_F(processes, outcomes_for_programs) {
    testing::background rib(command("rib --json"));
    const testing::outcome client = testing::run_command(command("client --json", small));
    EXPECT_EQ(client.exit_code, 0);
    EXPECT_EQ(client.output.substr(0, 15), "{\n  \"fabric\": {");
    EXPECT_NE(client.output.find("\"routes_sent\": 65,"), std::string::npos);
    const testing::outcome routes = testing::run_command(command("routes --vsan 20 --json"));
    EXPECT_EQ(routes.output.substr(0, 44), "[\n  {\n    \"message\": \"rib_ucast_route\",\n    ") << routes.output;
    EXPECT_NE(routes.output.find("\"vsan\": 20,"), std::string::npos);
    EXPECT_EQ(routes.output.find("\"vsan\": 1,"), std::string::npos);
    const std::string last = rib.stopped(SIGINT).output;
    EXPECT_NE(last.find("{\n  \"routes\": [\n"), std::string::npos) << last;
    EXPECT_NE(last.find("\"messages_answered\": "), std::string::npos) << last;
}

TEST(roles, are_all_that_the_processes_need) {
    const platform::environment first{"RIB_PASSWORD", "r1b"};
    const platform::environment second{"CLIENT_PASSWORD", "cl1ent"};
    const platform::environment third{"MODULE_PASSWORD", "m0dule"};
    const nats_server server(platform::in_the_tree("examples/nats/roles.conf"));
    testing::background rib("rib --bus " + server.url("rib:r1b"));
    const std::string as_client = " --bus " + server.url("client:cl1ent") + " ";
    const testing::outcome client = testing::run_command("client" + as_client + small + " 2>&1");
    EXPECT_EQ(client.exit_code, 0) << client.output;
    EXPECT_NE(testing::run_command("routes" + as_client).output.find("\n\n16 routes\n"), std::string::npos);
    const testing::outcome another = testing::run_command("rib --bus " + server.url("rib:r1b") + " 2>&1");
    EXPECT_EQ(another.exit_code, 1);
    EXPECT_EQ(another.output.find("ribkit: another RIB answers at "), 0U) << another.output;
    EXPECT_EQ(rib.stopped(SIGINT).exit_code, 0);
    const testing::outcome impostor = testing::run_command("rib" + as_client + "2>&1");
    EXPECT_EQ(impostor.exit_code, 1);
    EXPECT_EQ(impostor.output, "ribkit: the RIB cannot listen on " + server.url() + ": Permission denied\n");
}

TEST(bus, that_is_not_there_is_told_with_what_helps) {
    const testing::outcome refused = testing::run_command("routes --bus nats://127.0.0.1:1 --wait 0 2>&1");
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_EQ(refused.output,
              "ribkit: cannot open nats://127.0.0.1:1: Connection refused; nats-server starts a server, "
              "unix:DIRECTORY needs none\n");
    const testing::outcome unknown = testing::run_command("routes --bus nats://no..where --wait 0 2>&1");
    EXPECT_EQ(unknown.exit_code, 1);
    EXPECT_EQ(unknown.output, "ribkit: cannot open nats://no..where: the name of the host has no address\n");
}

TEST(secrets, are_not_printed) {
    const nats_server server("authorization { user: me, password: secret-word }");
    testing::background rib("rib --bus " + server.url("me:secret-word"));
    ASSERT_TRUE(testing::in_time([&] { return !rib.so_far().empty(); }));
    EXPECT_EQ(rib.stopped(SIGINT).output.find("secret-word"), std::string::npos);
    const testing::outcome refused = testing::run_command("rib --bus " + server.url("me:other-word") + " 2>&1");
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_EQ(refused.output, "ribkit: cannot open " + server.url() + ": Permission denied\n");
}

} // namespace
} // namespace ribkit::cli
