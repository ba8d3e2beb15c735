// A C++ program that links ribkit: routes as they would travel, shown as the switch shows them.
#include <array>
#include <cstdint>
#include <rib_codec.h>
#include <rib_codes.h>
#include <rib_show.h>
#include <ribkit_platform.h>

namespace {

/// A table entry in host order: nine words, then a hop of two.
struct entry {
    uint32_t uuid = RIB_CLIENT_FSPF, vsan;
    std::array<uint8_t, 4> fcid;
    uint32_t mask = 0xff0000;
    std::array<uint8_t, 8> rctl{};
    uint32_t cost, flag = RIB_FLAG_ACTIVE, n_hop = 1, hop_control, hop_intf;
    std::array<uint32_t, 3> labels{};
};

entry route_to(uint8_t domain, uint32_t cost, const char *interface) {
    entry route{};
    route.vsan = 1;
    route.fcid = {0, domain, 0, 0};
    route.cost = cost;
    route.hop_control = uint32_t{domain} << 5; // where the display looks for the domain
    if_index_parse(interface, &route.hop_intf);
    return route;
}

} // namespace

int main() {
    const std::array<entry, 2> routes{route_to(7, 250, "fc1/1"), route_to(9, 500, "fc2/4")};
    for (const entry &route : routes) {
        std::array<uint8_t, sizeof(entry)> network{};
        rib_hton_ucast_route(&route, network.data());
        rib_show_fcu(&route == routes.data(), network.data());
    }
    return 0;
}
