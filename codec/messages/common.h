// Layouts that more than one family of messages is made of.
#pragma once

#include "codec/layout.h"

namespace ribkit::wire {

/// A label stack entry: label (20 bits), traffic class (3), bottom of stack (1), time to live (8).
inline constexpr layout label{"label", 4, {word(0, "label", meaning::label)}};

/// The label words of a hop that travel as they stand.
inline constexpr layout raw_label{"raw_label", 4, {bytes(0, 4, "label", meaning::label)}};

inline constexpr layout version{"version", 4, {word(0, "version")}};

inline constexpr layout member{"member", 4, {word(0, "intf", meaning::interface)}};

/// What an egress interface does to a frame: a control word whose second byte counts the labels to push.
inline constexpr layout fclrt_intf{"fclrt_intf",
                                   8,
                                   {word(0, "ctrl", meaning::control), word(4, "intf", meaning::interface),
                                    list(8, "push", in::second_byte(0), label, 4)}};

} // namespace ribkit::wire
