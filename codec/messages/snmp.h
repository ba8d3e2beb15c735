// Rows of the management tables of routes, which an SNMP agent and the RIB exchange: see snmp/.
#pragma once

#include "codec/messages/common.h"

namespace ribkit::wire {

/// A row of the route table.
inline constexpr layout fc_route_entry{
    "fcRouteEntry",
    40,
    {word(0, "vsan", meaning::vsan), also(word(4, "if_index", meaning::interface)),
     also(word(8, "protocol").says("rib_fcroute_proto")), also(word(12, "destination", meaning::fc_id)),
     also(word(16, "mask", meaning::fc_mask)), also(word(20, "domain", meaning::domain)),
     also(word(24, "cost", meaning::cost)), also(word(28, "route_type").says("rib_fcroute_type")),
     also(word(32, "permanence").says("rib_fcroute_perm")), also(word(36, "word_36"))}};

/// A row of the flow statistics.
inline constexpr layout fc_route_flow_stat_entry{"fcRouteFlowStatEntry",
                                                 68,
                                                 {
                                                     word(0, "word_0"),
                                                     gap(4, 8),
                                                     word(12, "word_12"),
                                                     gap(16, 4),
                                                     word(20, "word_20"),
                                                     also(word(24, "word_24")),
                                                     also(word(28, "word_28")),
                                                     also(word(32, "word_32")),
                                                     also(word(36, "word_36")),
                                                     also(word(40, "word_40")),
                                                     also(word(44, "word_44")),
                                                     also(word(48, "word_48")),
                                                     also(word(52, "word_52")),
                                                     also(word(56, "word_56")),
                                                     also(word(60, "word_60")),
                                                     also(word(64, "word_64")),
                                                 }};

} // namespace ribkit::wire
