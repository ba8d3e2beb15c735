// What the RIB exchanges with its peer instance: whole table entries, version lists, synchronisation records.
#pragma once

#include "codec/messages/common.h"

namespace ribkit::wire {

/// Three labels' room, of which the next hop takes all but the last: see ucast_route.
inline constexpr layout ucast_hop{"ucast_hop",
                                  20,
                                  {word(0, "ctrl", meaning::control), word(4, "intf", meaning::interface),
                                   list(8, "label", in::second_byte(0), raw_label, 4, 3)}};

/// Hops stand 8 bytes apart although each is 20 long: a later hop overwrites the labels of the one before it, and only
/// the last hop's labels survive whole.
inline constexpr layout ucast_route{"ucast_route",
                                    36,
                                    {
                                        word(0, "uuid", meaning::client),
                                        word(4, "vsan", meaning::vsan),
                                        bytes(8, 4, "fcid", meaning::fc_id),
                                        word(12, "mask", meaning::fc_mask),
                                        bytes(16, 8, "rctl"),
                                        word(24, "cost", meaning::cost),
                                        word(28, "flag", meaning::flags),
                                        word(32, "n_hop", meaning::count),
                                        list(36, "hop", in::word(32), ucast_hop, 8),
                                    }};

inline constexpr layout lbl_route{"lbl_route",
                                  40,
                                  {
                                      words(0, 6, "words"),
                                      word(24, "n_match", meaning::count),
                                      word(28, "n_intf", meaning::count),
                                      list(32, "match", in::word(24), label, 4, 2),
                                      list(40, "intf", in::word(28), fclrt_intf, 0),
                                  }};

inline constexpr layout mcast_route{"mcast_route",
                                    20,
                                    {
                                        word(0, "uuid", meaning::client),
                                        word(4, "vsan", meaning::vsan),
                                        bytes(8, 4, "fcid", meaning::fc_id),
                                        word(12, "mask", meaning::fc_mask),
                                        word(16, "n_intf", meaning::count),
                                        list(20, "intf", in::word(16), member, 4),
                                    }};

inline constexpr layout topo{
    "topo",
    12,
    {words(0, 2, "words"), word(8, "n_version", meaning::count), list(12, "version", in::word(8), version, 4)}};

inline constexpr layout sync_fcl{"sync_fcl", 52, {words(0, 13, "words")}};
inline constexpr layout sync_fcm{"sync_fcm", 28, {words(0, 7, "words")}};
inline constexpr layout sync_fcu{"sync_fcu", 32, {words(0, 8, "words")}};
inline constexpr layout sync_query{"sync_query", 12, {words(0, 3, "words")}};
inline constexpr layout sync_info{"sync_info", 8, {words(0, 2, "words")}};

} // namespace ribkit::wire
