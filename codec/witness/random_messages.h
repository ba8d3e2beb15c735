// Random messages of every kind: all bytes random, counts and kinds at and around what their lists have room for.
#pragma once

#include "codec/witness/transfer.h"

#include <random>
#include <string_view>
#include <vector>

namespace ribkit::witness {

/// A message in the form of a host of the given byte order; `big` is the network form too. The buffer has room for all
/// that a converter may touch from one buffer to another; in place, counts that lie inside a list that has run over its
/// room may come out as anything, and a naive conversion should be tried first (it throws past_the_end).
std::vector<uint8_t> random_message(std::string_view name, order form, std::mt19937 &random);

} // namespace ribkit::witness
