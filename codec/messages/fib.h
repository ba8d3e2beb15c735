// What the RIB and the modules' FIBs say to one another.
#pragma once

#include "codec/messages/common.h"

namespace ribkit::wire {

inline constexpr layout fib_update{"fib_update", 16, {words(0, 4, "words")}};

inline constexpr layout hop_word{"hop_word", 4, {word(0, "hop")}};

/// One forwarding path; the second byte of its first word counts its hops.
inline constexpr layout path_slot{
    "path_slot", 20, {words(0, 2, "path"), list(8, "hop", in::second_byte(0), hop_word, 4, 3)}};

/// The first word is translated on its way, in a different manner in each direction: see odd.h.
inline constexpr layout fcu_path{"fcu_path",
                                 348,
                                 {
                                     word(0, "kind"),
                                     bytes(4, 4, "fcid", meaning::fc_id),
                                     word(8, "mask", meaning::fc_mask),
                                     bytes(12, 4, "marks"),
                                     words(16, 2, "words 16"),
                                     word(24, "n_path", meaning::count),
                                     list(28, "path", in::word(24), path_slot, 20, 16),
                                 }};

inline constexpr layout fcl_path{"fcl_path",
                                 360,
                                 {
                                     words(0, 4, "words"),
                                     bytes(16, 4, "marks"),
                                     word(20, "word 20"),
                                     word(24, "n_label", meaning::count),
                                     word(28, "n_path", meaning::count),
                                     list(32, "label", in::word(24), label, 4, 2),
                                     list(40, "path", in::word(28), path_slot, 20, 16),
                                 }};

inline constexpr layout fcm_path{"fcm_path",
                                 20,
                                 {
                                     bytes(0, 4, "marks"),
                                     words(4, 3, "words 4"),
                                     word(16, "n_member", meaning::count),
                                     list(20, "member", in::word(16), member, 4),
                                 }};

inline constexpr layout fib_rsp{"fib_rsp", 20, {words(0, 5, "words")}};

inline constexpr layout fib_sync{"fib_sync", 16, {bytes(0, 2, "marks"), gap(2, 2), words(4, 3, "words 4")}};

inline constexpr layout verf_fcu{"verf_fcu",
                                 16,
                                 {word(0, "status"), word(4, "vsan", meaning::vsan), word(8, "fcid", meaning::fc_id),
                                  word(12, "mask", meaning::fc_mask)}};
inline constexpr layout verf_fcm{
    "verf_fcm", 12, {word(0, "status"), word(4, "vsan", meaning::vsan), word(8, "fcid", meaning::fc_id)}};
/// Both labels are converted whatever their count says.
inline constexpr layout verf_fcl{"verf_fcl",
                                 32,
                                 {word(0, "status"), word(4, "vsan", meaning::vsan), words(8, 3, "words 8"),
                                  word(20, "n_label"), words(24, 2, "label", meaning::label)}};

inline constexpr layout fcu_rsp_path{
    "fcu_rsp_path",
    20,
    {words(0, 4, "words"), word(16, "n_entry", meaning::count), list(20, "entry", in::word(16), verf_fcu, 16)}};
inline constexpr layout fcm_rsp_path{
    "fcm_rsp_path",
    20,
    {words(0, 4, "words"), word(16, "n_entry", meaning::count), list(20, "entry", in::word(16), verf_fcm, 12)}};
inline constexpr layout fcl_rsp_path{
    "fcl_rsp_path",
    20,
    {words(0, 4, "words"), word(16, "n_entry", meaning::count), list(20, "entry", in::word(16), verf_fcl, 32)}};

inline constexpr layout node{
    "node", 16, {bytes(0, 3, "marks"), zero(3, 1), half(4, "ports"), half(6, "node"), words(8, 2, "words 8")}};

inline constexpr layout port{"port",
                             24,
                             {
                                 bytes(0, 5, "type, slot, port, channel, status"),
                                 masked(5, 0x80, "bundle"),
                                 half(6, "d_idx"),
                                 word(8, "intf", meaning::interface),
                                 word(12, "mode"),
                                 word(16, "vsan", meaning::vsan),
                                 word(20, "iod"),
                             }};

/// The second word holds flags, state and VSAN, and travels as one word all the same.
inline constexpr layout vsan{"vsan", 8, {word(0, "latency"), word(4, "flags, state, vsan")}};
inline constexpr layout vsan_update{
    "vsan_update", 8, {word(0, "word 0"), word(4, "n_vsan", meaning::count), list(8, "vsan", in::word(4), vsan, 8)}};

inline constexpr layout vsan_rewrite_update{"vsan_rewrite_update", 16, {words(0, 4, "words")}};
inline constexpr layout vsan_rewrite_path{"vsan_rewrite_path",
                                          44,
                                          {words(0, 4, "words"), bytes(16, 4, "first"), word(20, "first word"),
                                           bytes(24, 4, "second"), word(28, "second word"), words(32, 3, "words 32")}};
inline constexpr layout vsan_rewrite_rsp{"vsan_rewrite_rsp", 20, {words(0, 5, "words")}};

inline constexpr layout fcu_lb_query{
    "fcu_lb_query", 20, {word(0, "word 0"), bytes(4, 8, "flow"), words(12, 2, "words 12")}};
inline constexpr layout fcu_lb_rsp{"fcu_lb_rsp", 8, {words(0, 2, "words")}};

} // namespace ribkit::wire
