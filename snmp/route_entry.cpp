// Rows of the SNMP route table: checked, repaired, classified, filled and converted. A destination belongs to one of
// five ranges of the 24-bit address space; the range decides which masks fit and what replaces an address that does
// not.
#include "codec/fc_address.h"
#include "codec/isa_scalar.h"
#include "codec/messages/snmp.h"
#include "rib_snmp.h"

using namespace ribkit;
using namespace ribkit::codec;

namespace {

constexpr uint32_t static_protocol = 3;

bool in_domains(uint32_t address) { return address >= first_domain_address && address <= last_domain_address; }

bool in_controllers(uint32_t address) {
    return address >= first_controller_address && address <= last_controller_address;
}

/// Addresses that no route leads to.
bool excluded(uint32_t address) {
    return address < first_domain_address || (address > last_domain_address && address < first_controller_address) ||
           (address > last_controller_address && address < broadcast_address);
}

bool is_mask(uint32_t mask) { return mask == RIB_MASK_DOMAIN || mask == RIB_MASK_AREA || mask == RIB_MASK_PORT; }

bool is_vsan(uint32_t vsan) { return vsan >= 1 && vsan <= RIB_LAST_VSAN; }

bool check(const fcRouteEntry &entry) {
    if (!is_vsan(entry.vsan) || excluded(entry.destination)) {
        return false;
    }
    return in_domains(entry.destination) ? is_mask(entry.mask) : entry.mask == RIB_MASK_PORT;
}

bool check_static(const fcRouteEntry &entry) {
    return is_vsan(entry.vsan) && entry.protocol == static_protocol && in_domains(entry.destination) &&
           (entry.destination & 0xffff) != 0xffff && is_mask(entry.mask) && entry.domain >= 1 &&
           entry.domain <= RIB_LAST_DOMAIN;
}

/// The first address of the nearest range above that routes lead to.
uint32_t nearest(uint32_t address) {
    if (address < first_domain_address) {
        return first_domain_address;
    }
    return address < first_controller_address ? first_controller_address : broadcast_address;
}

void repair(fcRouteEntry &entry) {
    if (entry.vsan == 0) {
        entry.vsan = 1;
    }
    if (excluded(entry.destination)) {
        entry.destination = nearest(entry.destination);
    }
    if (!in_domains(entry.destination)) {
        entry.mask = RIB_MASK_PORT;
    } else if (!is_mask(entry.mask)) {
        entry.mask = RIB_MASK_DOMAIN;
    }
}

/// To or from network order: words are swapped the same way in both directions.
template <const layout &L, class Row> void convert(const Row *src, Row *dst) {
    static_assert(L.size == sizeof *src);
    engine<direction::to_network, std::endian::native, scalar>::convert<L>(reinterpret_cast<const uint8_t *>(src),
                                                                           reinterpret_cast<uint8_t *>(dst));
}

} // namespace

uint32_t fcRouteEntry_is_valid(uint32_t operation, struct fcRouteEntry *entry) {
    switch (operation) {
    case FC_ROUTE_CHECK:
        return check(*entry) ? 1 : 0;
    case FC_ROUTE_REPAIR:
        repair(*entry);
        return 1;
    case FC_ROUTE_CHECK_STATIC:
        return check_static(*entry) ? 1 : 0;
    default:
        return 1;
    }
}

void fcRouteEntry_route_type_get(const struct fcRouteEntry *entry, uint32_t *route_class) {
    if (in_domains(entry->destination)) {
        *route_class = 256;
    } else if (in_controllers(entry->destination) || entry->destination == broadcast_address) {
        *route_class = 16;
    } else {
        *route_class = 0;
    }
}

void fcRouteEntry_set_defaults(struct fcRouteEntry *entry) {
    entry->domain = 1;
    entry->cost = 10;
    entry->route_type = 1; // direct
    entry->permanence = 1; // permanent
}

void fcRouteEntry_hton(const struct fcRouteEntry *src, struct fcRouteEntry *dst) {
    convert<wire::fc_route_entry>(src, dst);
}
/// One function of two names.
[[gnu::alias("fcRouteEntry_hton")]] void fcRouteEntry_ntoh(const struct fcRouteEntry *src, struct fcRouteEntry *dst);

void fcRouteFlowStatEntry_hton(struct fcRouteFlowStatEntry *dst, const struct fcRouteFlowStatEntry *src) {
    convert<wire::fc_route_flow_stat_entry>(src, dst);
}

void fcRouteFlowStatEntry_ntoh(const struct fcRouteFlowStatEntry *src, struct fcRouteFlowStatEntry *dst) {
    convert<wire::fc_route_flow_stat_entry>(src, dst);
}

// Port Manager's routes are "local" by name (rib_uuid_to_proto_str) and still "other" here.
uint32_t fcRouteProto_from_uuid(uint32_t uuid) {
    switch (uuid) {
    case RIB_CLIENT_FLOGI:
    case RIB_CLIENT_TLPORT:
        return 2;
    case RIB_CLIENT_CONFIG:
        return static_protocol;
    case RIB_CLIENT_FSPF:
        return 4;
    case RIB_CLIENT_FCMPLS:
        return 5;
    case RIB_CLIENT_MCAST:
        return 6;
    default:
        return 1;
    }
}
