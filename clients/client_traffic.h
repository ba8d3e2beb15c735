// What a client's work came to.
#pragma once

#include "model/table_changes.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <map>
#include <vector>

namespace ribkit::clients {

/// What went over the bus, and what became of the RIB's routes.
struct client_traffic {
    size_t added = 0, deleted = 0, changed = 0; ///< routes of the RIB
    size_t merged = 0;                          ///< routes that were named, whatever the RIB had
    size_t refused = 0;                         ///< changes that it did not take
    size_t messages = 0;
    size_t bytes_sent = 0, bytes_received = 0;
    std::chrono::duration<double> computing{}, exchanging{};

    /// Changes whose fate is known, each counted once however often it was on the way.
    [[nodiscard]] size_t sent() const { return added + deleted + changed + merged + refused; }

    /// Counts changes that have taken effect on a table that was `before`.
    template <class Routes, class Changes> void count(const Routes &before, const Changes &changes) {
        for (const auto &change : changes) {
            const bool is_new = change.action == RIB_ACTION_ADD && !before.contains(change.to);
            (change.action == RIB_ACTION_DELETE ? deleted : is_new ? added : changed)++;
        }
    }

    client_traffic &operator+=(const client_traffic &more);
};

/// Those of some changes that have led to the table `after`: at most as many as the RIB says it has made, since
/// somebody else may have done the rest. A delete is what most often finds its work done: those are the last to be
/// taken for effective.
template <class Key, class Route>
std::vector<model::table_change<Key, Route>> effective(std::vector<model::table_change<Key, Route>> changes,
                                                       const std::map<Key, Route> &after, size_t made) {
    std::erase_if(changes, [&](const auto &change) { return !model::has_effect(after, change); });
    std::stable_partition(changes.begin(), changes.end(),
                          [](const auto &change) { return change.action != RIB_ACTION_DELETE; });
    changes.resize(std::min(changes.size(), made));
    return changes;
}

} // namespace ribkit::clients
