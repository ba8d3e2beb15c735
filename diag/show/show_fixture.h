// What the tests of traces and displays share: a stopped clock in a fixed zone, golden files, and random records.
//
// The golden files are written anew by: RIBKIT_REFRESH_GOLDEN=1 build/release/diag/diag_test; read the difference.
#pragma once

#include "diag/render.h"
#include "testing/capture.h"
#include "testing/fake_clock.h"
#include "testing/fake_if_index.h"
#include "testing/golden.h"
#include "testing/record.h"

#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace ribkit::diag {

class printing_test : public ::testing::Test {
  protected:
    printing_test() { testing::interfaces() = {}; }

    static constexpr uint32_t now = 1700000000; // Tue Nov 14 22:13:20 2023

  private:
    testing::stopped_clock clock_{now};
    testing::local_zone zone_{"UTC0"};
};

/// What `action` prints is compared with the kept output of that name.
inline void expect_golden_output(const std::string &name, const std::function<void()> &action) {
    testing::expect_golden(std::string("diag/golden/") + name + ".txt", testing::printed_by(action));
}

/// A line in a golden file that says what follows.
inline void label(const char *what) { std::printf("[%s]\n", what); }

/// Random fields: often small, a single bit, or a value that means something somewhere.
class random_fields {
  public:
    explicit random_fields(uint32_t seed) : random_(seed) {}

    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_()) % bound; }

    uint32_t word() {
        constexpr uint32_t known[] = {10,  12,  13,   14,     16,       28,       39,       64,         66,
                                      128, 255, 4095, 0xffff, 0xff0000, 0xffff00, 0xffffff, 0xdeadbeef, 0xffffffff};
        switch (below(5)) {
        case 0:
            return below(20);
        case 1:
            return uint32_t{1} << below(32);
        case 2:
            return known[below(std::size(known))];
        case 3:
            return below(0x1000000);
        default:
            return static_cast<uint32_t>(random_());
        }
    }

    /// A time that every host can tell: before 2038.
    uint32_t time() { return word() & 0x7fffffff; }

    /// A byte that is often zero or small.
    uint32_t byte() { return word() & 0xff; }

    testing::record words(size_t count) {
        testing::record made;
        for (size_t i = 0; i < count; ++i) {
            made.word(word());
        }
        return made;
    }

  private:
    std::mt19937 random_;
};

inline constexpr int random_rounds = 600;

} // namespace ribkit::diag
