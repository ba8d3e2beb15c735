// Tables whose records carry plain lists: multicast routes, version lists, domain maps; and the SNMP route table.
#include "diag/compose.h"
#include "diag/fields.h"
#include "diag/print.h"
#include "rib_mem.h"
#include "rib_show.h"

using namespace ribkit::diag;

namespace {

constexpr uint32_t multicast_fixed = 20; // bytes before the interfaces
constexpr uint32_t detailed_list = 64;
constexpr uint32_t domains_size = 32; // bytes of a domain bitmap
constexpr uint32_t last_domain = 239;

void show_interfaces(const fields &record, uint32_t count) {
    print_interfaces("    ", record, multicast_fixed, 4, count);
}

} // namespace

uint32_t rib_show_fcm(uint32_t header, const void *record) {
    const fields route{record};
    const uint32_t n_intf = route.word(16);
    if (header != 0) {
        print_lines("\nService       VSAN    FC ID/Mask(H)    # Interfaces",
                    "----------    ----    ------ ------    ------------");
    }
    if (route.word(8) == 0) {
        print_row<"%s    %-4u    dist tree        %u\n">(text(rib_uuid_to_str, route.word(0), 10), route.word(4),
                                                         n_intf);
    } else {
        print_row<"%s    %-4u    %06x %06x    %u\n">(text(rib_uuid_to_str, route.word(0), 10), route.word(4),
                                                     route.word(8), route.word(12), n_intf);
    }
    show_interfaces(route, n_intf);
    return multicast_fixed + 4 * n_intf;
}

uint32_t rib_show_fcmrt(uint32_t header, uint32_t row, uint32_t option, const void *record) {
    const fields route{record};
    const uint32_t n_intf = route.word(16);
    if (row == 1) {
        if (header == 1) {
            print_lines("\nVSAN        FC ID           # Interfaces", "----        --------        ------------");
        }
        print_row<"%-4u        %s        %u\n">(route.word(4), text(fc_id_to_str, route.word(8)), n_intf);
    }
    if (option == detailed_list && row != 0) {
        show_interfaces(route, n_intf);
    }
    return multicast_fixed + 4 * n_intf;
}

void rib_show_fct(uint32_t header, const void *record) {
    const fields list{record};
    const uint32_t n_version = list.word(8);
    if (header != 0) {
        print_lines("\nService     VSAN  # Versions", "----------  ----  ----------");
    }
    print_row<"%s  %-4u  %u\n">(text(rib_uuid_to_str, list.word(0), 10), list.word(4), n_version);
    if (n_version != 0) {
        print_words(list, 12, n_version, [](char *to, uint32_t version, uint32_t position) {
            to = position != 0 && position % 8 == 0 ? put(to, "\n  ") : to;
            return put_char(put_hex(to, version, 8), ' ');
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
    const fields map{record};
    const uint8_t *present = map.at(4);
    const uint8_t *direct = map.at(4 + domains_size);
    if (header != 0) {
        print_lines("\nVSAN        Direct        Domain", "----        ------        ------");
    }
    for (uint32_t domain = 0; bmap_next_set(present, domains_size, domain, &domain) == RIB_OK && domain <= last_domain;
         ++domain) {
        print_row<"%-4u        %s             %s\n">(map.word(0), truth{bmap_is_set(direct, domains_size, domain) != 0},
                                                     text(domain_to_str, domain));
    }
}
