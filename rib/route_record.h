// A route as the RIB keeps it: an item of a pool, which refers to its next hops and to its place in the hardware.
#pragma once

#include "model/routes.h"

#include <cstdint>

namespace ribkit::rib {

inline constexpr uint32_t no_position = 0xdeadbeef;

struct route_record {
    uint32_t vsan;
    model::destination to;
    uint32_t uuid; ///< the client that added it
    uint32_t metric;
    uint32_t flag;
    uint32_t hops;
    uint32_t path;     ///< the first of as many path units as it has hops; of no meaning without any
    uint32_t position; ///< or no_position
};

} // namespace ribkit::rib
