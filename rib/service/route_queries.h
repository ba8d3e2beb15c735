// The route queries of the three tables: from a place on, as many routes as are wanted and as fit into an answer. Where
// the tables change between two queries, a route that is there all the time is met once: places are keys.
#pragma once

#include "codec/view.h"
#include "protocol/queries.h"
#include "rib/service/reply.h"
#include "rib/state.h"

namespace ribkit::rib {

/// Whole routes, all of one VSAN and one client; entries, of which one with hops or interfaces is the last; or topology
/// versions: as the type says. None where there are no more. Throws std::bad_alloc.
reply answer_routes(const state &rib, const protocol::unicast_query &asked, bool in_envelope);
reply answer_routes(const state &rib, const protocol::multicast_query &asked, bool in_envelope);
reply answer_routes(const state &rib, const protocol::label_query &asked, bool in_envelope);

} // namespace ribkit::rib
