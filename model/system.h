// What the RIB tells of itself and of the switch, as values: who has registered, which VSANs there are, how many
// routes, which domains are reached, what was changed last.
#pragma once

#include "model/label.h"
#include "rib_codes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace ribkit::model {

/// A client that has registered.
struct registration {
    uint32_t client = 0;   ///< its identity
    uint32_t distance = 0; ///< of its routes: the lower, the rather they are active
    std::string name{};

    bool operator==(const registration &) const = default;
};

/// How far a client's routes are from being active unless it registers another distance: the lower, the rather.
constexpr uint32_t default_distance(uint32_t uuid) {
    switch (uuid) {
    case RIB_CLIENT_PORT_MANAGER:
    case RIB_CLIENT_FLOGI:
    case RIB_CLIENT_TLPORT:
        return 0;
    case RIB_CLIENT_CONFIG:
    case RIB_CLIENT_OPERATOR:
        return 5;
    case RIB_CLIENT_FCDOMAIN:
        return 10;
    case RIB_CLIENT_FSPF:
        return 110;
    default:
        return 200;
    }
}

enum class vsan_state : uint8_t { no_change = 0, active = 1, suspended = 2 }; ///< as rib_vsan_state_to_str has them

/// What decides which of several next hops a flow takes, as rib_vsan_bal_to_str has it.
enum class flow_balance : uint8_t { source_and_destination = 1, exchange = 2 };

struct vsan_attributes {
    vsan_state state = vsan_state::active;
    flow_balance balance = flow_balance::exchange;
    bool in_order = false;
    uint32_t latency = 0; ///< milliseconds for which frames are held when paths change and order is kept

    bool operator==(const vsan_attributes &) const = default;
};

/// How many routes a VSAN has, and when that changed last.
struct vsan_summary {
    uint32_t vsan = 0;
    uint32_t modified = 0; ///< seconds since 1970; 0: not since the RIB started
    uint32_t unicast = 0;
    uint32_t multicast = 0;
    uint32_t label = 0;

    bool operator==(const vsan_summary &) const = default;
};

/// The domains of a VSAN to which there are routes, as bitmaps of mem/.
struct domain_reach {
    using bitmap = std::array<uint8_t, 32>;

    uint32_t vsan = 0;
    bitmap present{}; ///< there is a route
    bitmap direct{};  ///< ... over a link of this switch's own

    bool operator==(const domain_reach &) const = default;
};

/// What the RIB keeps in one kind of memory.
struct memory_pool {
    uint32_t pool = 0; ///< as rib_mem_to_str has it
    uint32_t data_size = 0;
    uint32_t n_data = 0;

    bool operator==(const memory_pool &) const = default;
};

inline constexpr size_t memory_pools = 16;

/// How this RIB came to be the one that answers.
struct availability {
    uint32_t sup_state = 1; ///< as rib_sup_state_to_str has it
    bool switching_over = false;
    bool started_stateful = false;
    bool started_stateless = true;
    bool standby_existed = false;
    bool sent_heartbeat = false;

    bool operator==(const availability &) const = default;
};

/// The log of a table has so many changes at most, each at an index.
inline constexpr uint32_t logged_changes = 128;
/// What stands in the place of an index where a record is none, but tells how many there were.
inline constexpr uint32_t log_marker = logged_changes;

/// The place of a number in the log.
constexpr uint32_t log_index(uint32_t sequence) { return sequence % logged_changes; }

/// A change of a table, as its log has it.
template <class Key> struct logged_change {
    uint32_t sequence; ///< goes on at 0 behind the largest number
    uint32_t time;     ///< seconds since 1970
    uint32_t oper;     ///< FIB_OPER_...
    uint32_t action;   ///< RIB_ACTION_...
    Key key;

    bool operator==(const logged_change &) const = default;
};

/// Frames of one exchange between two ports.
struct flow {
    uint32_t vsan = 0;
    uint32_t source = 0;      ///< S_ID
    uint32_t destination = 0; ///< D_ID
    uint16_t exchange = 0;    ///< OX_ID

    bool operator==(const flow &) const = default;
};

/// When a table was compared, and what was different.
struct verification {
    uint32_t type = 0;                     ///< as rib_verf_to_str has it; 0: never, or the report was cleared
    uint32_t generated = 0;                ///< seconds since 1970
    uint32_t completed = 0;                ///< ... and 0 until then, or where a module has not said all
    std::map<label_key, uint32_t> found{}; ///< FIB_VERF_... by key; of a destination VSAN and FC ID with its mask

    bool operator==(const verification &) const = default;
};

} // namespace ribkit::model
