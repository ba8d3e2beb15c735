// Fabric Shortest Path First for one switch: from a fabric to the unicast routes of its local switch.
#pragma once

#include "lab/fabric.h"
#include "model/routes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::lab {

struct fspf_outcome {
    model::route_table routes;
    std::vector<uint32_t> costs; ///< of the cheapest path to each switch, or `unreachable`
};

/// Routes over some of the fabric's links (ascending), of which those that are down are left out: one route to every
/// domain that they reach, with every next hop of equal cost, at most 16, in the order of their interfaces.
fspf_outcome run_fspf(const fabric &f, std::span<const size_t> links);

/// Indices of the links that carry a VSAN, up or not.
std::vector<size_t> links_of(const fabric &f, uint32_t vsan);

/// Routes of one VSAN, over the links that carry it.
model::route_table fspf_routes(const fabric &f, uint32_t vsan);

} // namespace ribkit::lab
