// Label routes in the RIB: a key belongs to the client that added it first; a path unit for each hop.
//
// The kinds of label routes that actions name follow from type and labels to match:
//   label           by labels alone, or by source and labels
//   label tunnel    by source without labels: all that comes in there goes into the tunnel
//   fc+label        by destination and labels
//   ucast+label     by destination without labels: labels to push for the unicast route of that destination
// "add" and "delete" are for any of them.
#pragma once

#include "rib/hardware/word_path.h"

namespace ribkit::rib {

/// As unicast says it of each.
struct label {
    static constexpr table_id id = table_id::label;
    static constexpr bool has_candidates = false;

    using key = model::label_key;
    using values = model::label_values;
    using change = model::label_change;

    struct stored {
        word_path path; ///< its sources and its hops
        bool marked;
    };

    /// With what is no part of such a key set to 0.
    static key key_of(uint32_t vsan, const change &one);
    static key first_of(uint32_t vsan) { return {vsan}; }
    static const model::destination &destination_of(const key &where) { return where.to; }

    /// A key of another VSAN than the update's, of no type, by source without one, by more labels than there can be, or
    /// by labels alone without one, makes no sense.
    static bool is_sound(uint32_t vsan, const key &where);
    static bool is_known(uint32_t action, const key &where);
    static bool is_add(uint32_t action) { return (action & any_add) != 0; }
    static bool is_delete(uint32_t action) { return (action & any_add << 1) != 0; }
    static uint32_t action_adding(const key &where);
    static uint32_t action_deleting(const key &where) { return action_adding(where) << 1; }

    static uint32_t store(hardware &behind, stored &made, const values &what);
    static uint32_t replace(hardware &behind, stored &held, const values &what);
    static uint32_t give_back(hardware &behind, stored &held);
    static void forget(stored &held) { held.path.forget(); }
    static values read(const hardware & /*behind*/, const stored &held, bool /*active*/) {
        return {held.path.first_part(), held.path.second_part()};
    }

  private:
    /// The action that takes an addition back is the next bit.
    static constexpr uint32_t any_add = RIB_ACTION_ADD | RIB_ACTION_ADD_LABEL | RIB_ACTION_ADD_LABEL_TUNNEL |
                                        RIB_ACTION_ADD_FC_LABEL | RIB_ACTION_ADD_UCAST_LABEL;
};

} // namespace ribkit::rib
