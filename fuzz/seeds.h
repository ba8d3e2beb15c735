// The inputs that a fuzzer starts from: every golden message of the witnesses that a check accepts, at its size.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ribkit::fuzz {

using byte_vector = std::vector<uint8_t>;

/// An accepted message, and the number of its opener.
struct sample {
    std::string name;
    uint8_t opener;
    byte_vector message;
};

/// Golden messages as they arrive, whole updates, envelopes and images: all accepted.
std::vector<sample> samples();

/// The same as inputs of the engine target, and every golden message as it is sent; by file name.
std::map<std::string, byte_vector> engine_seeds();
/// All samples as inputs of the check target, by file name.
std::map<std::string, byte_vector> check_seeds();

/// A message of each kind for the decode target, and JSON of some for the encode target, by file name.
std::map<std::string, byte_vector> decode_seeds();
std::map<std::string, byte_vector> encode_seeds();

} // namespace ribkit::fuzz
