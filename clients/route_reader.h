// Reads the RIB's unicast routes, a query after the other.
#pragma once

#include "bus/rib_link.h"
#include "model/routes.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace ribkit::clients {

struct route_reading {
    uint32_t uuid;                ///< of the client that asks
    std::optional<uint32_t> vsan; ///< none: all
    bool trace = false;           ///< print each query
    /// Beyond which reading ends: four times what all VSANs have with every domain.
    size_t most_routes = size_t{1} << 22;
};

/// The routes that the RIB holds: of those of a destination the reader's own, or else the active one. Throws no_answer,
/// also where it has more than `most_routes`, and link_closed.
model::held_routes read_routes(bus::rib_link &link, const route_reading &wanted);

} // namespace ribkit::clients
