// Durations as users write them, and what is refused.
#include "base/duration.h"

#include <gtest/gtest.h>

namespace ribkit::base {
namespace {

using std::chrono::milliseconds;

TEST(duration, every_unit_is_read) {
    EXPECT_EQ(parse_duration("0s"), milliseconds(0));
    EXPECT_EQ(parse_duration("3s"), milliseconds(3000));
    EXPECT_EQ(parse_duration("250ms"), milliseconds(250));
    EXPECT_EQ(parse_duration("1.5s"), milliseconds(1500));
    EXPECT_EQ(parse_duration("1.5m"), milliseconds(90'000));
    EXPECT_EQ(parse_duration("0.001s"), milliseconds(1));
    EXPECT_EQ(parse_duration("86400s"), milliseconds(86'400'000));
}

TEST(duration, anything_else_is_refused) {
    for (const char *text : {"", "s", "3", "3 s", "-3s", ".5s", "1.s", "3h", "1e3s", "0.0001s", "0.5ms", "86401s",
                             "999999999999999999999s", "1.0000000000001s", "3ss"}) {
        EXPECT_FALSE(parse_duration(text)) << text;
    }
}

TEST(duration, what_is_printed_reads_back) {
    EXPECT_EQ(duration_text(milliseconds(0)), "0s");
    EXPECT_EQ(duration_text(milliseconds(250)), "250ms");
    EXPECT_EQ(duration_text(milliseconds(90'000)), "90s");
    EXPECT_EQ(duration_text(milliseconds(1050)), "1.05s");
    for (const int64_t count : {1, 10, 999, 1000, 1001, 12'340, 86'400'000}) {
        EXPECT_EQ(parse_duration(duration_text(milliseconds(count))), milliseconds(count));
    }
}

} // namespace
} // namespace ribkit::base
