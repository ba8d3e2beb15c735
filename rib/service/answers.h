// The routes of a RIB as values, for displays and summaries.
#pragma once

#include "protocol/route_messages.h"
#include "rib/state.h"

#include <cstdint>
#include <vector>

namespace ribkit::rib {

/// The active unicast routes. Throws std::bad_alloc.
model::held_routes active_routes(const state &rib);

} // namespace ribkit::rib
