// What the RIB and the modules' FIBs say to one another.
#pragma once

#include "codec/messages/common.h"

namespace ribkit::wire {

inline constexpr layout fib_update{
    "fib_update", 16, {word(0, "word_0"), also(word(4, "word_4")), also(word(8, "word_8")), also(word(12, "word_12"))}};

inline constexpr layout hop_word{"hop_word", 4, {word(0, "hop")}};

inline constexpr row_part path_parts[] = {part("n_hop", 16, 8)};

/// One forwarding path; the second byte of its first word counts its hops.
inline constexpr layout path_slot{
    "path_slot",
    20,
    {word(0, "path").split(path_parts), also(word(4, "word_4")), list(8, "hop", in::second_byte(0), hop_word, 4, 3)}};

/// The first word is translated on its way, in a different manner in each direction: see odd.h.
inline constexpr layout fcu_path{"fcu_path",
                                 348,
                                 {
                                     word(0, "kind"),
                                     bytes(4, 4, "fcid", meaning::fc_id),
                                     word(8, "mask", meaning::fc_mask),
                                     bytes(12, 1, "byte_12"),
                                     also(bytes(13, 1, "special")),
                                     also(bytes(14, 1, "byte_14")),
                                     also(bytes(15, 1, "byte_15")),
                                     word(16, "word_16"),
                                     also(word(20, "word_20")),
                                     word(24, "n_path", meaning::count),
                                     list(28, "path", in::word(24), path_slot, 20, 16),
                                 }};

inline constexpr layout fcl_path{"fcl_path",
                                 360,
                                 {
                                     word(0, "word_0"),
                                     also(word(4, "word_4")),
                                     also(word(8, "word_8")),
                                     also(word(12, "word_12")),
                                     bytes(16, 4, "bytes_16"),
                                     word(20, "word_20"),
                                     word(24, "n_label", meaning::count),
                                     word(28, "n_path", meaning::count),
                                     list(32, "label", in::word(24), label, 4, 2),
                                     list(40, "path", in::word(28), path_slot, 20, 16),
                                 }};

inline constexpr layout fcm_path{"fcm_path",
                                 20,
                                 {
                                     bytes(0, 4, "bytes_0"),
                                     word(4, "word_4"),
                                     also(word(8, "word_8")),
                                     also(word(12, "word_12")),
                                     word(16, "n_member", meaning::count),
                                     list(20, "member", in::word(16), member, 4),
                                 }};

inline constexpr layout fib_rsp{"fib_rsp",
                                20,
                                {word(0, "word_0"), also(word(4, "word_4")), also(word(8, "word_8")),
                                 also(word(12, "word_12")), also(word(16, "word_16"))}};

inline constexpr layout fib_sync{"fib_sync",
                                 16,
                                 {bytes(0, 1, "byte_0"), also(bytes(1, 1, "byte_1")), gap(2, 2), word(4, "word_4"),
                                  also(word(8, "word_8")), also(word(12, "word_12"))}};

inline constexpr layout verf_fcu{"verf_fcu",
                                 16,
                                 {word(0, "status").says("fib_verf"), word(4, "vsan", meaning::vsan),
                                  word(8, "fcid", meaning::fc_id), word(12, "mask", meaning::fc_mask)}};
inline constexpr layout verf_fcm{
    "verf_fcm",
    12,
    {word(0, "status").says("fib_verf"), word(4, "vsan", meaning::vsan), word(8, "fcid", meaning::fc_id)}};
/// Both labels are converted whatever their count says.
inline constexpr layout verf_fcl{"verf_fcl",
                                 32,
                                 {word(0, "status").says("fib_verf"), word(4, "vsan", meaning::vsan), word(8, "word_8"),
                                  also(word(12, "word_12")), also(word(16, "word_16")), word(20, "n_label"),
                                  word(24, "label_0", meaning::label).split(label_parts),
                                  also(word(28, "label_1", meaning::label).split(label_parts))}};

/// As a query's key, where the third word is the cursor.
inline constexpr layout verf_fcl_query{"verf_fcl_query",
                                       32,
                                       {word(0, "status").says("fib_verf"), word(4, "vsan", meaning::vsan),
                                        word(8, "cursor"), also(word(12, "word_12")), also(word(16, "word_16")),
                                        word(20, "n_label"), word(24, "label_0", meaning::label).split(label_parts),
                                        also(word(28, "label_1", meaning::label).split(label_parts))}};

inline constexpr layout fcu_rsp_path{"fcu_rsp_path",
                                     20,
                                     {word(0, "word_0"), also(word(4, "word_4")), also(word(8, "word_8")),
                                      also(word(12, "word_12")), word(16, "n_entry", meaning::count),
                                      list(20, "entry", in::word(16), verf_fcu, 16)}};
inline constexpr layout fcm_rsp_path{"fcm_rsp_path",
                                     20,
                                     {word(0, "word_0"), also(word(4, "word_4")), also(word(8, "word_8")),
                                      also(word(12, "word_12")), word(16, "n_entry", meaning::count),
                                      list(20, "entry", in::word(16), verf_fcm, 12)}};
inline constexpr layout fcl_rsp_path{"fcl_rsp_path",
                                     20,
                                     {word(0, "word_0"), also(word(4, "word_4")), also(word(8, "word_8")),
                                      also(word(12, "word_12")), word(16, "n_entry", meaning::count),
                                      list(20, "entry", in::word(16), verf_fcl, 32)}};

inline constexpr layout node{"node",
                             16,
                             {bytes(0, 1, "module").shown_plus_one(), also(bytes(1, 1, "type").says("rib_mod_type")),
                              also(bytes(2, 1, "sup_state").says("rib_mod_state")), zero(3, 1), half(4, "ports"),
                              half(6, "node"), word(8, "address"), also(word(12, "fib_state").says("fib_state"))}};

inline constexpr layout port{"port",
                             24,
                             {
                                 bytes(0, 1, "type"),
                                 also(bytes(1, 1, "slot")),
                                 also(bytes(2, 1, "port")),
                                 also(bytes(3, 1, "channel")),
                                 also(bytes(4, 1, "status").says("rib_pm_state")),
                                 masked(5, 0x80, "bundle"),
                                 half(6, "d_idx").says("fib_d_idx"),
                                 word(8, "intf", meaning::interface),
                                 word(12, "mode").says("rib_pm_mode"),
                                 word(16, "vsan", meaning::vsan),
                                 word(20, "iod").says("fib_iod_mode"),
                             }};

inline constexpr row_part vsan_parts[] = {
    part("interop_mode_4", 26, 1),          part("iod_valid", 25, 1),
    part("iod", 24, 1, "rib_vsan_iod"),     part("balance", 20, 4, "rib_vsan_bal"),
    part("state", 16, 4, "rib_vsan_state"), part("vsan", 0, 16)};

/// The second word holds flags, state and VSAN (0: all), and travels as one word all the same.
inline constexpr layout vsan{"vsan", 8, {word(0, "latency").in("ms"), word(4, "word_4").split(vsan_parts)}};
inline constexpr layout vsan_update{
    "vsan_update", 8, {word(0, "word_0"), word(4, "n_vsan", meaning::count), list(8, "vsan", in::word(4), vsan, 8)}};

inline constexpr layout vsan_rewrite_update{
    "vsan_rewrite_update",
    16,
    {word(0, "word_0"), also(word(4, "word_4")), also(word(8, "word_8")), also(word(12, "word_12"))}};
inline constexpr layout vsan_rewrite_path{"vsan_rewrite_path",
                                          44,
                                          {word(0, "word_0"), also(word(4, "word_4")), also(word(8, "word_8")),
                                           also(word(12, "word_12")), bytes(16, 4, "bytes_16"), word(20, "word_20"),
                                           bytes(24, 4, "bytes_24"), word(28, "word_28"), word(32, "word_32"),
                                           also(word(36, "word_36")), also(word(40, "word_40"))}};
inline constexpr layout vsan_rewrite_rsp{"vsan_rewrite_rsp",
                                         20,
                                         {word(0, "word_0"), also(word(4, "word_4")), also(word(8, "word_8")),
                                          also(word(12, "word_12")), also(word(16, "word_16"))}};

inline constexpr layout fcu_lb_query{
    "fcu_lb_query", 20, {word(0, "word_0"), bytes(4, 8, "bytes_4"), word(12, "word_12"), also(word(16, "word_16"))}};
inline constexpr layout fcu_lb_rsp{"fcu_lb_rsp", 8, {word(0, "word_0"), also(word(4, "word_4"))}};

} // namespace ribkit::wire
