// Multicast routes in the RIB: a destination belongs to the client that added it first; a path unit for each member.
#pragma once

#include "rib/hardware/word_path.h"

namespace ribkit::rib {

/// As unicast says it of each.
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

    static bool is_sound(uint32_t /*vsan*/, const key & /*where*/) { return true; }
    static bool is_known(uint32_t action, const key & /*where*/) {
        return is_add(action) || is_delete(action) || action == RIB_ACTION_DELETE_GROUP;
    }
    static bool is_add(uint32_t action) { return action == RIB_ACTION_ADD; }
    static bool is_delete(uint32_t action) { return action == RIB_ACTION_DELETE; }
    static uint32_t action_adding(const key & /*where*/) { return RIB_ACTION_ADD; }
    static uint32_t action_deleting(const key & /*where*/) { return RIB_ACTION_DELETE; }
    /// Whether a destination is of a group: it has the group's bits under the group's mask.
    static bool is_in(const model::destination &group, const model::destination &one) {
        return (one.fcid & group.mask) == (group.fcid & group.mask);
    }

    static uint32_t store(hardware &behind, stored &made, const values &what);
    static uint32_t replace(hardware &behind, stored &held, const values &what);
    static uint32_t give_back(hardware &behind, stored &held);
    static void forget(stored &held) { held.path.forget(); }
    static values read(const hardware & /*behind*/, const stored &held, bool /*active*/) {
        return {held.path.first_part()};
    }
};

} // namespace ribkit::rib
