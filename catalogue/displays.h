// The displays of messages that consist of entries, or whose entries depend on a kind: each shows a whole message in
// network form, with the displays that the library exports for its parts.
#pragma once

#include "catalogue/row.h"
#include "codec/view.h"
#include "rib_show.h"
#include "rib_snmp.h"

#include <cstring>

namespace ribkit::catalogue {

inline void show_label_route(uint32_t *header, const void *route) {
    constexpr uint32_t with_hops = 0;
    rib_show_fcl(*header, with_hops, route);
    *header = 0;
}

/// Shows the entries of a message's list.
template <const codec::layout &L, codec::field_called List, auto Display>
void show_each(uint32_t *header, const void *message) {
    for (const auto entry : codec::view<L>(message).template list<List>()) {
        shown<Display>(header, entry.data());
    }
}

inline void show_databases(uint32_t *header, const void *message) {
    for (const auto vsan : codec::view<wire::db_info>(message).list<"vsan">()) {
        rib_show_db(*header, message, vsan.data());
        *header = 0;
    }
}

inline void show_internals(uint32_t *header, const void *message) {
    const void *body = static_cast<const uint8_t *>(message) + wire::in_info.size;
    switch (codec::view<wire::in_info>(message).get<"kind">()) {
    case 1:
        return shown<rib_show_in_ha>(header, body);
    case 2:
        return shown<rib_show_in_mem>(header, body);
    default:;
    }
}

template <const codec::layout &Key, auto Display> void show_keys(const void *message, uint32_t count) {
    const uint8_t *first = static_cast<const uint8_t *>(message) + wire::verf_info.size;
    for (uint32_t i = 0; i < count; i++) {
        Display(i == 0 ? 1 : 0, first + size_t{Key.size} * i);
    }
}

/// A report and what it found. Every report has its heads: without them the display is silent.
inline void show_verification(uint32_t * /*header*/, const void *message) {
    const codec::view<wire::verf_info> report(message);
    const codec::layout &key = wire::key_of(report.get<"type">());
    rib_show_verf_info(1, message);
    if (&key == &wire::verf_fcl) {
        show_keys<wire::verf_fcl, fib_show_verf_fcl>(message, report.get<"n_key">());
    } else if (&key == &wire::verf_fcm) {
        show_keys<wire::verf_fcm, fib_show_verf_fcm>(message, report.get<"n_key">());
    } else {
        show_keys<wire::verf_fcu, fib_show_verf_fcu>(message, report.get<"n_key">());
    }
}

inline void show_snmp_route(uint32_t *header, const void *message) {
    fcRouteEntry network{};
    fcRouteEntry entry{};
    std::memcpy(&network, message, sizeof network);
    fcRouteEntry_ntoh(&network, &entry);
    rib_show_snmp_fcroute(*header, &entry);
    *header = 0;
}

} // namespace ribkit::catalogue
