// Which bytes a check has to accept, in a second opinion: what the naive converters need of them, bounds written out by
// hand, and what the displays walk over.
#pragma once

#include "codec/witness/naive.h"
#include "rib_check.h"

#include <optional>

namespace ribkit::witness {

/// The size of the message that the bytes (network form) begin with, records of an update included; none where they are
/// too few for what they say or a count exceeds its array.
std::optional<size_t> message_size(std::string_view name, std::span<const uint8_t> bytes);

/// What the check of that message has to return for just these bytes.
uint32_t verdict(std::string_view name, std::span<const uint8_t> bytes);

/// The library's checks by name, as in naive.h.
struct exported_check {
    std::string_view name;
    uint32_t (*check)(const void *message, uint32_t size, rib_check_report *report);
};

std::span<const exported_check> exported_checks();
const exported_check *find_check(std::string_view name);

} // namespace ribkit::witness
