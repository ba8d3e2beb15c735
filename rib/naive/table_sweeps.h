// What is done to all of a client's routes of a VSAN, or of a group, in the order of their keys. A part of table.cpp.
#pragma once

#include "rib/table.h"
#include "rib_codes.h"

namespace ribkit::rib {

// A group's destinations begin where its address does, and end with the last that its mask lets pass.
template <class Kind> uint32_t table<Kind>::remove_group(turn &by, const model::destination &group) {
    if constexpr (Kind::id == table_id::multicast) {
        const uint32_t last = group.fcid | ~group.mask;
        bool is_others = false;
        uint32_t removed = 0;
        place at = index_.lower_bound({by.vsan, {group.fcid & group.mask, 0}});
        while (at != index_.end() && at->first.vsan == by.vsan && at->first.to.fcid <= last) {
            record *mine = Kind::is_in(group, at->first.to) ? own(at, by) : nullptr;
            is_others |= mine == nullptr && Kind::is_in(group, at->first.to);
            if (mine == nullptr) {
                ++at;
            } else {
                remove_at(by, at, *mine);
                removed++;
            }
        }
        return removed != 0 ? RIB_OK : is_others ? RIB_OBJECT_OWNED : RIB_NO_ENTRY;
    } else {
        return RIB_BAD_PARAMETERS;
    }
}

template <class Kind> uint32_t table<Kind>::remove_all(turn &by) {
    return remove_where(by, [](record & /*mine*/) { return true; });
}

template <class Kind> uint32_t table<Kind>::remove_unmarked(turn &by) {
    return remove_where(by, [](record &mine) {
        const bool was_named = mine.what.marked;
        mine.what.marked = false;
        return !was_named;
    });
}

template <class Kind> template <class Which> uint32_t table<Kind>::remove_where(turn &by, Which which) {
    uint32_t removed = 0;
    place at = index_.lower_bound(Kind::first_of(by.vsan));
    while (at != index_.end() && at->first.vsan == by.vsan) {
        record *mine = own(at, by);
        if (mine != nullptr && which(*mine)) {
            remove_at(by, at, *mine);
            removed++;
        } else {
            ++at;
        }
    }
    return removed;
}

template <class Kind> uint32_t table<Kind>::replay(turn &by) {
    uint32_t told = 0;
    for (auto at = index_.lower_bound(Kind::first_of(by.vsan)); at != index_.end() && at->first.vsan == by.vsan; ++at) {
        if (const record *mine = own(at, by); mine != nullptr) {
            tell(by, at->first, *mine, Kind::action_adding(at->first));
            told++;
        }
    }
    return told;
}

} // namespace ribkit::rib
