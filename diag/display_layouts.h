// What the displays read that is no message of its own, as layouts: so that a check can stand in front of a display.
#pragma once

#include "codec/messages/info.h"
#include "rib_snmp.h"

namespace ribkit::wire {

/// A unicast table entry as it is displayed: its hops follow one another, each as long as its labels make it. (The
/// message's hops stand 8 bytes apart.)
inline constexpr layout shown_ucast_route{
    "ucast_route",
    ucast_route.size,
    {
        ucast_route.row_of("uuid"),
        ucast_route.row_of("vsan"),
        ucast_route.row_of("fcid"),
        ucast_route.row_of("mask"),
        ucast_route.row_of("rctl"),
        ucast_route.row_of("cost"),
        ucast_route.row_of("flag"),
        ucast_route.row_of("n_hop"),
        list(ucast_route.size, "hop", ucast_route.row_of("hop").count, fclrt_intf, 0),
    }};

/// A row of the SNMP route table.
inline constexpr layout fcroute_entry{
    "fcRouteEntry",
    40,
    {word(0, "vsan", meaning::vsan), word(4, "if_index", meaning::interface), word(8, "protocol"),
     word(12, "destination", meaning::fc_id), word(16, "mask", meaning::fc_mask), word(20, "domain", meaning::domain),
     word(24, "cost", meaning::cost), word(28, "route_type"), word(32, "permanence"), word(36, "word 9")}};
static_assert(fcroute_entry.size == sizeof(fcRouteEntry));

/// The state of a synchronisation log.
inline constexpr layout sync_gbl{
    "sync_gbl", 16, {word(0, "index"), word(4, "sequence"), word(8, "time"), word(12, "next")}};

/// The bodies of an in_info: the high-availability state, and the memory pools.
inline constexpr layout in_ha{"in_ha", 24, {word(0, "sup state"), words(4, 5, "flags")}};
inline constexpr layout in_pool{"in_pool", 12, {word(0, "pool"), word(4, "data size"), word(8, "n_data")}};
inline constexpr layout in_mem{"in_mem", 192, {list(0, "pool", 16, in_pool, in_pool.size)}};
static_assert(in_ha.size == size_of_body(1) && in_mem.size == size_of_body(2));

} // namespace ribkit::wire
