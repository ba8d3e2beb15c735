// What becomes of a process that a signal has asked to end.
#include "base/stop_signals.h"

#include <ctime>
#include <gtest/gtest.h>
#include <unistd.h>

namespace ribkit::base {
namespace {

void ask_this_process_to_end() { kill(getpid(), SIGTERM); }

TEST(stop_signals, a_second_one_ends_a_process_at_work) {
    const auto work_on = [] {
        const stop_signals signals;
        ask_this_process_to_end();
        signals.wait();
        ask_this_process_to_end();
        for (;;) {
            std::clock(); // time of the processor goes by
        }
    };
    EXPECT_EXIT(work_on(), ::testing::KilledBySignal(SIGTERM), "");
}

TEST(stop_signals, a_process_that_is_not_at_work_ends_by_itself) {
    const auto wait_for_nobody = [] {
        const stop_signals signals;
        ask_this_process_to_end();
        for (;;) {
            pause();
        }
    };
    EXPECT_EXIT(wait_for_nobody(), ::testing::KilledBySignal(SIGTERM), "");
}

} // namespace
} // namespace ribkit::base
