// Queries of the RIB's unicast routes, as network bytes. The answer is an update message with the routes from the
// query's key on, all of one VSAN and one client, each as a route to add; without routes where there are no more.
#pragma once

#include "ribkit_rib.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ribkit::tools {

struct fcurt_query {
    uint32_t uuid;  ///< of the client that asks
    uint32_t type;  ///< RIBKIT_QUERY_...
    uint32_t count; ///< of routes wanted, at most
    uint32_t vsan, fcid, mask;

    bool operator==(const fcurt_query &) const = default;
};

std::array<uint8_t, RIBKIT_FCURT_QUERY_SIZE> encode(const fcurt_query &query);
fcurt_query decode_fcurt_query(std::span<const uint8_t, RIBKIT_FCURT_QUERY_SIZE> bytes);

} // namespace ribkit::tools
