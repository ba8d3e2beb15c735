// The table is asked for each mask; the way is chosen as modules choose it.
#include "rib/flows.h"

#include "model/flows.h"

namespace ribkit::rib {

const table<unicast>::record *route_for(const table<unicast> &routes, uint32_t vsan, uint32_t fcid) {
    return model::longest_match(vsan, fcid, [&](const model::route_key &key) {
        const auto found = routes.all().find(key);
        return found == routes.all().end() ? nullptr : found->second;
    });
}

std::optional<model::next_hop> way_of(const table<unicast> &routes, const model::flow &flow,
                                      model::flow_balance balance) {
    const auto *route = route_for(routes, flow.vsan, flow.destination);
    if (route == nullptr || routes.read(*route).hops.empty()) {
        return {};
    }
    const auto hops = routes.read(*route).hops;
    return hops[model::chosen_way(flow, balance, static_cast<uint32_t>(hops.size()))];
}

} // namespace ribkit::rib
