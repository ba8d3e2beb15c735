// Whether a message that has several messages of the catalogue one behind the other can be trusted: each with its own
// check, where it stands. Offsets of a report are those of the whole.
#pragma once

#include "rib_check.h"

#include <cstdint>
#include <span>

namespace ribkit::protocol {

/// As the catalogue's checks.
using whole_check = uint32_t(std::span<const uint8_t> message, rib_check_report *report);

/// Updates of the three tables: the head, and as many paths as it says.
uint32_t check_unicast_fib_update(std::span<const uint8_t> message, rib_check_report *report);
uint32_t check_multicast_fib_update(std::span<const uint8_t> message, rib_check_report *report);
uint32_t check_label_fib_update(std::span<const uint8_t> message, rib_check_report *report);
/// ... and of what changes its VSAN.
uint32_t check_rewrite_update(std::span<const uint8_t> message, rib_check_report *report);

/// Their answers: the response, in front of it the keys that did not take effect, or nothing.
uint32_t check_unicast_fib_answer(std::span<const uint8_t> message, rib_check_report *report);
uint32_t check_multicast_fib_answer(std::span<const uint8_t> message, rib_check_report *report);
uint32_t check_label_fib_answer(std::span<const uint8_t> message, rib_check_report *report);

/// A module's record, its instance, and as many ports as the record says.
uint32_t check_module_message(std::span<const uint8_t> message, rib_check_report *report);

} // namespace ribkit::protocol
