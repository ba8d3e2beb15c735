// What every wrapper shares: where messages go, how the service's failures become result codes, and awaiting an answer.
#pragma once

#include "qip.h"
#include "rib_codes.h"
#include "rib_wrap.h"

namespace ribkit::wrap {

inline constexpr qip_addr to_rib{RIB_WRAP_NODE_RIB, RIB_WRAP_SAP_RIB};
inline constexpr qip_addr to_local{RIB_WRAP_NODE_LISTENERS,
                                   RIB_WRAP_SAP_GROUP}; // an answer's address, and the local listeners'
inline constexpr qip_addr to_modules{RIB_WRAP_NODE_MODULES, RIB_WRAP_SAP_GROUP};

constexpr uint32_t platform_failure(int error) { return RIB_PLATFORM_FAILURE | (static_cast<uint32_t>(error) & 0xfff); }

/// Clears 25 of the reference's 28 bytes; null is left alone.
void clear_reference(qip_ref *ref);

/// Right after a failed call: traces a text with %u for errno; the failure's code.
uint32_t trace_failure(const char *failure);
uint32_t trace_failed_request(uint32_t uuid, const char *failure);

/// The first step of a request that is awaited: its reference cleared, the answer all zero.
void prepare(rib_wrap_msg &request, rib_wrap_msg &answer);

/// Awaits the answer to a request just sent, at most `seconds`; fills the answer but for its payload. A result code.
uint32_t await_answer(uint32_t handle, rib_wrap_msg &request, rib_wrap_msg &answer, uint32_t seconds);

} // namespace ribkit::wrap
