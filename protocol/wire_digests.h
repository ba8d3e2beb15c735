// What the bytes of each message mean to a program, as a number: two programs whose digests of a message are the same
// understand each other in it. The RIB answers with them all; whoever asks compares those that it uses.
#pragma once

#include "codec/layout.h"
#include "rib_check.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::protocol {

inline constexpr codec::layout wire_digest{"wire_digest", 32, {codec::bytes(0, 28, "name"), codec::word(28, "digest")}};

/// The answer to RIBKIT_OPCODE_WIRE_DIGESTS: a digest over all messages, and one for each.
inline constexpr codec::layout wire_digests{"rib_wire_digests",
                                            8,
                                            {codec::word(0, "all"), codec::word(4, "n_message", codec::meaning::count),
                                             codec::list(8, "message", codec::in::word(4), wire_digest, 32)}};

/// Over the names and formats of all messages; `ribkit --version` shows it.
uint32_t digest_of_all();

/// This program's, as a message. Throws std::bad_alloc.
std::vector<uint8_t> own_wire_digests();

/// As the functions of rib_check.h.
uint32_t check_wire_digests(const void *message, uint32_t size, rib_check_report *report);

/// The messages whose names begin so and that the other program has otherwise or not at all, in the catalogue's order.
/// @param theirs has passed its check
std::vector<std::string_view> different_messages(std::span<const uint8_t> theirs, std::string_view beginning);

} // namespace ribkit::protocol
