// Which domains of a VSAN are reached, as its unicast routes have it.
#pragma once

#include "model/system.h"
#include "rib/table.h"

#include <cstdint>

namespace ribkit::rib {

/// The domains to which there is a route, and those to which the active one is direct. A route to more than a domain
/// tells of none.
model::domain_reach domains_of(const table<unicast> &routes, uint32_t vsan);

} // namespace ribkit::rib
