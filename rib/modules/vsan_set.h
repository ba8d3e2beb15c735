// Which of all VSANs something is about.
#pragma once

#include "rib_codes.h"

#include <bitset>
#include <cstdint>

namespace ribkit::rib {

/// By number; 0 is every VSAN where there is such a thing.
using vsan_set = std::bitset<RIB_LAST_VSAN + 1>;

/// The lowest one of a set that is not empty.
inline uint32_t first_in(const vsan_set &some) {
    uint32_t at = 0;
    while (!some[at]) {
        at++;
    }
    return at;
}

} // namespace ribkit::rib
