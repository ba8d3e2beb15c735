// Multicast routes in the RIB: a destination belongs to the client that added it first; a path unit for each member.
#pragma once

#include "rib/hardware.h"
#include "rib/word_path.h"

namespace ribkit::rib {

struct multicast {
    static constexpr table_id id = table_id::multicast;
    static constexpr bool has_candidates = false;

    using key = model::multicast_key;
    using values = model::multicast_values;
    using change = model::multicast_change;

    struct stored {
        word_path path; ///< its members
        bool marked;
    };

    static key key_of(uint32_t vsan, const change &one) { return {vsan, one.to}; }
    static key first_of(uint32_t vsan) { return {vsan, {0, 0}}; }
    static const model::destination &destination_of(const key &where) { return where.to; }
    static bool is_add(uint32_t action) { return action == RIB_ACTION_ADD; }
    static bool is_delete(uint32_t action) { return action == RIB_ACTION_DELETE; }
    static uint32_t action_adding(const key &) { return RIB_ACTION_ADD; }
    static uint32_t action_deleting(const key &) { return RIB_ACTION_DELETE; }
    /// Whether a key is of a group: its FC ID has the group's bits.
    static bool is_in(const model::destination &group, const key &one) {
        return (one.to.fcid & group.mask) == group.fcid;
    }

    static uint32_t judge(uint32_t vsan, const change &one);
    static uint32_t store(hardware &behind, stored &made, const values &what);
    static uint32_t replace(hardware &behind, stored &held, const values &what);
    static uint32_t give_back(hardware &behind, stored &held);
    static void forget(stored &held) { held.path.forget(); }
    static values read(const hardware &, const stored &held, bool) { return {held.path.first_part()}; }
};

} // namespace ribkit::rib
