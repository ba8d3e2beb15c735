// Texts like those that people write, with mistakes like those that people and transfers make.
#pragma once

#include <random>
#include <string>

namespace ribkit::fuzz {

/// The text after one to four changes drawn from `random`: bytes flipped, left out and put in, pieces of it and of
/// `other` moved about, numbers at limits, words without end, nesting, other line ends, bytes that are no text.
std::string mutated(std::string text, const std::string &other, std::mt19937 &random);

} // namespace ribkit::fuzz
