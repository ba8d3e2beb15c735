// Tables whose records carry plain lists: multicast routes, version lists, domain maps; and the SNMP route table.
#include "codec/messages/info.h"
#include "diag/print.h"
#include "rib_mem.h"
#include "rib_show.h"

using namespace ribkit;
using namespace ribkit::diag;

namespace {

constexpr uint32_t detailed_list = 64;
constexpr uint32_t last_domain = 239;

} // namespace

uint32_t rib_show_fcm(uint32_t header, const void *record) {
    const view<wire::mcast_route> route{record};
    const uint32_t n_intf = route.get<"n_intf">();
    if (header != 0) {
        print_lines("\nService       VSAN    FC ID/Mask(H)    # Interfaces",
                    "----------    ----    ------ ------    ------------");
    }
    if (route.get<"fcid">() == 0) {
        print_row<"%s    %-4u    dist tree        %u\n">(text(rib_uuid_to_str, route.get<"uuid">(), 10),
                                                         route.get<"vsan">(), n_intf);
    } else {
        print_row<"%s    %-4u    %06x %06x    %u\n">(text(rib_uuid_to_str, route.get<"uuid">(), 10),
                                                     route.get<"vsan">(), route.get<"fcid">(), route.get<"mask">(),
                                                     n_intf);
    }
    print_interfaces("    ", route.list<"intf">());
    return route.size();
}

uint32_t rib_show_fcmrt(uint32_t header, uint32_t row, uint32_t option, const void *record) {
    const view<wire::mcast_route> route{record};
    const uint32_t n_intf = route.get<"n_intf">();
    if (row == 1) {
        if (header == 1) {
            print_lines("\nVSAN        FC ID           # Interfaces", "----        --------        ------------");
        }
        print_row<"%-4u        %s        %u\n">(route.get<"vsan">(), text(fc_id_to_str, route.get<"fcid">()), n_intf);
    }
    if (option == detailed_list && row != 0) {
        print_interfaces("    ", route.list<"intf">());
    }
    return route.size();
}

void rib_show_fct(uint32_t header, const void *record) {
    const view<wire::topo> topology{record};
    const auto versions = topology.list<"version">();
    if (header != 0) {
        print_lines("\nService     VSAN  # Versions", "----------  ----  ----------");
    }
    print_row<"%s  %-4u  %u\n">(text(rib_uuid_to_str, topology.get<"uuid">(), 10), topology.get<"vsan">(),
                                versions.size());
    if (!versions.empty()) {
        print_words(versions, [](char *to, view<wire::version> version, uint32_t position) {
            to = position != 0 && position % 8 == 0 ? put(to, "\n  ") : to;
            return put_char(put_hex(to, version.get<"version">(), 8), ' ');
        });
    }
}

void rib_show_snmp_fcroute(uint32_t header, const struct fcRouteEntry *entry) {
    if (header != 0) {
        print_lines("\n      FC ID/Mask                                 Cost",
                    "VSAN (H)    (H)    Proto  Domain Direct Perm     (H)      Intf",
                    "---- ------ ------ ------ ------ ------ -------- -------- ----");
    }
    print_row<"%-4u %06x %06x %s %-6u %s %s %-8x %s\n">(
        entry->vsan, entry->destination, entry->mask, text(rib_fcroute_proto_to_str, entry->protocol, 6), entry->domain,
        text(rib_fcroute_type_to_str, entry->route_type), text(rib_fcroute_perm_to_str, entry->permanence, 8),
        entry->cost, text(rib_if_index_to_str, entry->if_index));
}

void rib_show_dm(uint32_t header, const void *record) {
    const view<wire::dm_entry> map{record};
    const auto present = map.area<"present">();
    const auto direct = map.area<"direct">();
    if (header != 0) {
        print_lines("\nVSAN        Direct        Domain", "----        ------        ------");
    }
    for (uint32_t domain = 0;
         bmap_next_set(present.data(), present.size(), domain, &domain) == RIB_OK && domain <= last_domain; ++domain) {
        print_row<"%-4u        %s             %s\n">(map.get<"vsan">(),
                                                     truth{bmap_is_set(direct.data(), direct.size(), domain) != 0},
                                                     text(domain_to_str, domain));
    }
}
