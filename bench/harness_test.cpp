// What a row of a benchmark says of its bound.
#include "bench/harness.h"

#include "testing/capture.h"

#include <gtest/gtest.h>

using namespace ribkit::bench;

namespace {

using ribkit::bench::print_row;
using ribkit::bench::times;
using ribkit::testing::printed_by;

TEST(bench_row, says_its_bound) {
    EXPECT_NE(printed_by([] { print_row("row", times{6, 10}, 0.6); }).find("0.600  at most 0.6\n"), std::string::npos);
}

TEST(bench_row, says_that_it_is_above_its_bound) {
    EXPECT_NE(printed_by([] {
                  print_row("row", times{7, 10}, 0.6);
              }).find("0.700  above its bound of 0.6\n"),
              std::string::npos);
}

TEST(bench_row, says_nothing_without_a_bound) {
    EXPECT_NE(printed_by([] { print_row("row", times{7, 10}); }).find("0.700\n"), std::string::npos);
}

} // namespace
