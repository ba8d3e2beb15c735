// What a route client sends to change a table: the update headers, the route records behind them, the response.
#pragma once

#include "codec/messages/common.h"

namespace ribkit::wire {

inline constexpr layout fcurt_hop{
    "fcurt_hop", 8, {word(0, "intf", meaning::interface), word(4, "domain", meaning::domain)}};

inline constexpr layout fcurt{"fcurt",
                              32,
                              {
                                  bytes(0, 4, "fcid", meaning::fc_id),
                                  word(4, "mask", meaning::fc_mask),
                                  bytes(8, 1, "rctl"),
                                  also(bytes(9, 1, "rctl_mask")),
                                  also(bytes(10, 1, "byte_10").split(rewrite_parts)),
                                  also(bytes(11, 5, "bytes_11")),
                                  word(16, "action", meaning::action).says("rib_action"),
                                  word(20, "metric", meaning::cost),
                                  word(24, "flag", meaning::flags).says("rib_fcurt_flag").split(flag_parts),
                                  word(28, "n_hop", meaning::count),
                                  list(32, "hop", in::word(28), fcurt_hop, 8),
                              }};

inline constexpr layout fclrt{"fclrt",
                              104,
                              {
                                  word(0, "type").says("rib_route_type"),
                                  word(4, "vsan", meaning::vsan),
                                  bytes(8, 4, "fcid", meaning::fc_id),
                                  word(12, "mask", meaning::fc_mask),
                                  word(16, "action", meaning::action).says("rib_action"),
                                  word(20, "n_match", meaning::count),
                                  word(24, "n_src", meaning::count),
                                  word(28, "n_intf", meaning::count),
                                  list(32, "match", in::word(20), label, 4, 2),
                                  list(40, "src", in::word(24), member, 4, 16),
                                  list(104, "intf", in::word(28), fclrt_intf, 0),
                              }};

inline constexpr layout fcmrt{"fcmrt",
                              16,
                              {
                                  bytes(0, 4, "fcid", meaning::fc_id),
                                  word(4, "mask", meaning::fc_mask),
                                  word(8, "action", meaning::action).says("rib_action"),
                                  word(12, "n_intf", meaning::count),
                                  list(16, "intf", in::word(12), member, 4),
                              }};

inline constexpr layout fcurt_update{"fcurt_update",
                                     980,
                                     {
                                         word(0, "uuid", meaning::client).says("rib_uuid"),
                                         word(4, "vsan", meaning::vsan),
                                         word(8, "oper", meaning::operation).says("rib_oper"),
                                         word(12, "n_version", meaning::count),
                                         word(16, "n_route", meaning::count),
                                         list(20, "version", in::word(12), version, 4, 240),
                                         records(980, "route", in::word(16), fcurt),
                                     }};

inline constexpr layout fclrt_update{"fclrt_update",
                                     16,
                                     {
                                         word(0, "uuid", meaning::client).says("rib_uuid"),
                                         word(4, "vsan", meaning::vsan),
                                         word(8, "oper", meaning::operation).says("rib_oper"),
                                         word(12, "n_route", meaning::count),
                                         records(16, "route", in::word(12), fclrt),
                                     }};

inline constexpr layout fcmrt_update{"fcmrt_update",
                                     16,
                                     {
                                         word(0, "uuid", meaning::client).says("rib_uuid"),
                                         word(4, "vsan", meaning::vsan),
                                         word(8, "oper", meaning::operation).says("rib_oper"),
                                         word(12, "n_route", meaning::count),
                                         records(16, "route", in::word(12), fcmrt),
                                     }};

/// The answer to an update of any of the three tables.
inline constexpr layout route_rsp{"route_rsp",
                                  20,
                                  {word(0, "word_0"), also(word(4, "word_4")), also(word(8, "word_8")),
                                   also(word(12, "word_12")), also(word(16, "word_16"))}};

} // namespace ribkit::wire
