// What a RIB tells of itself follows from its routes and registrations.
#include "rib/domains.h"
#include "rib/flows.h"
#include "rib/instance.h"
#include "rib_mem.h"

#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

constexpr uint32_t fspf = RIB_CLIENT_FSPF;

void add_unicast(state &to, uint32_t client, uint32_t vsan, const model::destination &where, uint32_t flag,
                 std::vector<model::next_hop> hops, uint32_t metric = 1) {
    const std::vector<model::unicast_change> changes{{RIB_ACTION_ADD, where, {metric, flag, hops}}};
    EXPECT_EQ(to.update<unicast>({client, vsan, RIB_OPER_UPDATE, {}, false, 1000}, changes).result, RIB_OK);
}

void add_multicast(state &to, uint32_t vsan, const model::destination &where, std::vector<uint32_t> members) {
    const std::vector<model::multicast_change> changes{{RIB_ACTION_ADD, where, {members}}};
    EXPECT_EQ(to.update<multicast>({RIB_CLIENT_MCAST, vsan, RIB_OPER_UPDATE, {}, false, 1001}, changes).result, RIB_OK);
}

void add_labels(state &to, const model::label_key &key) {
    const std::vector<model::label_change> changes{{RIB_ACTION_ADD, key, {}}};
    EXPECT_EQ(to.update<label>({RIB_CLIENT_FCMPLS, key.vsan, RIB_OPER_UPDATE, {}, false, 1002}, changes).result,
              RIB_OK);
}

void suspend(state &where, uint32_t vsan) {
    const std::vector<model::unicast_change> none;
    EXPECT_EQ(where.update<unicast>({RIB_CLIENT_VSAN_MANAGER, vsan, RIB_OPER_SUSPEND, {}, false, 1000}, none).result,
              RIB_OK);
}

std::vector<uint32_t> members_of(const model::domain_reach::bitmap &map) {
    std::vector<uint32_t> members;
    for (uint32_t i = 0; i < 256; i++) {
        if (bmap_is_set(map.data(), map.size() - 1, i) != 0) {
            members.push_back(i);
        }
    }
    return members;
}

TEST(domains, are_those_that_routes_lead_to) {
    state rib;
    add_unicast(rib, fspf, 1, {0x020000, 0xff0000}, RIB_FLAG_DIRECT, {{1, 2}});
    add_unicast(rib, fspf, 1, {0x030400, 0xffff00}, 0, {{1, 2}});
    add_unicast(rib, fspf, 1, {0xef0000, 0xff0000}, 0, {});
    add_unicast(rib, fspf, 1, {0xfffc05, 0xffffff}, RIB_FLAG_DIRECT, {{1, 5}});
    add_unicast(rib, fspf, 1, {0, 0}, 0, {{1, 2}});
    add_unicast(rib, fspf, 2, {0x050000, 0xff0000}, 0, {{1, 2}});
    const model::domain_reach one = domains_of(rib.routes<unicast>(), 1);
    EXPECT_EQ(one.vsan, 1U);
    EXPECT_EQ(members_of(one.present), (std::vector<uint32_t>{2, 3, 0xef}));
    EXPECT_EQ(members_of(one.direct), (std::vector<uint32_t>{2}));
    EXPECT_EQ(members_of(domains_of(rib.routes<unicast>(), 2).present), (std::vector<uint32_t>{5}));
    EXPECT_TRUE(members_of(domains_of(rib.routes<unicast>(), 3).present).empty());
}

TEST(domains, are_direct_where_the_active_route_is) {
    state rib;
    add_unicast(rib, fspf, 1, {0x020000, 0xff0000}, RIB_FLAG_DIRECT, {{1, 2}});
    add_unicast(rib, RIB_CLIENT_FCDOMAIN, 1, {0x020000, 0xff0000}, 0, {{9, 2}});
    EXPECT_TRUE(members_of(domains_of(rib.routes<unicast>(), 1).direct).empty());
}

TEST(flows, take_the_longest_mask) {
    state rib;
    EXPECT_FALSE(way_of(rib.routes<unicast>(), {1, 0x010101, 0x020304, 1}, model::flow_balance::exchange));
    add_unicast(rib, fspf, 1, {0, 0}, 0, {{100, 0}});
    add_unicast(rib, fspf, 1, {0x020000, 0xff0000}, 0, {{200, 0}});
    add_unicast(rib, fspf, 1, {0x020304, 0xffffff}, 0, {{300, 0}});
    add_unicast(rib, fspf, 1, {0x050000, 0xff0000}, 0, {});
    for (const auto &[fcid, way] : {std::pair(0x020304U, 300U), {0x020305, 200}, {0x030304, 100}}) {
        EXPECT_EQ(way_of(rib.routes<unicast>(), {1, 0x010101, fcid, 1}, model::flow_balance::exchange)->if_index, way);
    }
    EXPECT_FALSE(way_of(rib.routes<unicast>(), {1, 0x010101, 0x050001, 1}, model::flow_balance::exchange));
    EXPECT_FALSE(way_of(rib.routes<unicast>(), {2, 0x010101, 0x020304, 1}, model::flow_balance::exchange));
}

TEST(flows, spread_over_all_next_hops_and_stay_where_they_are) {
    state rib;
    add_unicast(rib, fspf, 1, {0x020000, 0xff0000}, 0, {{1, 0}, {2, 0}, {3, 0}});
    std::map<uint32_t, uint32_t> uses;
    for (uint16_t exchange = 0; exchange < 300; exchange++) {
        const model::flow flow{1, 0x010101, 0x020304, exchange};
        const auto way = way_of(rib.routes<unicast>(), flow, model::flow_balance::exchange);
        EXPECT_EQ(way, way_of(rib.routes<unicast>(), flow, model::flow_balance::exchange));
        uses[way->if_index]++;
        EXPECT_EQ(way_of(rib.routes<unicast>(), flow, model::flow_balance::source_and_destination)->if_index,
                  way_of(rib.routes<unicast>(), {1, 0x010101, 0x020304, 0}, model::flow_balance::source_and_destination)
                      ->if_index);
    }
    EXPECT_EQ(uses.size(), 3U);
    for (const auto &[way, count] : uses) {
        EXPECT_GT(count, 50U) << way;
    }
}

TEST(vsans, are_those_that_anything_is_known_of) {
    state rib;
    add_unicast(rib, fspf, 7, {0x020000, 0xff0000}, 0, {{1, 0}});
    suspend(rib, 20);
    const described_vsans described{
        {3, {model::vsan_state::active, model::flow_balance::source_and_destination, true, 500}}, {7, {}}};
    const auto all = vsans_from(rib, described, 0, 10);
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0], (std::pair(3U, described.at(3))));
    EXPECT_EQ(all[1], (std::pair(7U, model::vsan_attributes{})));
    EXPECT_EQ(all[2].first, 20U);
    EXPECT_EQ(all[2].second.state, model::vsan_state::suspended);
    EXPECT_EQ(vsans_from(rib, described, 4, 10).size(), 2U);
    EXPECT_EQ(vsans_from(rib, described, 0, 1).size(), 1U);
    EXPECT_TRUE(vsans_from(rib, described, 21, 10).empty());
}

/// Logs what the state tells.
struct logging final : effects {
    void told(const route_event<unicast> &one) override { logs.enter(one, 5); }
    void told(const route_event<multicast> &one) override { logs.enter(one, 5); }
    void told(const route_event<label> &one) override { logs.enter(one, 5); }
    change_logs logs;
};

TEST(change_logs, have_what_a_module_would_be_told) {
    logging out;
    state rib({}, &out);
    add_unicast(rib, fspf, 1, {0x020000, 0xff0000}, 0, {{1, 2}});
    const std::vector<model::unicast_change> gone{{RIB_ACTION_DELETE, {0x020000, 0xff0000}, {0, 0, {}}}};
    EXPECT_EQ(rib.update<unicast>({fspf, 1, RIB_OPER_UPDATE_RSP, {}, false, 1000}, gone).result, RIB_OK);
    add_multicast(rib, 1, {0, 0xffffff}, {4});
    const auto &log = out.logs.of<unicast>();
    ASSERT_EQ(log.held(), 2U);
    EXPECT_EQ(log.at(0), (model::logged_change<model::route_key>{0, 5, FIB_OPER_UPDATE, 1, {1, {0x020000, 0xff0000}}}));
    EXPECT_EQ(log.at(1).action, 2U);
    EXPECT_EQ(out.logs.of<multicast>().held(), 1U);
    EXPECT_EQ(out.logs.of<label>().held(), 0U);
}

TEST(change_logs, have_nothing_that_did_not_change) {
    logging out;
    state rib({}, &out);
    add_unicast(rib, fspf, 1, {0x020000, 0xff0000}, 0, {{1, 2}});
    const std::vector<model::unicast_change> none;
    EXPECT_EQ(rib.update<unicast>({fspf, 1, RIB_OPER_REPLAY, {}, false, 1000}, none).accepted, 1U);
    EXPECT_EQ(out.logs.of<unicast>().held(), 1U);
}

TEST(instance, a_registered_distance_makes_routes_active) {
    instance rib({}, nullptr, 77);
    add_unicast(rib.routes, fspf, 1, {0x020000, 0xff0000}, 0, {{1, 0}});
    add_unicast(rib.routes, 99, 1, {0x020000, 0xff0000}, 0, {{2, 0}});
    const auto way = [&] {
        return way_of(rib.routes.routes<unicast>(), {1, 1, 0x020304, 1}, model::flow_balance::exchange)->if_index;
    };
    EXPECT_EQ(way(), 1U);
    EXPECT_EQ(rib.enter({99, 5, "ninety"}, 100, 1000), RIB_OK);
    EXPECT_EQ(way(), 2U);
    EXPECT_FALSE(rib.lose(129, 1000));
    EXPECT_EQ(rib.lose(130, 1000)->client, 99U);
    EXPECT_EQ(way(), 1U);
}

TEST(instance, a_registration_that_is_refused_changes_no_distance) {
    instance rib({}, nullptr, 0);
    for (uint32_t client = 0; client < most_registrations; client++) {
        ASSERT_EQ(rib.enter({client, 1, "x"}, 0, 0), RIB_OK);
    }
    const uint32_t before = rib.routes.clients().distance(most_registrations);
    EXPECT_EQ(rib.enter({most_registrations, before + 1, "x"}, 0, 0), RIB_HW_FULL);
    EXPECT_EQ(rib.routes.clients().distance(most_registrations), before);
}

TEST(instance, holds_nothing_in_what_it_has_not) {
    const instance rib({}, nullptr, 0);
    for (const uint32_t structure : {0U, 2U, 9U}) {
        EXPECT_EQ(rib.held_in(structure), 0U);
    }
}

TEST(instance, counts_routes_by_vsan_and_memory_by_kind) {
    instance rib({}, nullptr, 77);
    add_unicast(rib.routes, fspf, 7, {0x020000, 0xff0000}, 0, {{1, 0}});
    add_unicast(rib.routes, 99, 7, {0x020000, 0xff0000}, 0, {{1, 0}});
    add_multicast(rib.routes, 9, {0, 0xffffff}, {4});
    add_multicast(rib.routes, 9, {0x010203, 0xffffff}, {4});
    add_labels(rib.routes, {9, RIB_ROUTE_FC_LABEL, 0, {0x030000, 0xff0000}, 0, {}});
    add_labels(rib.routes, {9, RIB_ROUTE_FC_LABEL, 0, {0x030000, 0xff0000}, 1, {7}});
    add_labels(rib.routes, {9, RIB_ROUTE_LABEL, 0, {0, 0}, 1, {7}});
    EXPECT_EQ(rib.summaries(0, 9), (std::vector<model::vsan_summary>{{7, 1000, 2, 0, 0}, {9, 1002, 0, 2, 3}}));
    EXPECT_EQ(rib.summaries(8, 9).size(), 1U);
    EXPECT_EQ(rib.summaries(0, 1).size(), 1U);
    const auto pools = rib.memory();
    const auto count = [&](uint32_t pool) { return pools[pool - 1].n_data; };
    EXPECT_EQ(count(2), 2U);
    EXPECT_EQ(count(3), 1U);
    EXPECT_EQ(count(4), 3U);
    EXPECT_EQ(count(5), 2U);
    EXPECT_EQ(count(6), 1U);
    EXPECT_EQ(count(8), 1U) << "labels for a unicast route";
    EXPECT_EQ(count(9), 2U);
    EXPECT_GT(pools[8].data_size, 0U);
    for (uint32_t i = 0; i < pools.size(); i++) {
        EXPECT_EQ(pools[i].pool, i + 1);
    }
}

} // namespace
} // namespace ribkit::rib
