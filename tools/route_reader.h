// Reads the RIB's unicast routes, a query after the other.
#pragma once

#include "tools/rib_link.h"
#include "tools/routes.h"

#include <cstdint>
#include <optional>

namespace ribkit {

struct route_reading {
    uint32_t uuid;                ///< of the client that asks
    std::optional<uint32_t> vsan; ///< none: all
    bool trace = false;           ///< print each query
};

/// The routes that the RIB holds. Throws no_answer and link_closed.
held_routes read_routes(rib_link &link, const route_reading &wanted);

} // namespace ribkit
