// Whole programs whose memory fails: each run of the command lets one allocation fail, or all from one on. It has to
// end with the output that it has otherwise, or with a line on standard error that says what was missing.
#include "fuzz/alloc_runs.h"
#include "fuzz/hostile_bus.h"

#include <gtest/gtest.h>

namespace ribkit::fuzz {
namespace {

constexpr const char *script = RIBKIT_SOURCE_DIR "/fuzz/allocations/virtual.faults";

TEST(runs, are_alike_however_their_numbers_are_written) {
    EXPECT_TRUE(are_alike("\"seconds\": 5e-04,", "\"seconds\": 0.000508,"));
    EXPECT_TRUE(are_alike("1 message, 12 routes", "20 messages, 3 routes"));
    EXPECT_FALSE(are_alike("\"seconds\": 5e-04,", "\"seconds\": 5e-04"));
}

TEST(failing_allocations, of_a_lab) { sweep_alone({"lab", "--wait", "5", tiny_fabric}); }

TEST(failing_allocations, of_a_lab_under_the_virtual_clock) { sweep_alone({"lab", "--faults", script, tiny_fabric}); }

TEST(failing_allocations, of_a_lab_that_writes_all) {
    const testing::temporary_directory home;
    const std::string file = home.file("run.json");
    sweep_alone({"lab", "--wait", "5", "--memory", "--envelopes", "--json=" + file, tiny_fabric}, file);
}

TEST(failing_allocations, of_a_generated_fabric) {
    const testing::temporary_directory home;
    const std::string file = home.file("fabric.toml");
    sweep_alone({"fabric", "--switches", "4", "--vsans", "2", "-o", file}, file);
}

TEST(failing_allocations, of_displays) { sweep_alone({"show", "fcu", RIBKIT_SOURCE_DIR "/examples/messages/fcu.hex"}); }

TEST(failing_allocations, of_texts) { sweep_alone({"text", "--json", "rib_uuid", "12"}); }

class failing_allocations_between_processes : public ::testing::TestWithParam<transport> {
  protected:
    /// A bus on which nobody has been.
    [[nodiscard]] std::string next_url() {
        number_++;
        return meeting.url() + (GetParam() == transport::server ? "/f" : "") + std::to_string(number_);
    }

    [[nodiscard]] static reason told() { return GetParam() == transport::server ? reason::any : reason::memory; }

    /// Of a command that a RIB answers whose memory does not fail.
    void sweep_command(const std::function<words(const std::string &url)> &arguments) {
        const failing none;
        const ending whole = beside_rib(arguments, none).first;
        ASSERT_EQ(whole.exit_code, 0) << shown(whole);
        sweep(none.allocations(), [&](const failing &memory) {
            const auto [end, command] = beside_rib(arguments, memory);
            const std::string wrong = fault_of(end, whole.output, told());
            return wrong.empty() ? "" : wrong + "\n" + shown(end) + memory.line(command) + memory.report();
        });
    }

    bus meeting{GetParam()};

  private:
    std::pair<ending, words> beside_rib(const std::function<words(const std::string &url)> &arguments,
                                        const failing &memory) {
        const std::string url = next_url();
        const ribkit::rib::rib_service healthy(url, {ribkit::rib::rib_spaces::for_vsans(1)});
        const words command = ribkit(arguments(url));
        return {child(command, memory.settings()).end(), command};
    }

    int number_ = 0;
};

TEST_P(failing_allocations_between_processes, of_a_client) {
    sweep_command([](const std::string &url) { return words{"client", "--wait", "5", "--bus", url, tiny_fabric}; });
}

TEST_P(failing_allocations_between_processes, of_shown_routes) {
    sweep_command([](const std::string &url) { return words{"routes", "--wait", "5", "--bus", url}; });
}

TEST_P(failing_allocations_between_processes, of_a_lab) {
    sweep_alone({"lab", "--wait", "5", "--bus", next_url(), tiny_fabric}, "", told());
}

/// A RIB whose memory fails answers so, or ends with a word about it; as soon as it has memory it serves. A signal ends
/// it.
TEST_P(failing_allocations_between_processes, of_a_rib) {
    const auto client = [](const std::string &url) {
        return child(ribkit({"client", "--wait", "5", "--bus", url, tiny_fabric})).end();
    };
    std::string wanted;
    const auto attempt = [&](const failing &memory) -> std::string {
        const std::string url = next_url();
        const words command = ribkit({"rib", "--wait", "5", "--tables", "none", "--bus", url});
        child rib(command, memory.settings());
        std::string wrong;
        if (rib.prints("the RIB answers at")) {
            const ending first = client(url);
            wrong = first.in_time && first.signal == 0 && (first.exit_code == 0 || !first.errors.empty())
                        ? ""
                        : "its client: " + shown(first);
            bool serves = memory.often() == how::onwards;
            for (int left = 4; left > 0 && !serves;
                 left--) { // they may meet the failure, or a connection that it left deaf
                serves = client(url).exit_code == 0;
            }
            wrong += serves ? "" : "it has memory and does not serve";
        }
        rib.signal(SIGTERM);
        const ending end = rib.end();
        wanted = wanted.empty() ? end.output : wanted;
        wrong += fault_of(end, wanted, told());
        return wrong.empty() ? "" : wrong + "\n" + shown(end) + memory.line(command) + memory.report();
    };
    const failing none;
    ASSERT_EQ(attempt(none), "");
    sweep(none.allocations(), attempt);
}

INSTANTIATE_TEST_SUITE_P(over, failing_allocations_between_processes, transports_between_processes(), transport_name);

} // namespace
} // namespace ribkit::fuzz
