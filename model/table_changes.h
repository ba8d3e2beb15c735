// What changed from one table to the next, whatever its routes are: two sorted tables are walked side by side.
#pragma once

#include "rib_codes.h"

#include <cstdint>
#include <map>
#include <vector>

namespace ribkit::model {

/// One record of an update, by its key in the VSAN's table. A deleted route keeps what it was.
template <class Key, class Route> struct table_change {
    uint32_t action; ///< RIB_ACTION_...
    Key to;
    Route what;

    bool operator==(const table_change &) const = default;
};

/// The fewest changes that make one table of the other: a route that is new is added, one that is gone is deleted, one
/// that says something else gets the action that action_between says.
template <class Key, class Route>
std::vector<table_change<Key, Route>> changes_between(const std::map<Key, Route> &before,
                                                      const std::map<Key, Route> &after) {
    std::vector<table_change<Key, Route>> changes;
    auto old = before.begin();
    auto now = after.begin();
    while (old != before.end() || now != after.end()) {
        if (now == after.end() || (old != before.end() && old->first < now->first)) {
            changes.push_back({RIB_ACTION_DELETE, old->first, old->second});
            ++old;
        } else if (old == before.end() || now->first < old->first) {
            changes.push_back({RIB_ACTION_ADD, now->first, now->second});
            ++now;
        } else {
            if (!(old->second == now->second)) {
                changes.push_back({action_between(old->second, now->second), now->first, now->second});
            }
            ++old;
            ++now;
        }
    }
    return changes;
}

/// Brings a table up to date with a change that took effect.
template <class Key, class Route>
void apply_change(std::map<Key, Route> &table, const table_change<Key, Route> &change) {
    if (change.action == RIB_ACTION_DELETE) {
        table.erase(change.to);
    } else {
        table[change.to] = change.what;
    }
}

/// Whether the table is as the change would leave it.
template <class Key, class Route>
bool has_effect(const std::map<Key, Route> &table, const table_change<Key, Route> &change) {
    const auto found = table.find(change.to);
    return change.action == RIB_ACTION_DELETE ? found == table.end()
                                              : found != table.end() && found->second == change.what;
}

} // namespace ribkit::model
