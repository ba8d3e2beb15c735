// Forms that have a layout and no converter: what the wrappers, the traces and the switch's own services read.
#pragma once

#include "codec/messages/info.h"

namespace ribkit::wire {

/// What stands around a message that travels by way of another process; an answer has no operation code.
inline constexpr layout cmi_envelope{"cmi_envelope",
                                     116,
                                     {word(0, "type"), word(4, "length"), word(8, "reserved"),
                                      bytes(12, 100, "client", meaning::text), word(112, "opcode")}};

/// A module tells the state of its FIB.
inline constexpr layout fib_state{
    "fib_state",
    16,
    {word(0, "module").shown_plus_one(), word(4, "word_4"), word(8, "word_8"), word(12, "state").says("fib_state")}};

inline constexpr layout vsan_query{"vsan_query",
                                   16,
                                   {word(0, "uuid", meaning::client).says("rib_uuid"),
                                    word(4, "query").says("rib_query"), word(8, "word_8"), word(12, "requested")}};

} // namespace ribkit::wire
