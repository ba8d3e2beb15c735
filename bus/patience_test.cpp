// Waiting ends when all that was allowed is used up, by pauses or by waits, and begins anew when it is renewed.
#include "bus/patience.h"

#include "bus/service_handle.h"
#include "ribkit_platform.h"
#include "testing/fault_script.h"

#include <gtest/gtest.h>
#include <numeric>
#include <vector>

namespace ribkit::bus {
namespace {

using namespace std::chrono_literals;
using milliseconds = std::chrono::milliseconds;

std::vector<milliseconds> all_pauses(patience &waiting) {
    std::vector<milliseconds> pauses;
    while (const auto pause = waiting.next_pause()) {
        pauses.push_back(*pause);
    }
    return pauses;
}

TEST(patience, pauses_double_and_leave_time_for_an_attempt) {
    patience waiting(1600ms);
    EXPECT_EQ(all_pauses(waiting),
              (std::vector{50ms, 100ms, 200ms, 400ms, 750ms, 50ms, 25ms, 12ms, 6ms, 3ms, 2ms, 1ms, 1ms}));
    EXPECT_EQ(waiting.left(), 0ms);
    waiting.renew();
    EXPECT_EQ(waiting.left(), 1600ms);
    EXPECT_EQ(waiting.next_pause(), 50ms);
}

TEST(patience, no_pause_is_longer_than_a_second_and_together_they_are_what_was_allowed) {
    patience waiting(1min);
    const auto pauses = all_pauses(waiting);
    EXPECT_EQ(*std::max_element(pauses.begin(), pauses.end()), 1s);
    EXPECT_EQ(std::accumulate(pauses.begin(), pauses.end(), 0ms), 1min);
}

TEST(patience, none_at_all_leaves_a_second_for_each_answer) {
    patience waiting(0ms);
    EXPECT_EQ(waiting.next_pause(), std::nullopt);
    EXPECT_EQ(waiting.for_answer(), 1s);
}

TEST(patience, what_is_waited_for_in_the_service_counts) {
    const testing::fault_script script("clock virtual\n");
    const service_handle handle("local:patience_test");
    patience waiting(2s);
    const qip_recv_opts opts{{QIP_RECV_INCOMING, 0, 0, 0, 1234}};
    {
        const patience::waiting counted(waiting);
        qip_ref note{};
        EXPECT_NE(qip_recv(handle.number(), &note, &opts), 0);
    }
    EXPECT_EQ(waiting.left(), 766ms);
    EXPECT_EQ(waiting.for_answer(), 766ms);
    EXPECT_EQ(waiting.seconds_left(), 1s);
}

} // namespace
} // namespace ribkit::bus
