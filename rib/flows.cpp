// Masks are tried from the longest to none at all. What decides between next hops is a hash of the frame's header.
#include "rib/flows.h"

namespace ribkit::rib {

namespace {

constexpr uint32_t address_bits = 24;

/// Fowler, Noll and Vo's hash, of 32 bits, of a number's bytes.
uint32_t hashed(uint32_t hash, uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        hash = (hash ^ (number >> shift & 0xff)) * 16777619U;
    }
    return hash;
}

} // namespace

const table<unicast>::record *route_for(const table<unicast> &routes, uint32_t vsan, uint32_t fcid) {
    for (uint32_t gone = 0; gone <= address_bits; gone++) {
        const uint32_t mask = RIB_MASK_PORT >> gone << gone;
        const auto found = routes.all().find({vsan, {fcid & mask, mask}});
        if (found != routes.all().end()) {
            return found->second;
        }
    }
    return nullptr;
}

std::optional<model::next_hop> way_of(const table<unicast> &routes, const model::flow &flow,
                                      model::flow_balance balance) {
    const auto *route = route_for(routes, flow.vsan, flow.destination);
    if (route == nullptr || routes.read(*route).hops.empty()) {
        return {};
    }
    const auto hops = routes.read(*route).hops;
    const uint32_t ports = hashed(hashed(2166136261U, flow.source), flow.destination);
    const uint32_t hash = balance == model::flow_balance::exchange ? hashed(ports, flow.exchange) : ports;
    return hops[hash % hops.size()];
}

} // namespace ribkit::rib
