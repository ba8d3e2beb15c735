// Fabric Shortest Path First for one switch: from a fabric to the unicast routes of its local switch.
#pragma once

#include "tools/fabric.h"
#include "tools/routes.h"

namespace ribkit {

/// Routes of one VSAN: one to every domain that its links reach, with every next hop of equal cost, at most 16, in the
/// order of their interfaces.
route_table fspf_routes(const fabric &f, uint32_t vsan);

} // namespace ribkit
