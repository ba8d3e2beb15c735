// What the RIB answers of its unicast routes.
#pragma once

#include "protocol/route_messages.h"
#include "rib/state.h"

#include <cstdint>
#include <vector>

namespace ribkit::rib {

/// An update of the routes from the query's key on, as many as it wants and as fit into a message: all of one VSAN and
/// one client, one for each destination: the asking client's own, or else the active one. None where the query is at
/// the end of the tables, or of its VSAN's. Throws std::bad_alloc.
std::vector<uint8_t> answer(const state &rib, protocol::query_view query);

/// The active unicast routes. Throws std::bad_alloc.
model::held_routes active_routes(const state &rib);

} // namespace ribkit::rib
