// How a client asks for the tables, one query a table.
#pragma once

#include "codec/messages/common.h"

namespace ribkit::wire {

inline constexpr layout fclrt_query{"fclrt_query",
                                    40,
                                    {
                                        word(0, "uuid", meaning::client),
                                        word(4, "type"),
                                        word(8, "word 8"),
                                        word(12, "cursor"),
                                        words(16, 2, "words 16"),
                                        word(24, "n_match", meaning::count),
                                        list(28, "match", in::word(24), label, 4, 2),
                                        word(36, "requested"),
                                    }};

inline constexpr layout fcurt_query{
    "fcurt_query",
    24,
    {word(0, "uuid", meaning::client), word(4, "type"), word(8, "requested"), words(12, 3, "words 12")}};

inline constexpr layout fcmrt_query{"fcmrt_query",
                                    24,
                                    {word(0, "uuid", meaning::client), word(4, "word 4"), word(8, "type"),
                                     words(12, 2, "words 12"), word(20, "requested")}};

} // namespace ribkit::wire
