// The RIB as a process: nobody reads what it prints, it is told to stop, others begin at the same moment; and the C
// example sends to it.
#include "bus/rib_link.h"
#include "protocol/route_messages.h"
#include "rib_codes.h"
#include "ribkit_rib.h"
#include "testing/literal_updates.h"
#include "testing/pipe.h"
#include "testing/run_command.h"
#include "testing/temporary_directory.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <pwd.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace ribkit::cli {
namespace {

using testing::filled_pipe;

/// `ribkit ARGUMENTS` with its outputs in our hands.
class rib_process {
  public:
    rib_process(const std::string &arguments, int output, int errors) {
        const std::string line = "cd " RIBKIT_SOURCE_DIR " && exec " RIBKIT_COMMAND " " + arguments;
        const char *words[] = {"/bin/sh", "-c", line.c_str(), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
        posix_spawn(&process_, words[0], &actions, nullptr, const_cast<char *const *>(words), environ);
        posix_spawn_file_actions_destroy(&actions);
    }
    rib_process(const rib_process &) = delete;
    rib_process &operator=(const rib_process &) = delete;
    ~rib_process() {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
        }
    }

    /// The status of its end, which comes, or the test does not end.
    int stopped(int signal) {
        kill(process_, signal);
        int status = 0;
        waitpid(process_, &status, 0);
        process_ = 0;
        return status;
    }

  private:
    pid_t process_ = 0;
};

bool ended_well(int status) { return WIFEXITED(status) && WEXITSTATUS(status) == 0; }

constexpr uint32_t vsan = 1;

/// Small spaces, so that every few routes move the segments' boundaries.
constexpr const char *fabric_text = "local = \"a\"\n[[vsan]]\nid = 1\n[[vsan]]\nid = 2\n[[vsan]]\nid = 3\n"
                                    "[[switch]]\nname = \"a\"\ndomain = 1\n[rib]\npositions = 4096\n";

class rib_processes : public ::testing::Test {
  protected:
    /// Waits for a RIB that answers.
    std::unique_ptr<bus::rib_link> linked() const {
        for (;;) {
            try {
                auto link = std::make_unique<bus::rib_link>(url, RIB_CLIENT_FSPF);
                link->find();
                return link;
            } catch (const std::runtime_error &) { // nobody has made the place yet
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }

    /// Adds routes whose hops have interfaces of their own, and refuses as many messages.
    static void fill(bus::rib_link &link, uint32_t routes) {
        for (uint32_t i = 0; i < routes; i++) {
            const model::destination to{i, RIB_MASK_PORT};
            auto bytes = testing::literal_update({RIB_CLIENT_FSPF,
                                                  vsan,
                                                  RIB_OPER_UPDATE_RSP,
                                                  {{RIB_ACTION_ADD, to, {500, RIB_FLAG_ACTIVE, {{0x01010001, 2}}}}}});
            const auto answer = link.ask(RIBKIT_OPCODE_FCURT_UPDATE, bytes);
            ASSERT_EQ(answer.size(), wire::route_rsp.size);
            ASSERT_EQ(protocol::decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size>(answer)).result,
                      RIB_OK);
            ASSERT_EQ(link.ask(0x300 + i % 100, bytes).size(), wire::route_rsp.size);
        }
    }

    [[nodiscard]] testing::outcome example(const std::string &arguments) const {
        return testing::run_line(std::string(RIBKIT_SEND_ROUTE) + ' ' + arguments + " 2>&1");
    }

    testing::temporary_directory home;
    std::string url = "unix:" + home.file("bus");
};

TEST_F(rib_processes, serve_and_end_though_nobody_reads_what_they_print) {
    const testing::input_file fabric(fabric_text);
    for (const int signal : {SIGTERM, SIGINT}) {
        const filled_pipe output;
        const filled_pipe errors;
        rib_process rib("rib --trace --bus " + url + ' ' + fabric.path(), output.way_in(), errors.way_in());
        fill(*linked(), 3000);
        rib.stopped(signal); // ends, whatever is lost
    }
}

TEST_F(rib_processes, end_where_their_last_words_are_not_read) {
    const filled_pipe output(false);
    fcntl(output.way_in(), F_SETPIPE_SZ, 4096);
    rib_process rib("rib --tables all --memory --bus " + url, output.way_in(), STDERR_FILENO);
    fill(*linked(), 200);
    EXPECT_EQ(output.read_some(), "the RIB answers at " + url + '\n');
    EXPECT_EQ(WTERMSIG(rib.stopped(SIGTERM)), SIGTERM);
    EXPECT_FALSE(output.read_all().empty());
}

TEST_F(rib_processes, that_nobody_disturbs_end_well) {
    const filled_pipe output(false);
    rib_process rib("rib --tables none --bus " + url, output.way_in(), STDERR_FILENO);
    fill(*linked(), 1);
    EXPECT_TRUE(ended_well(rib.stopped(SIGTERM)));
    EXPECT_NE(output.read_all().find(" of 16384 hardware positions"), std::string::npos);
}

TEST_F(rib_processes, take_the_route_of_the_c_example_or_refuse_it) {
    EXPECT_EQ(example("").exit_code, 0);
    EXPECT_NE(example(url).exit_code, 0); // nobody is there
    for (const auto &[policy, exit_code, last] :
         {std::tuple{"", 0, "the RIB took 1 route of VSAN 1: ok\n"},
          std::tuple{"[[quota]]\nclient = \"fspf\"\nroutes = 0\n", 1,
                     "send_route: the RIB refused the message: hw tcam/ssram full\n"}}) {
        const testing::input_file who(policy);
        const filled_pipe errors(false);
        rib_process rib("rib --bus " + url + " --who " + who.path(), errors.way_in(), errors.way_in());
        linked();
        const testing::outcome sent = example(url);
        EXPECT_EQ(sent.exit_code, exit_code) << sent.output;
        EXPECT_NE(sent.output.find(last), std::string::npos) << sent.output;
        EXPECT_TRUE(ended_well(rib.stopped(SIGTERM)));
        EXPECT_EQ(errors.read_all().find("refuses opcode 0x101") != std::string::npos, exit_code != 0);
    }
}

// The one who sends is this process's user, whatever the message says.
TEST_F(rib_processes, let_a_name_use_its_clients_only) {
    const passwd *user = getpwuid(geteuid());
    ASSERT_NE(user, nullptr);
    for (const auto &[client, exit_code, last] :
         {std::tuple{"fspf", 0, "the RIB took 1 route of VSAN 1: ok\n"},
          std::tuple{"mcast", 1, "send_route: the RIB refused the message: bad parameters\n"}}) {
        const testing::input_file who(std::string("[[who]]\nname = \"") + user->pw_name + "\"\nclients = [\"" + client +
                                      "\"]\n");
        const filled_pipe errors(false);
        rib_process rib("rib --bus " + url + " --who " + who.path(), errors.way_in(), errors.way_in());
        linked();
        const testing::outcome sent = example(url);
        EXPECT_EQ(sent.exit_code, exit_code) << sent.output;
        EXPECT_NE(sent.output.find(last), std::string::npos) << sent.output;
        EXPECT_TRUE(ended_well(rib.stopped(SIGTERM)));
        const std::string said = errors.read_all();
        EXPECT_EQ(said.find(std::string(" from ") + user->pw_name + ": bad parameters: it may not use client 12\n") !=
                      std::string::npos,
                  exit_code != 0)
            << said;
    }
}

} // namespace
} // namespace ribkit::cli
