// What the RIB answers of its unicast routes.
#pragma once

#include "protocol/route_messages.h"
#include "rib/state.h"

#include <cstdint>
#include <vector>

namespace ribkit::rib {

/// The active unicast routes. Throws std::bad_alloc.
model::held_routes active_routes(const state &rib);

} // namespace ribkit::rib
