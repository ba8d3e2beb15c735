// Which way a flow goes: the entry to its destination that has the longest mask, and of its ways the one that a hash of
// the flow chooses. RIB and modules agree, since they ask here.
#pragma once

#include "model/routes.h"
#include "model/system.h"
#include "rib_codes.h"

#include <cstdint>

namespace ribkit::model {

/// Tries masks from the longest to none at all. Masks have no gaps: an entry whose mask has some is met by nobody.
/// @param find what is found of a route_key, converted to true where there is something
template <class Find> auto longest_match(uint32_t vsan, uint32_t fcid, const Find &find) {
    constexpr uint32_t address_bits = 24;
    for (uint32_t gone = 0; gone < address_bits; gone++) {
        const uint32_t mask = RIB_MASK_PORT >> gone << gone;
        if (const auto found = find(route_key{vsan, {fcid & mask, mask}})) {
            return found;
        }
    }
    return find(route_key{vsan, {0, 0}});
}

/// Which of so many ways a flow takes: always the same of the same ways. There is at least one.
uint32_t chosen_way(const flow &flow, flow_balance balance, uint32_t ways);

} // namespace ribkit::model
