// How a client asks for the tables, one query a table.
#pragma once

#include "codec/messages/common.h"

namespace ribkit::wire {

inline constexpr layout fclrt_query{"fclrt_query",
                                    40,
                                    {
                                        word(0, "uuid", meaning::client).says("rib_uuid"),
                                        word(4, "type").says("rib_fclrt_type"),
                                        word(8, "word_8"),
                                        word(12, "cursor"),
                                        word(16, "word_16"),
                                        also(word(20, "word_20")),
                                        word(24, "n_match", meaning::count),
                                        list(28, "match", in::word(24), label, 4, 2),
                                        word(36, "requested"),
                                    }};

inline constexpr layout fcurt_query{"fcurt_query",
                                    24,
                                    {word(0, "uuid", meaning::client).says("rib_uuid"),
                                     word(4, "type").says("rib_fcurt_type"), word(8, "requested"), word(12, "word_12"),
                                     also(word(16, "word_16")), also(word(20, "word_20"))}};

inline constexpr layout fcmrt_query{"fcmrt_query",
                                    24,
                                    {word(0, "uuid", meaning::client).says("rib_uuid"), word(4, "word_4"),
                                     word(8, "type").says("rib_fcmrt_type"), word(12, "word_12"),
                                     also(word(16, "word_16")), word(20, "requested")}};

} // namespace ribkit::wire
