// What the RIB exchanges with its peer instance: whole table entries, version lists, synchronisation records.
#pragma once

#include "codec/messages/common.h"

namespace ribkit::wire {

/// Three labels' room, of which the next hop takes all but the last: see ucast_route.
inline constexpr layout ucast_hop{"ucast_hop",
                                  20,
                                  {word(0, "ctrl", meaning::control).says("rib_fclrt_ctrl").split(ucast_ctrl_parts),
                                   word(4, "intf", meaning::interface),
                                   list(8, "label", in::second_byte(0), raw_label, 4, 3)}};

/// Hops stand 8 bytes apart although each is 20 long: a later hop overwrites the labels of the one before it, and only
/// the last hop's labels survive whole.
inline constexpr layout ucast_route{"ucast_route",
                                    36,
                                    {
                                        word(0, "uuid", meaning::client).says("rib_uuid"),
                                        word(4, "vsan", meaning::vsan),
                                        bytes(8, 4, "fcid", meaning::fc_id),
                                        word(12, "mask", meaning::fc_mask),
                                        bytes(16, 1, "rctl"),
                                        also(bytes(17, 1, "rctl_mask")),
                                        also(bytes(18, 1, "byte_18").split(rewrite_parts)),
                                        also(bytes(19, 5, "bytes_19")),
                                        word(24, "cost", meaning::cost),
                                        word(28, "flag", meaning::flags).says("rib_fcurt_flag").split(flag_parts),
                                        word(32, "n_hop", meaning::count),
                                        list(36, "hop", in::word(32), ucast_hop, 8),
                                    }};

inline constexpr layout lbl_route{"lbl_route",
                                  40,
                                  {
                                      word(0, "uuid", meaning::client).says("rib_uuid"),
                                      also(word(4, "type").says("rib_route_type")),
                                      also(word(8, "vsan", meaning::vsan)),
                                      also(word(12, "src", meaning::interface)),
                                      also(word(16, "fcid", meaning::fc_id)),
                                      also(word(20, "mask", meaning::fc_mask)),
                                      word(24, "n_match", meaning::count),
                                      word(28, "n_intf", meaning::count),
                                      list(32, "match", in::word(24), label, 4, 2),
                                      list(40, "intf", in::word(28), fclrt_intf, 0),
                                  }};

inline constexpr layout mcast_route{"mcast_route",
                                    20,
                                    {
                                        word(0, "uuid", meaning::client).says("rib_uuid"),
                                        word(4, "vsan", meaning::vsan),
                                        bytes(8, 4, "fcid", meaning::fc_id),
                                        word(12, "mask", meaning::fc_mask),
                                        word(16, "n_intf", meaning::count),
                                        list(20, "intf", in::word(16), member, 4),
                                    }};

inline constexpr layout topo{"topo",
                             12,
                             {word(0, "uuid", meaning::client).says("rib_uuid"), also(word(4, "vsan", meaning::vsan)),
                              word(8, "n_version", meaning::count), list(12, "version", in::word(8), version, 4)}};

/// The log of changes that a peer RIB is brought up to date with. Index 128 is a marker, whose operation word is a
/// count.
inline constexpr layout sync_fcl{"sync_fcl",
                                 52,
                                 {
                                     word(0, "index"),
                                     also(word(4, "sequence")),
                                     also(word(8, "time", meaning::time)),
                                     also(word(12, "oper", meaning::operation).says("fib_oper")),
                                     also(word(16, "action", meaning::action).says("fib_action")),
                                     also(word(20, "type").says("rib_route_type")),
                                     also(word(24, "vsan", meaning::vsan)),
                                     also(word(28, "fcid", meaning::fc_id)),
                                     also(word(32, "mask", meaning::fc_mask)),
                                     also(word(36, "word_36")),
                                     also(word(40, "label_0", meaning::label).split(label_parts)),
                                     also(word(44, "label_1", meaning::label).split(label_parts)),
                                     also(word(48, "intf", meaning::interface)),
                                 }};
inline constexpr layout sync_fcm{"sync_fcm",
                                 28,
                                 {
                                     word(0, "index"),
                                     also(word(4, "sequence")),
                                     also(word(8, "time", meaning::time)),
                                     also(word(12, "oper", meaning::operation).says("fib_oper")),
                                     also(word(16, "action", meaning::action).says("fib_action")),
                                     also(word(20, "vsan", meaning::vsan)),
                                     also(word(24, "fcid", meaning::fc_id)),
                                 }};
inline constexpr layout sync_fcu{"sync_fcu",
                                 32,
                                 {
                                     word(0, "index"),
                                     also(word(4, "sequence")),
                                     also(word(8, "time", meaning::time)),
                                     also(word(12, "oper", meaning::operation).says("fib_oper")),
                                     also(word(16, "action", meaning::action).says("fib_action")),
                                     also(word(20, "vsan", meaning::vsan)),
                                     also(word(24, "fcid", meaning::fc_id)),
                                     also(word(28, "mask", meaning::fc_mask)),
                                 }};
inline constexpr layout sync_query{
    "sync_query", 12, {word(0, "word_0"), also(word(4, "word_4")), also(word(8, "word_8"))}};
inline constexpr layout sync_info{"sync_info", 8, {word(0, "word_0"), also(word(4, "word_4"))}};

/// The state of a log.
inline constexpr layout sync_gbl{
    "sync_gbl", 16, {word(0, "index"), word(4, "sequence"), word(8, "time", meaning::time), word(12, "next")}};

} // namespace ribkit::wire
