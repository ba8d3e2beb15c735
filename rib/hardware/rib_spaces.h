// How much room the RIB's tables have. What goes beyond is refused, one route at a time.
#pragma once

#include <cstdint>

namespace ribkit::rib {

/// Positions belong to VSANs in blocks of this size.
inline constexpr uint32_t position_block = 8;

/// Path units come and go in blocks of up to so many.
inline constexpr uint32_t unit_block = 16;

/// The most positions or path units that the RIB can be given.
inline constexpr uint32_t largest_space = 1U << 24;

/// The defaults are enough for all 239 domains, each with 16 next hops.
struct rib_spaces {
    uint32_t vsans = 16;         ///< that have routes at the same time
    uint32_t positions = 4096;   ///< one for each route; a multiple of position_block
    uint32_t path_units = 65536; ///< one for each next hop of each route

    static rib_spaces for_vsans(uint32_t count) { return {count, count * 256, count * 4096}; }
};

} // namespace ribkit::rib
