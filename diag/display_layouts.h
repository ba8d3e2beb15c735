// What the displays read that is no message of its own, as layouts: so that a check can stand in front of a display.
#pragma once

#include "codec/messages/info.h"
#include "rib_snmp.h"

namespace ribkit::diag {

// What tables are written in.
using codec::layout;
using codec::list;
using codec::meaning;
using codec::row;
using codec::word;

/// A unicast table entry as it is displayed: its hops follow one another, each as long as its labels make it. (The
/// message's hops stand 8 bytes apart.)
constexpr row shown_row(const layout &route, size_t i) {
    return is_list(route[i]) ? list(route[i].offset, route[i].name, route[i].count, wire::fclrt_intf, 0) : route[i];
}
inline constexpr const layout &shown_ucast_route =
    codec::made_of<wire::ucast_route, shown_row, std::make_index_sequence<wire::ucast_route.rows.size()>>;

/// A row of the SNMP route table.
inline constexpr layout fcroute_entry{"fcRouteEntry",
                                      40,
                                      {word(0, "vsan", meaning::vsan), word(4, "if_index", meaning::interface),
                                       word(8, "protocol").says("rib_fcroute_proto"),
                                       word(12, "destination", meaning::fc_id), word(16, "mask", meaning::fc_mask),
                                       word(20, "domain", meaning::domain), word(24, "cost", meaning::cost),
                                       word(28, "route_type").says("rib_fcroute_type"),
                                       word(32, "permanence").says("rib_fcroute_perm"), word(36, "word_36")}};
static_assert(fcroute_entry.size == sizeof(fcRouteEntry));

/// The state of a synchronisation log.
inline constexpr layout sync_gbl{
    "sync_gbl", 16, {word(0, "index"), word(4, "sequence"), word(8, "time", meaning::time), word(12, "next")}};

} // namespace ribkit::diag
