// All that can be read and written by name: every message of the catalogue, the forms that no converter handles, the
// records of displays, envelopes and saved images.
#pragma once

#include "decode/shape.h"
#include "rib_check.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::decode {

struct kind {
    using checker = uint32_t (*)(const void *message, uint32_t size, rib_check_report *report);

    const char *name;
    const codec::layout *wire;
    checker check;
    oddity odd = oddity::none;
    const char *what = ""; ///< where the name does not say it

    [[nodiscard]] const shape &fields() const { return shape_of(*wire, odd); }
    /// Whether the first bytes say how much follows.
    [[nodiscard]] bool is_open() const;
};

std::span<const kind> kinds();

/// By its name, with or without "rib_" or "fib_"; null where there is none.
const kind *find_kind(std::string_view name);

/// The names of all, written as `wanted` is: with their prefixes or without.
std::vector<std::string_view> kind_names(std::string_view wanted);

/// The kind that an envelope's operation code names; null where nobody knows it.
const kind *kind_of_opcode(uint32_t opcode);

/// The length of the message that `bytes` begin with; 0, and the report filled, where its check refuses it.
uint32_t message_size(const kind &what, std::span<const uint8_t> bytes, rib_check_report &report);

/// What a check says, in one line.
std::string report_text(const rib_check_report &report);

} // namespace ribkit::decode
