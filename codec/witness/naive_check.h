// Which bytes a check has to accept, in a second opinion: what the naive converters need of them, bounds written out by
// hand, and what the displays walk over.
#pragma once

#include "codec/witness/naive.h"

#include <optional>

namespace ribkit::witness {

/// The size of the message that the bytes (network form) begin with, records of an update included; none where they are
/// too few for what they say or a count exceeds its array.
std::optional<size_t> message_size(std::string_view name, std::span<const uint8_t> bytes);

/// What the check of that message has to return for just these bytes.
uint32_t verdict(std::string_view name, std::span<const uint8_t> bytes);

} // namespace ribkit::witness
