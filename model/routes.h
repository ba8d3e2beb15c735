// Unicast routes as the lab's programs hold them, and what changed from one table to the next.
#pragma once

#include "model/table_changes.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <tuple>
#include <vector>

namespace ribkit::model {

struct next_hop {
    uint32_t if_index;
    uint32_t domain; ///< of the switch at the other end

    bool operator==(const next_hop &) const = default;
};

/// What a unicast route carries of the frame's header unread: R_CTL and its mask, the rewrite byte, five more.
using carried_bytes = std::array<uint8_t, 8>;

struct route {
    uint32_t metric = 0;
    uint32_t flag = 0; ///< RIB_FLAG_...
    std::vector<next_hop> hops;
    carried_bytes carried{};

    bool operator==(const route &) const = default;
};

/// What a route says, where its hops stand with somebody else.
struct route_values {
    uint32_t metric;
    uint32_t flag;
    std::span<const next_hop> hops;
    carried_bytes carried;

    route_values(uint32_t cost, uint32_t flags, std::span<const next_hop> ways, const carried_bytes &bytes = {})
        : metric(cost), flag(flags), hops(ways), carried(bytes) {}
    route_values(const route &what) // NOLINT(google-explicit-constructor)
        : route_values(what.metric, what.flag, what.hops, what.carried) {}
};

struct destination {
    uint32_t fcid;
    uint32_t mask;

    bool operator==(const destination &) const = default;
    bool operator<(const destination &other) const { return std::tie(fcid, mask) < std::tie(other.fcid, other.mask); }
};

using route_table = std::map<destination, route>;

/// A table that several share, and nobody changes.
using shared_routes = std::shared_ptr<const route_table>;

/// What a client wants the RIB to have, by VSAN.
using wanted_routes = std::map<uint32_t, shared_routes>;

struct route_key {
    uint32_t vsan;
    destination to;

    bool operator==(const route_key &) const = default;
    bool operator<(const route_key &other) const { return std::tie(vsan, to) < std::tie(other.vsan, other.to); }
};

/// The next key that a route can have.
constexpr route_key key_after(const route_key &key) {
    const auto &[vsan, to] = key;
    if (to.mask != UINT32_MAX) {
        return {vsan, {to.fcid, to.mask + 1}};
    }
    return to.fcid != UINT32_MAX ? route_key{vsan, {to.fcid + 1, 0}} : route_key{vsan + 1, {0, 0}};
}

struct held_route {
    uint32_t uuid; ///< the client that added it
    route what;

    bool operator==(const held_route &) const = default;
};

/// The routes of the RIB.
using held_routes = std::map<route_key, held_route>;

/// One record of a unicast update.
using route_change = table_change<destination, route>;

/// One record of a unicast update, where its hops stand with somebody else.
struct unicast_change {
    uint32_t action;
    destination to;
    route_values what;

    unicast_change(uint32_t does, const destination &where, const route_values &says)
        : action(does), to(where), what(says) {}
    unicast_change(const route_change &owning) // NOLINT(google-explicit-constructor)
        : unicast_change(owning.action, owning.to, owning.what) {}
};

/// A route with other hops is added, one with the same gets a new flag word or metric.
uint32_t action_between(const route &before, const route &after);

} // namespace ribkit::model
