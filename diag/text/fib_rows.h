// What the forwarding programmers on the modules report.
#pragma once

#include "diag/text/vocabulary.h"

namespace ribkit::diag {

inline constexpr text_row fib_state_rows[] = {
    {0, "offline"}, {1, "ready"},    {2, "loading"}, {3, "verifying"},
    {4, "active"},  {5, "isolated"}, {6, "exited"},  {7, "upgrading"},
};
inline constexpr auto fib_state_texts = text_table{"%xh??", fib_state_rows};

inline constexpr text_row fib_mod_type_rows[] = {
    {0, "FIB"},
    {1, "sFIB"},
};
inline constexpr auto fib_mod_type_texts = text_table{"FIB %xh??", fib_mod_type_rows};

inline constexpr text_row fib_verf_rows[] = {
    {0x0, "consistent"},
    {0x1, "not in rib in vault"},
    {0x2, "in rib not in vault"},
    {0x4, "duplicate in vault"},
    {0x8, "bad param in vault"},
    {0x10, "not in rib in fib"},
    {0x20, "in rib not in fib"},
    {0x40, "duplicate in fib"},
    {0x80, "bad param in fib"},
    {0x100, "not in rib/fib in hw"},
    {0x200, "in rib/fib not in hw"},
    {0x400, "duplicate in hw"},
    {0x800, "bad param in hw"},
};
inline constexpr auto fib_verf_texts = text_table{"%xh??", fib_verf_rows};

inline constexpr text_row fib_route_type_rows[] = {
    {0x0, "unknown"},       {0x100, "drop"},      {0x200, "lbl drop"},      {0x400, "fc drop"},
    {0x1000, "sof"},        {0x2000, "SOFi2"},    {0x4000, "SOFn2"},        {0x8000, "SOF F"},
    {0x10000, "src-label"}, {0x20000, "1-label"}, {0x40000, "2-labels"},    {0x80000, "fc+label"},
    {0xf0000, "all-label"}, {0x100000, "mcast"},  {0x1000000, "xlink srv"}, {0x2000000, "local"},
    {0x4000000, "ucast"},   {0x8000000, "wka"},
};
inline constexpr auto fib_route_type_texts = text_table{"%xh??", fib_route_type_rows};

inline constexpr text_row fib_reason_rows[] = {
    {0, "normal frm"},
    {1, "bad class"},
    {2, "bad did"},
    {3, "bad sid"},
    {4, "login req"},
    {5, "temp no Nx"},
    {6, "perm no Nx"},
    {7, "bad length"},
    {8, "fab busy"},
    {9, "hw error"},
    {10, "bad version"},
    {11, "ttl failed"},
    {12, "bad mpls op"},
    {13, "TL els"},
    {14, "drop plogi acc"},
    {15, "RSVP frames"},
    {16, "zoned out fcpcmds"},
    {17, "non Readonly frames"},
};
inline constexpr auto fib_reason_texts = text_table{"%xh??", fib_reason_rows};

inline constexpr text_row fib_oper_rows[] = {
    {0x1, "update"},
    {0x2, "remove"},
    {0x4, "remove all"},
    {0x10, "begin to merge"},
    {0x20, "merge"},
    {0x40, "end of merge"},
    {0x100, "begin to verify"},
    {0x200, "verify"},
    {0x400, "end of verify"},
    {0x1000, "clear adj stats"},
    {0x2000, "set adj stats"},
    {0x4000, "clear port stats"},
    {0x8000, "set port stats"},
};
inline constexpr auto fib_oper_texts = text_table{"%xh??", fib_oper_rows};

inline constexpr text_row fib_iod_mode_rows[] = {
    {0, "idle"}, {1, "edge"}, {2, "core"}, {3, "block"}, {4, "blocking"}, {5, "drain"}, {6, "draining"},
};
inline constexpr auto fib_iod_mode_texts = text_table{"%xh??", fib_iod_mode_rows};

inline constexpr text_row fib_action_rows[] = {
    {0, "del+free"},
    {1, "add"},
    {2, "delete"},
    {3, "check"},
};
inline constexpr auto fib_action_texts = text_table{"%xh??", fib_action_rows};

/// The two indices that mean "none"; every other index is printed.
inline constexpr auto fib_d_idx_texts = text_table{"%03x", {{0xffff, "..."}, {0xdeadbeef, "..."}}};

} // namespace ribkit::diag
