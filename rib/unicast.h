// Unicast routes in the RIB: each owner has a candidate for a destination; hops stand in path units.
#pragma once

#include "rib/hardware/hardware.h"

namespace ribkit::rib {

/// A kind of route, as table<Kind> needs it: its types, and what is different from the other kinds.
struct unicast {
    static constexpr table_id id = table_id::unicast;
    /// Whether each owner may have a route of a destination.
    static constexpr bool has_candidates = true;

    using key = model::route_key;
    using values = model::route_values;
    using change = model::unicast_change;

    /// A route as the table keeps it.
    struct stored {
        uint32_t metric;
        uint32_t flag; ///< without the active bit
        uint32_t path; ///< the first of as many path units as it has hops; of no meaning without any
        model::carried_bytes carried;
        uint8_t hops;
        bool marked; ///< named since the owner's merge began
    };

    static key key_of(uint32_t vsan, const change &one) { return {vsan, one.to}; }
    static key first_of(uint32_t vsan) { return {vsan, {0, 0}}; }
    static const model::destination &destination_of(const key &where) { return where.to; }

    /// Whether the key can be one of the VSAN's.
    static bool is_sound(uint32_t /*vsan*/, const key & /*where*/) { return true; }
    /// Whether there is such an action, and it is for such a key.
    static bool is_known(uint32_t action, const key &where);
    static bool is_add(uint32_t action) { return action == RIB_ACTION_ADD; }
    static bool is_delete(uint32_t action) { return action == RIB_ACTION_DELETE; }
    /// How an effect says that a route was added, and that it was deleted.
    static uint32_t action_adding(const key & /*where*/) { return RIB_ACTION_ADD; }
    static uint32_t action_deleting(const key & /*where*/) { return RIB_ACTION_DELETE; }

    /// Obtains all that a new route needs, or nothing. @return 0; RIB_BAD_PARAMETERS where it has more hops than there
    /// can be; or the result code of what is full
    static uint32_t store(hardware &behind, stored &made, const values &what);
    /// Puts another route in place of one, or leaves it. @return as store
    static uint32_t replace(hardware &behind, stored &held, const values &what);
    /// @return 0, or the first result code of what was not taken back
    static uint32_t give_back(hardware &behind, stored &held);
    /// Gives back what is not the hardware's, where all ends.
    static void forget(stored & /*held*/) {}
    static values read(const hardware &behind, const stored &held, bool active);

    /// Changes flag and metric, as the action says.
    static void alter(stored &held, uint32_t action, const values &what);
    /// What the order among candidates of one distance depends on.
    static uint32_t cost(const stored &held) { return held.metric; }
};

} // namespace ribkit::rib
