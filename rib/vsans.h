// What the RIB knows of VSANs beside their routes: whether they are suspended, how flows are spread over next hops,
// whether frames stay in order.
#pragma once

#include "model/system.h"
#include "rib/state.h"

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace ribkit::rib {

/// VSANs as somebody has described them.
using described_vsans = std::map<uint32_t, model::vsan_attributes>;

/// Of one that nobody has described: an active one's.
model::vsan_attributes attributes_of(const state &routes, const described_vsans &described, uint32_t vsan);

/// VSANs that have routes, are suspended or were described, from one on and in their order.
/// @param most how many at most
std::vector<std::pair<uint32_t, model::vsan_attributes>>
vsans_from(const state &routes, const described_vsans &described, uint32_t first, size_t most);

} // namespace ribkit::rib
