// The kind of a unicast path, which nobody chooses: whoever sends one computes a number from the path's other fields,
// whoever receives it a flag, by different tests.
#pragma once

#include "codec/messages/fib.h"
#include "codec/view.h"

namespace ribkit::codec {

namespace path_kinds {

inline constexpr uint8_t special = 0xf0;

constexpr bool is_well_known(uint32_t fcid) { return (fcid & 0x00fffff0) == 0x00fffff0 && fcid != 0x00ffffff; }

} // namespace path_kinds

/// The first word of a path as it travels: 8 special, 6 well-known, 7 of any domain and area in full, 4 any other.
inline uint32_t sent_kind(view<wire::fcu_path> path) {
    const uint32_t fcid = path.get<"fcid">();
    if (path.get<"special">() == path_kinds::special) {
        return 8;
    }
    if (path_kinds::is_well_known(fcid)) {
        return 6;
    }
    return (fcid & 0xffff) == 0xffff ? 7 : 4;
}

/// The first word of a path that was received, as fib_route_type has it. One whose low byte is zero on the wire is left
/// as it was.
template <std::endian Order> uint32_t received_kind(view<wire::fcu_path, Order> path) {
    const uint32_t sent = path.template get<"kind">();
    if ((sent & 0xff) == 0) {
        return sent;
    }
    if (path_kinds::is_well_known(path.template get<"fcid">())) {
        return 0x08000000;
    }
    if (path.template get<"special">() == path_kinds::special) {
        return 0x01000000;
    }
    const uint32_t mask = path.template get<"mask">();
    return mask == 0x00ffff00 || mask == 0x00ffffff ? 0x02000000 : 0x04000000;
}

} // namespace ribkit::codec
