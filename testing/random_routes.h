// Route tables drawn at random, for the tests of this folder.
#pragma once

#include "model/routes.h"
#include "rib_codes.h"

#include <random>

namespace ribkit::testing {

inline uint32_t below(std::mt19937 &random, uint32_t limit) { return static_cast<uint32_t>(random() % limit); }

inline model::route random_route(std::mt19937 &random) {
    model::route r{below(random, 3), below(random, 2) * RIB_FLAG_DIRECT | RIB_FLAG_ACTIVE, {}};
    for (uint32_t i = below(random, 4); i > 0; i--) {
        r.hops.push_back({0x01010000 + below(random, 3), 1 + below(random, 239)});
    }
    return r;
}

inline model::route_table random_table(std::mt19937 &random) {
    model::route_table table;
    for (uint32_t i = below(random, 12); i > 0; i--) {
        table[{(1 + below(random, 20)) << 16, RIB_MASK_DOMAIN}] = random_route(random);
    }
    return table;
}

/// Some routes of the table changed, some lost, some new.
inline model::route_table random_neighbour(std::mt19937 &random, const model::route_table &table) {
    model::route_table other = random_table(random);
    for (const auto &[to, what] : table) {
        if (random() % 3 != 0) {
            other[to] = random() % 2 == 0 ? what : random_route(random);
        }
    }
    return other;
}

} // namespace ribkit::testing
