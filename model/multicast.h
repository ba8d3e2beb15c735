// Multicast routes as values: on which interfaces frames to a group, or along a distribution tree, leave.
#pragma once

#include "model/routes.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::model {

/// FC ID 0 is the distribution tree of the VSAN.
using multicast_key = route_key;

struct multicast_route {
    std::vector<uint32_t> members; ///< interfaces, in the order in which they were sent

    bool operator==(const multicast_route &) const = default;
};

/// There is no changing a part of it: adding replaces.
constexpr uint32_t action_between(const multicast_route & /*before*/, const multicast_route & /*after*/) {
    return RIB_ACTION_ADD;
}

/// What a multicast route says, where its members stand with somebody else.
struct multicast_values {
    std::span<const uint32_t> members;

    multicast_values(std::span<const uint32_t> interfaces = {}) // NOLINT(google-explicit-constructor)
        : members(interfaces) {}
    multicast_values(const multicast_route &what) : members(what.members) {} // NOLINT(google-explicit-constructor)
};

/// One record of a multicast update.
struct multicast_change {
    uint32_t action; ///< RIB_ACTION_...
    destination to;
    multicast_values what;
};

} // namespace ribkit::model
