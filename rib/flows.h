// Which way the frames of an exchange go: the active route to their destination, and of its next hops the one that the
// flow chooses.
#pragma once

#include "model/system.h"
#include "rib/table.h"

#include <cstdint>
#include <optional>

namespace ribkit::rib {

/// The active route whose destination a D_ID is in, of those the one of the longest mask; null where there is none.
/// Masks have no gaps: a route whose mask has some is met by nobody.
const table<unicast>::record *route_for(const table<unicast> &routes, uint32_t vsan, uint32_t fcid);

/// The next hop of a flow. The same flow always takes the same of the same next hops.
/// @return none where no route leads there, or it leads nowhere
std::optional<model::next_hop> way_of(const table<unicast> &routes, const model::flow &flow,
                                      model::flow_balance balance);

} // namespace ribkit::rib
