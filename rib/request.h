// What the RIB is asked and what it answers, as values: the head of an update, the numbers of its answer, and what
// happens meanwhile that others want to know.
#pragma once

#include "model/label.h"
#include "model/multicast.h"
#include "model/routes.h"
#include "model/system.h"
#include "rib_codes.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ribkit::rib {

/// The tables, numbered as the synchronisation logs are.
enum class table_id : uint8_t { label, multicast, unicast };
inline constexpr size_t tables = 3;

/// A client has at most so many topology versions in a VSAN.
inline constexpr size_t most_versions = 240;

/// An update without its records.
struct update_head {
    uint32_t uuid; ///< who asks
    uint32_t vsan;
    uint32_t oper;                        ///< RIB_OPER_...
    std::span<const uint32_t> versions{}; ///< of RIB_OPER_ADD_VERSION
    bool in_envelope = false;
    uint32_t now = 0; ///< seconds since 1970
};

/// What an update has led to.
struct update_answer {
    uint32_t result;       ///< result code: that of the first record without effect
    uint32_t oper;         ///< of the update
    uint32_t vsan;         ///< of the update
    uint32_t accepted = 0; ///< records that took effect; of an operation that names none, routes or versions
    uint32_t held = 0;     ///< routes that this table of the VSAN now has, of all clients

    bool operator==(const update_answer &) const = default;
};

using model::default_distance;

} // namespace ribkit::rib
