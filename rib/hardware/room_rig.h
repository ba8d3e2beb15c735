// What has to be true of the RIB's rooms at any moment: every structure agrees with the routes that are held.
#pragma once

#include "rib/service/answers.h"
#include "rib/state.h"
#include "rib_codes.h"
#include "testing/rib_requests.h"

#include <gtest/gtest.h>
#include <map>
#include <set>

namespace ribkit::rib {

inline update_answer update(state &rib, uint32_t vsan, const testing::unicast_records &changes) {
    return testing::send(rib, {RIB_CLIENT_FSPF, vsan, RIB_OPER_UPDATE_RSP}, changes);
}

struct expected_use {
    uint32_t routes = 0, units = 0;
    std::set<uint32_t> ports;
    std::map<uint32_t, std::set<uint32_t>> domains;
};

inline expected_use use_of(const model::held_routes &model) {
    expected_use use;
    for (const auto &[key, held] : model) {
        use.routes++;
        use.units += static_cast<uint32_t>(held.what.hops.size());
        use.domains[key.vsan].insert(key.to.fcid >> 16);
        for (const model::next_hop &hop : held.what.hops) {
            use.ports.insert(hop.if_index);
        }
    }
    return use;
}

/// Every position that a segment hands out has somebody who knows it; nobody stands in two places.
inline void expect_positions(const hardware &behind) {
    const position_space &positions = behind.positions;
    std::map<uint32_t, uint32_t> standing;
    std::set<const placed *> seen;
    for (uint32_t p = 0; p < behind.spaces().positions; p++) {
        if (const placed *what = positions.at(p); what != nullptr) {
            ASSERT_EQ(what->position, p);
            ASSERT_TRUE(seen.insert(what).second);
            ASSERT_EQ(positions.owner(p), behind.vsans().at(what->vsan).segment);
            standing[what->vsan]++;
        }
    }
    std::set<uint32_t> segments;
    for (const auto &[id, vsan] : behind.vsans()) {
        ASSERT_TRUE(segments.insert(vsan.segment).second);
        ASSERT_EQ(standing[id], positions.used(vsan.segment));
    }
}

inline void expect_sound(const state &rib) {
    const expected_use expected = use_of(active_routes(rib));
    const rib_memory memory = rib.memory();
    ASSERT_EQ(memory.routes, expected.routes);
    ASSERT_EQ(memory.path_units, expected.units);
    ASSERT_EQ(memory.positions, expected.routes);
    const port_counts &ports = rib.behind().ports;
    ASSERT_EQ(ports.count(), expected.ports.size());
    for (const uint32_t port : expected.ports) {
        ASSERT_TRUE(ports.has(port));
    }
    ASSERT_EQ(rib.vsans().size(), expected.domains.size());
    for (const auto &[id, domains] : expected.domains) {
        const vsan_use &vsan = rib.vsans().at(id);
        ASSERT_EQ(vsan.domains.count(), domains.size());
        for (const uint32_t domain : domains) {
            ASSERT_TRUE(vsan.domains.has(static_cast<uint8_t>(domain)));
        }
    }
    expect_positions(rib.behind());
}

} // namespace ribkit::rib
