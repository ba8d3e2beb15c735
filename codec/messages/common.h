// Layouts that more than one family of messages is made of.
#pragma once

#include "codec/layout.h"

namespace ribkit::wire {

// What tables are written in.
namespace in = codec::in;
using codec::also;
using codec::bytes;
using codec::gap;
using codec::half;
using codec::layout;
using codec::list;
using codec::masked;
using codec::meaning;
using codec::name;
using codec::part;
using codec::records;
using codec::row_part;
using codec::word;
using codec::zero;

/// The parts of a label stack entry.
inline constexpr row_part label_parts[] = {part("label", 12, 20), part("exp", 9, 3), part("bottom", 8, 1),
                                           part("ttl", 0, 8)};

/// What an egress interface does to a frame.
inline constexpr row_part ctrl_parts[] = {part("pop", 24, 8), part("push", 16, 8), part("use_up", 15, 1),
                                          part("use_ttl", 14, 1), part("dec_ttl", 13, 1)};
/// In a unicast table, where no label is pushed for some clients, the word names a domain.
inline constexpr row_part ucast_ctrl_parts[] = {part("pop", 24, 8),     part("push", 16, 8),    part("use_up", 15, 1),
                                                part("use_ttl", 14, 1), part("dec_ttl", 13, 1), part("domain", 5, 8)};

/// The byte that carries a rewrite and why it happened.
inline constexpr row_part rewrite_parts[] = {part("rewrite", 5, 1), part("reason", 0, 5, "fib_reason")};

/// The parts of a route's flags.
inline constexpr row_part flag_parts[] = {part("active", 3, 1), part("volatile", 2, 1), part("direct", 0, 1)};

inline constexpr layout label{"label", 4, {word(0, "label", meaning::label).split(label_parts)}};

/// The label words of a hop that travel as they stand.
inline constexpr layout raw_label{"raw_label", 4, {bytes(0, 4, "label", meaning::label).split(label_parts)}};

inline constexpr layout version{"version", 4, {word(0, "version")}};

inline constexpr layout member{"member", 4, {word(0, "intf", meaning::interface)}};

/// What an egress interface does to a frame: a control word whose second byte counts the labels to push.
inline constexpr layout fclrt_intf{"fclrt_intf",
                                   8,
                                   {word(0, "ctrl", meaning::control).says("rib_fclrt_ctrl").split(ctrl_parts),
                                    word(4, "intf", meaning::interface),
                                    list(8, "push", in::second_byte(0), label, 4)}};

} // namespace ribkit::wire
