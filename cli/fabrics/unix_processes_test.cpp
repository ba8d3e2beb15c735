// RIB and clients as processes of one machine that meet in a directory.
#include "testing/background_command.h"

#include <list>
#include <memory>
#include <pwd.h>

namespace ribkit::cli {
namespace {

constexpr const char *small = "examples/fabrics/small.toml";
constexpr const char *last_step = "fc1/11 joins\n  mcast: 1 route changed, in ";

class unix_processes : public ::testing::Test {
  protected:
    [[nodiscard]] std::string command(const std::string &name, const std::string &arguments = "") const {
        return name + " --bus " + url + " " + arguments;
    }

    [[nodiscard]] bool holds_lab_tables() const {
        return testing::in_time(
            [this] { return testing::tables(testing::run_command(command("routes") + " 2>&1").output) == wanted; });
    }

    testing::temporary_directory home;
    std::string url = "unix:" + home.file("bus");
    std::string wanted = testing::tables(testing::run_command(std::string("lab --tables all ") + small).output);
};

TEST_F(unix_processes, start_in_any_order) {
    ASSERT_NE(wanted, "");
    testing::background production(command("client --vsan 1", small));
    testing::background backup(command("client --envelopes --vsan 20", small));
    ASSERT_TRUE(testing::in_time([&] { return !production.so_far().empty() && !backup.so_far().empty(); }));
    testing::background rib(command("rib", small));
    const testing::outcome first = production.ended();
    const testing::outcome second = backup.ended();
    EXPECT_EQ(first.exit_code, 0) << first.output;
    EXPECT_EQ(second.exit_code, 0) << second.output;
    EXPECT_TRUE(holds_lab_tables());
    const testing::outcome last = rib.stopped(SIGINT);
    EXPECT_EQ(last.exit_code, 0);
    EXPECT_EQ(testing::tables(last.output), wanted);
    EXPECT_TRUE(std::filesystem::is_empty(home.file("bus")));
}

TEST_F(unix_processes, several_clients_of_one_fabric_end_with_its_tables) {
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

// Once the RIB ends in order, once it is killed and leaves its socket.
TEST_F(unix_processes, a_client_that_stays_tells_a_new_rib) {
    auto rib = std::make_unique<testing::background>(command("rib"));
    testing::background client(command("client --stay", small));
    ASSERT_TRUE(testing::in_time([&] { return client.so_far().find(last_step) != std::string::npos; }));
    EXPECT_TRUE(holds_lab_tables());
    for (const int signal : {SIGTERM, SIGKILL}) {
        rib->stopped(signal);
        rib = std::make_unique<testing::background>(command("rib"));
        EXPECT_TRUE(holds_lab_tables());
    }
    EXPECT_EQ(client.stopped(SIGINT).exit_code, 0);
    EXPECT_EQ(rib->stopped(SIGINT).exit_code, 0);
}

TEST_F(unix_processes, routes_are_displayed_once_a_rib_is_there) {
    testing::background routes(command("routes"));
    ASSERT_TRUE(testing::in_time([&] { return routes.so_far().find("waiting for a RIB") != std::string::npos; }));
    testing::background rib(command("rib"));
    const testing::outcome run = routes.ended();
    EXPECT_EQ(run.exit_code, 0) << run.output;
    EXPECT_NE(run.output.find("0 routes"), std::string::npos) << run.output;
}

TEST_F(unix_processes, routes_are_displayed_once_there_are_as_many) {
    testing::background rib(command("rib"));
    testing::background routes(command("routes --wait-for 8"));
    const testing::outcome client = testing::run_command(command("client --role fspf", small));
    EXPECT_EQ(client.exit_code, 0);
    EXPECT_NE(client.output.find("\n  the RIB has all 8 routes\n"), std::string::npos) << client.output;
    const testing::outcome run = routes.ended();
    EXPECT_EQ(run.exit_code, 0) << run.output;
    EXPECT_NE(run.output.find("\n8 routes\n"), std::string::npos) << run.output;
    const testing::outcome more = testing::run_command(command("routes --wait-for 9 --wait 1") + " 2>&1");
    EXPECT_EQ(more.exit_code, 1);
    EXPECT_EQ(more.output, "ribkit: waiting for 9 routes of the RIB at " + url + ", for 1s at most\n" +
                               "ribkit: the RIB at " + url + " holds 8 routes, not 9\n");
    EXPECT_EQ(testing::run_command(command("routes --vsan 20 --wait-for 5 --wait 0") + " 2>&1").output,
              "ribkit: waiting for 5 routes of the RIB at " + url + ", for 0s at most\n" + "ribkit: the RIB at " + url +
                  " holds 4 routes of VSAN 20, not 5\n");
}

TEST_F(unix_processes, a_client_whose_routes_are_refused_fails) {
    const testing::input_file quota("[[quota]]\nclient = \"fspf\"\nroutes = 3\n");
    testing::background rib(command("rib --who " + quota.path()));
    const testing::outcome client = testing::run_command(command("client --role fspf", small) + " 2>&1");
    EXPECT_EQ(client.exit_code, 1);
    EXPECT_NE(client.output.find("the RIB has refused 5 of 8 routes\n"), std::string::npos) << client.output;
    EXPECT_NE(rib.stopped(SIGINT).output.find("the RIB refuses opcode 0x101 from "), std::string::npos);
}

/// A RIB's policy that lets whoever runs this use one identity.
std::string who_may_use(const char *client) {
    const passwd *user = getpwuid(geteuid());
    return std::string("[[who]]\nname = \"") + (user == nullptr ? "" : user->pw_name) + "\"\nclients = [" + client +
           "]\n";
}

TEST_F(unix_processes, who_may_not_use_an_identity_gives_up_and_says_what_helps) {
    const auto refused = [this](const std::string &uuid) {
        return "ribkit: the RIB refuses what came: bad parameters; asking again\nribkit: the RIB at " + url +
               " refuses what client " + uuid +
               " sends: bad parameters; its [[who]] tables may not let this name use client " + uuid +
               ", and what it says on standard error names whom it refuses\n";
    };
    {
        const testing::input_file who(who_may_use("66"));
        testing::background rib(command("rib --who " + who.path()));
        const testing::outcome client =
            testing::run_command(command("client --role fspf --wait 600", small) + " 2>&1 >/dev/null");
        EXPECT_EQ(client.output, refused("12"));
        EXPECT_EQ(testing::run_command(command("client --role fspf --wait 600 --envelopes", small) + " >/dev/null 2>&1")
                      .exit_code,
                  1);
        EXPECT_EQ(testing::run_command(command("routes")).exit_code, 0);
        const std::string said = rib.stopped(SIGINT).output;
        EXPECT_NE(said.find(": bad parameters: it may not use client 12\n"), std::string::npos) << said;
    }
    const testing::input_file who(who_may_use("12"));
    testing::background rib(command("rib --who " + who.path()));
    EXPECT_EQ(testing::run_command(command("client --role fspf", small)).exit_code, 0);
    const testing::outcome routes = testing::run_command(command("routes --wait 600") + " 2>&1");
    EXPECT_EQ(routes.exit_code, 1);
    EXPECT_EQ(routes.output, refused("66"));
}

// Its next event is an hour ahead.
TEST_F(unix_processes, a_stopped_lab_tells_what_there_is) {
    std::string later = testing::content(RIBKIT_SOURCE_DIR "/" + std::string(small));
    for (const char *at : {"\"2s\"", "\"3s\"", "\"5.5s\""}) {
        later.replace(later.find(at), std::string(at).size(), "\"60m\"");
    }
    const testing::input_file fabric(later);
    testing::background lab("lab --role fspf --tables all --real-time " + fabric.path());
    ASSERT_TRUE(testing::in_time([&] { return lab.so_far().find("8 routes added") != std::string::npos; }));
    const testing::outcome run = lab.stopped(SIGINT);
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_NE(run.output.find("ribkit: stopped\n"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("; the RIB holds 8\n"), std::string::npos) << run.output;
    EXPECT_NE(testing::tables(run.output), "");
}

TEST_F(unix_processes, a_second_rib_is_refused_even_where_the_first_is_busy) {
    testing::background rib(command("rib"));
    ASSERT_TRUE(testing::in_time([&] { return !rib.so_far().empty(); }));
    const testing::outcome second = testing::run_command(command("rib") + " 2>&1");
    EXPECT_EQ(second.exit_code, 1);
    EXPECT_NE(second.output.find("another RIB answers at " + url + "\n"), std::string::npos) << second.output;
    rib.suspend();
    const testing::outcome third = testing::run_command(command("rib") + " 2>&1");
    EXPECT_EQ(third.exit_code, 1);
    EXPECT_NE(third.output.find("another RIB listens, but does not answer, at " + url + "\n"), std::string::npos)
        << third.output;
}

TEST_F(unix_processes, places_where_nobody_can_meet) {
    EXPECT_EQ(testing::run_command("rib --bus unix:" + home.file("no/such") + " 2>&1").exit_code, 1);
    const testing::input_file file("");
    const testing::outcome run = testing::run_command("rib --bus unix:" + file.path() + " 2>&1");
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.output, "ribkit: cannot open unix:" + file.path() + ": Not a directory\n");
    EXPECT_NE(testing::complaint("rib --bus unix:").find("unix:: malformed URL; "), std::string::npos);
    const testing::input_file script("clock virtual\n");
    EXPECT_EQ(testing::complaint(command("rib --faults " + script.path())),
              url + ": other processes keep real time: no fault script with \"clock virtual\"\n");
}

TEST_F(unix_processes, the_lab_runs_there_as_it_does_alone) {
    const auto steady = [](const testing::outcome &run) {
        EXPECT_EQ(run.exit_code, 0);
        return run.output.substr(0, run.output.find("  seconds "));
    };
    EXPECT_EQ(steady(testing::run_command(command("lab", small))),
              steady(testing::run_command(std::string("lab ") + small)));
}

} // namespace
} // namespace ribkit::cli
