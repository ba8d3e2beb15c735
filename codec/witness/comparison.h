// Holds one converter against the naive one, and against the golden vectors. The converter is given as a function, so
// that the exported functions and every variant of the engine beneath them go through the same mill.
#pragma once

#include "codec/witness/golden.h"
#include "codec/witness/naive.h"

#include <functional>
#include <gtest/gtest.h>

namespace ribkit::witness {

struct subject {
    const pair *model;
    direction way;
    order host; ///< of the converter that is examined, not of this machine
    std::function<uint32_t(const void *src, void *dst)> convert;
    bool aligned = false; ///< true where the converter's types demand buffers aligned to 4
};

/// Random messages into a second buffer, at odd addresses, and in place: the result and every byte in and around the
/// destination must be the naive converter's, and a separate source must stay as it was.
::testing::AssertionResult agrees_at_random(const subject &what, unsigned rounds, uint32_t seed = 1);

/// Random messages in buffers that begin or end at inaccessible pages, exactly where the naive converter does.
::testing::AssertionResult agrees_at_the_edge(const subject &what, unsigned rounds, uint32_t seed = 2);

/// One golden vector, in a second buffer and in place, as far as the vector is meant for either.
::testing::AssertionResult agrees_with_golden(const subject &what, const golden &vector);

} // namespace ribkit::witness
