// What a client's work came to.
#pragma once

#include "model/routes.h"

#include <chrono>
#include <cstddef>
#include <span>
#include <vector>

namespace ribkit::clients {

/// What went over the bus, and what became of the RIB's routes.
struct client_traffic {
    size_t added = 0, deleted = 0, changed = 0; ///< routes of the RIB
    size_t refused = 0;                         ///< changes that it did not take
    size_t messages = 0;
    size_t bytes_sent = 0, bytes_received = 0;
    std::chrono::duration<double> computing{}, exchanging{};

    /// Changes whose fate is known, each counted once however often it was on the way.
    [[nodiscard]] size_t sent() const { return added + deleted + changed + refused; }

    /// Counts changes that have taken effect on a table that was `before`.
    void count(const model::route_table &before, std::span<const model::route_change> changes);

    client_traffic &operator+=(const client_traffic &more);
};

/// Those of some changes that have led to the table `after`: at most as many as the RIB says it has made, since
/// somebody else may have done the rest.
std::vector<model::route_change> effective(std::vector<model::route_change> changes, const model::route_table &after,
                                           size_t made);

} // namespace ribkit::clients
