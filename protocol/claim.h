// A claim to the RIB's address, as RIBs of this kind send it to each other where a server lets several of them listen.
// What follows from one is the service's.
#pragma once

#include "codec/layout.h"
#include "ribkit_rib.h"

namespace ribkit::protocol {

/// Microseconds from 1970 to the sender's start, and a random number, each in two words.
inline constexpr codec::layout claim{"rib_claim",
                                     20,
                                     {codec::word(0, "settled"), codec::word(4, "started_high"),
                                      codec::word(8, "started_low"), codec::word(12, "drawn_high"),
                                      codec::word(16, "drawn_low")}};
static_assert(claim.size == RIBKIT_CLAIM_SIZE);

} // namespace ribkit::protocol
