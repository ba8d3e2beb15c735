// Everything that follows acceptance: for each message, envelope and image its check, and every function that handles
// what the check lets pass. Tests and fuzzers bring the bytes and the walls around them.
#pragma once

#include "codec/message.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ribkit::fuzz {

/// Accepted bytes, and a second buffer of the same size that may be overwritten. A byte read or written outside of
/// either is what is looked for.
struct accepted {
    const uint8_t *bytes;
    uint8_t *scratch;
    uint32_t size;
};

struct opener {
    std::string_view name; ///< as in the catalogue, or of an envelope or image
    codec::message::checker check;
    void (*read)(const accepted &message); ///< what the catalogue does not name: field readers, steps, parts' displays
    const codec::message *row;             ///< null of an envelope or image
};

/// Envelopes and images, then every message of the catalogue: an order that only ever grows at its end, since fuzz
/// inputs name an opener by its number.
std::span<const opener> openers();
const opener *find_opener(std::string_view name);

/// The bytes are accepted: hands them to the converter, from one buffer into the other and in place, and to everything
/// that reads them.
void open(const opener &how, const accepted &message);

} // namespace ribkit::fuzz
