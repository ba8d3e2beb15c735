// Multicast and label routes: routes of any length, each of one owner.
#include "rib/state.h"

#include "rib_codes.h"
#include "testing/capture.h"
#include "testing/random_routes.h"
#include "testing/rib_requests.h"

#include <gtest/gtest.h>
#include <map>
#include <set>

namespace ribkit::rib {
namespace {

using model::destination;
using testing::below;
using testing::send;

constexpr uint32_t mine = RIB_CLIENT_MCAST;
constexpr uint32_t other = RIB_CLIENT_FCMPLS;
constexpr destination group{0xfffff1, 0xffffff};

update_answer take_groups(state &rib, uint32_t uuid, const testing::multicast_records &records) {
    return send(rib, {uuid, 1, RIB_OPER_UPDATE}, records);
}
update_answer take_labels(state &rib, uint32_t uuid, const testing::label_records &records) {
    return send(rib, {uuid, 1, RIB_OPER_UPDATE}, records);
}

std::vector<uint32_t> ports(uint32_t count) {
    std::vector<uint32_t> all(count);
    for (uint32_t i = 0; i < count; i++) {
        all[i] = 0x01010000 + i;
    }
    return all;
}

TEST(multicast_table, a_route_belongs_to_whom_added_it_first) {
    state rib;
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_ADD, group, {ports(2)}}}), (update_answer{RIB_OK, 1, 1, 1, 1}));
    for (const uint32_t action : {RIB_ACTION_ADD, RIB_ACTION_DELETE, RIB_ACTION_DELETE_GROUP}) {
        EXPECT_EQ(take_groups(rib, other, {{action, group, {}}}), (update_answer{RIB_OBJECT_OWNED, 1, 1, 0, 1}));
    }
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_DELETE, group, {}}}).held, 0U);
    EXPECT_EQ(take_groups(rib, other, {{RIB_ACTION_DELETE, group, {}}}).result, RIB_NO_ENTRY);
    EXPECT_EQ(take_groups(rib, other, {{RIB_ACTION_ADD, group, {}}}).result, RIB_OK);
}

TEST(multicast_table, unknown_actions_change_nothing) {
    state rib;
    for (const uint32_t action : {0U, 0x3U, 0x4U, 0x8U, 0x40U, 0x1001U}) {
        EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_ADD, group, {}}, {action, group, {}}}),
                  (update_answer{RIB_BAD_PARAMETERS, 1, 1, 0, 0}));
    }
}

TEST(multicast_table, a_route_has_as_many_members_as_there_are_path_units) {
    state rib({.spaces = {1, 8, 64}});
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_ADD, group, {ports(40)}}}).result, RIB_OK);
    EXPECT_EQ(rib.memory().path_units, 40U);
    EXPECT_EQ(rib.behind().ports.count(), 40U);
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_ADD, {0, 0}, {ports(33)}}}).result, RIB_HW_FULL);
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_ADD, group, {ports(65)}}}).result, RIB_HW_FULL);
    EXPECT_EQ(rib.memory().path_units, 40U) << "the route stays as it was";
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_ADD, group, {ports(0)}}}).result, RIB_OK);
    EXPECT_EQ(rib.memory().path_units + rib.behind().ports.count(), 0U);
}

TEST(multicast_table, as_many_members_as_before_find_room_in_a_full_space) {
    state rib({.spaces = {1, 8, 16}});
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_ADD, group, {ports(16)}}}).result, RIB_OK);
    std::vector<uint32_t> others = ports(16);
    others[3] = 0x02020202;
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_ADD, group, {others}}}).result, RIB_OK);
    EXPECT_TRUE(rib.behind().ports.has(0x02020202));
    EXPECT_FALSE(rib.behind().ports.has(0x01010003));
}

TEST(multicast_table, a_group_goes_with_all_its_routes_of_the_sender) {
    testing::told_lines told;
    state rib({}, &told);
    const auto at = [](uint32_t fcid, uint32_t mask = 0xffffff) { return destination{fcid, mask}; };
    take_groups(rib, mine,
                {{RIB_ACTION_ADD, at(0xfff100), {}},
                 {RIB_ACTION_ADD, at(0xfff1ff), {}},
                 {RIB_ACTION_ADD, at(0xfff100, 0xffff00), {}},
                 {RIB_ACTION_ADD, at(0xfff200), {}}});
    take_groups(rib, other, {{RIB_ACTION_ADD, at(0xfff101), {}}});
    told.take();
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_DELETE_GROUP, at(0xfff100, 0xffff00), {}}}),
              (update_answer{RIB_OK, 1, 1, 1, 2}));
    EXPECT_EQ(told.take(), (std::vector<std::string>{"mcast oper 1 action 2 of 14 vsan 1 fff100/ffff00",
                                                     "mcast oper 1 action 2 of 14 vsan 1 fff100/ffffff",
                                                     "mcast oper 1 action 2 of 14 vsan 1 fff1ff/ffffff"}));
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_DELETE_GROUP, at(0xfff100, 0xffff00), {}}}).result, RIB_OBJECT_OWNED);
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_DELETE_GROUP, at(0xfff300, 0xffff00), {}}}).result, RIB_NO_ENTRY);
    EXPECT_EQ(take_groups(rib, mine, {{RIB_ACTION_DELETE_GROUP, at(0, 0), {}}}).held, 1U);
}

model::label_key by_labels(uint32_t first) { return {1, RIB_ROUTE_LABEL, 0, {0, 0}, 1, {first, 0}}; }
model::label_key by_source(uint32_t port, uint32_t labels) {
    return {1, RIB_ROUTE_SRC_LABEL, port, {0, 0}, labels, {7}};
}
model::label_key by_destination(uint32_t labels) {
    return {1, RIB_ROUTE_FC_LABEL, 0, {0x020000, RIB_MASK_DOMAIN}, labels, {7, 0}};
}
const model::label_route pushes{{}, {0x00020000, 0x01010001, 0x5140, 0x6140}};

TEST(label_table, each_kind_has_its_actions_and_takes_no_others) {
    const std::map<uint32_t, model::label_key> kinds{{RIB_ACTION_ADD_LABEL, by_labels(7)},
                                                     {RIB_ACTION_ADD_LABEL_TUNNEL, by_source(0x01010001, 0)},
                                                     {RIB_ACTION_ADD_FC_LABEL, by_destination(1)},
                                                     {RIB_ACTION_ADD_UCAST_LABEL, by_destination(0)}};
    for (const auto &[own, key] : kinds) {
        state rib;
        for (const uint32_t action :
             {RIB_ACTION_ADD_LABEL, RIB_ACTION_ADD_LABEL_TUNNEL, RIB_ACTION_ADD_FC_LABEL, RIB_ACTION_ADD_UCAST_LABEL}) {
            EXPECT_EQ(take_labels(rib, mine, {{action, key, pushes}}).result,
                      action == own ? RIB_OK : RIB_BAD_PARAMETERS);
            EXPECT_EQ(take_labels(rib, mine, {{action << 1, key, {}}}).result,
                      action == own ? RIB_OK : RIB_BAD_PARAMETERS);
        }
        EXPECT_EQ(take_labels(rib, mine, {{RIB_ACTION_ADD, key, pushes}, {RIB_ACTION_DELETE, key, {}}}).accepted, 2U);
        for (const uint32_t action : {0U, 0x3U, 0x4U, 0x8U, 0x1000U, own | own << 1}) {
            EXPECT_EQ(take_labels(rib, mine, {{action, key, pushes}}).result, RIB_BAD_PARAMETERS) << action;
        }
        EXPECT_EQ(rib.memory().routes, 0U);
    }
    state rib;
    EXPECT_EQ(take_labels(rib, mine, {{RIB_ACTION_ADD_LABEL, by_source(0x01010001, 1), pushes}}).result, RIB_OK);
}

TEST(label_table, what_is_added_is_told_as_what_it_is) {
    testing::told_lines told;
    state rib({}, &told);
    take_labels(rib, mine, {{RIB_ACTION_ADD, by_destination(0), pushes}});
    EXPECT_EQ(told.take(), (std::vector<std::string>{"label oper 1 action 10 of 14 vsan 1 type 4 0 20000/ff0000 match "
                                                     "from to 20000 1010001 5140 6140"}));
    send(rib, {mine, 1, RIB_OPER_REMOVE_ALL}, testing::label_records());
    EXPECT_TRUE(told.take().at(0).starts_with("label oper 4 action 20 "));
}

TEST(label_table, keys_that_make_no_sense_are_refused) {
    state rib;
    model::label_key elsewhere = by_labels(7);
    elsewhere.vsan = 2;
    model::label_key unknown = by_labels(7);
    unknown.type = 0x10;
    model::label_key three = by_labels(7);
    three.match_count = 3;
    for (const auto &key : {elsewhere, unknown, three, by_source(0, 1), model::label_key{1, RIB_ROUTE_LABEL}}) {
        EXPECT_EQ(take_labels(rib, mine, {{RIB_ACTION_ADD, key, pushes}}).result, RIB_BAD_PARAMETERS);
    }
}

TEST(label_table, what_is_no_part_of_a_key_makes_no_other_one) {
    state rib;
    model::label_key key = by_labels(7);
    take_labels(rib, mine, {{RIB_ACTION_ADD, key, pushes}});
    key.source = 9;
    key.to = {0x030000, RIB_MASK_DOMAIN};
    key.match[1] = 8;
    EXPECT_EQ(take_labels(rib, mine, {{RIB_ACTION_ADD, key, pushes}}).held, 1U);
    key.match_count = 2;
    EXPECT_EQ(take_labels(rib, mine, {{RIB_ACTION_ADD, key, pushes}}).held, 2U);
}

TEST(label_table, a_unicast_destination_finds_the_labels_to_push) {
    state rib;
    const model::route_key to{1, {0x020000, RIB_MASK_DOMAIN}};
    take_labels(rib, mine, {{RIB_ACTION_ADD_FC_LABEL, by_destination(1), {}}});
    EXPECT_EQ(rib.labels_for(to), nullptr);
    take_labels(rib, mine, {{RIB_ACTION_ADD_UCAST_LABEL, by_destination(0), pushes}});
    ASSERT_NE(rib.labels_for(to), nullptr);
    EXPECT_EQ(rib.routes<label>().read(*rib.labels_for(to)).hops.size(), pushes.hops.size());
    take_labels(rib, mine, {{RIB_ACTION_DELETE_UCAST_LABEL, by_destination(0), {}}});
    EXPECT_EQ(rib.labels_for(to), nullptr);
}

TEST(label_table, hops_and_sources_are_ports_in_use) {
    state rib;
    take_labels(rib, mine, {{RIB_ACTION_ADD, by_source(5, 1), {{5, 6}, {0, 7, 0x00010000, 8, 0x5140}}}});
    EXPECT_EQ(rib.behind().ports.count(), 4U);
    EXPECT_EQ(rib.memory().path_units, 2U);
    take_labels(rib, mine, {{RIB_ACTION_ADD, by_source(5, 1), {{5}, {0, 7}}}});
    EXPECT_EQ(rib.behind().ports.count(), 2U);
    std::vector<uint32_t> many(2 * 17);
    EXPECT_EQ(take_labels(rib, mine, {{RIB_ACTION_ADD, by_source(5, 1), {{5}, many}}}).result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(rib.memory().path_units, 1U);
}

TEST(tables, those_that_have_routes_are_displayed) {
    state rib;
    const auto shows = [&](const char *line) {
        return testing::printed_by([&] { rib.show(); }).find(line) != std::string::npos;
    };
    EXPECT_FALSE(shows("Multicast routes: pool"));
    take_groups(rib, mine, {{RIB_ACTION_ADD, group, {ports(1)}}});
    EXPECT_TRUE(shows("\nMulticast routes: pool\n"));
    EXPECT_FALSE(shows("Label routes: pool"));
    take_labels(rib, mine, {{RIB_ACTION_ADD, by_labels(7), pushes}});
    EXPECT_TRUE(shows("\nLabel routes: pool\n"));
}

TEST(tables, share_the_positions_of_a_vsan_and_the_quota_of_a_client) {
    state rib({.spaces = {1, 8, 64}, .quotas = {{mine, 3}}});
    take_groups(rib, mine, testing::multicast_records{{RIB_ACTION_ADD, group, {}}});
    take_labels(rib, mine, testing::label_records{{RIB_ACTION_ADD, by_labels(7), pushes}});
    const testing::unicast_records two{{RIB_ACTION_ADD, {0x020000, RIB_MASK_DOMAIN}, {}},
                                       {RIB_ACTION_ADD, {0x030000, RIB_MASK_DOMAIN}, {}}};
    EXPECT_EQ(send(rib, {mine, 1, RIB_OPER_UPDATE}, two), (update_answer{RIB_HW_FULL, 1, 1, 1, 1}));
    EXPECT_EQ(rib.memory().positions, 3U);
    EXPECT_EQ(rib.vsans().at(1).domains.count(), 1U) << "of the unicast table";
    EXPECT_EQ(send(rib, {mine, 1, RIB_OPER_REMOVE_ALL}, testing::unicast_records()).accepted, 1U);
    EXPECT_EQ(rib.memory().routes, 2U);
}

/// Whole tables against a map from key to owner and words.
TEST(tables, random_wide_routes_leave_every_structure_in_agreement) {
    std::mt19937 random(5);
    state rib({.spaces = {2, 64, 400}});
    std::map<destination, std::pair<uint32_t, std::vector<uint32_t>>> model;
    std::set<uint32_t> results;
    for (int i = 0; i < 6000; i++) {
        const uint32_t uuid = 100 + below(random, 2);
        const destination to{below(random, 40), 0xffffff};
        const bool adds = below(random, 3) != 0;
        const auto members = ports(below(random, 50));
        const auto answer = take_groups(rib, uuid, {{adds ? RIB_ACTION_ADD : RIB_ACTION_DELETE, to, {members}}});
        const auto found = model.find(to);
        const bool is_others = found != model.end() && found->second.first != uuid;
        results.insert(answer.result);
        ASSERT_EQ(answer.result == RIB_OBJECT_OWNED, is_others);
        ASSERT_EQ(answer.result == RIB_NO_ENTRY, !adds && found == model.end());
        if (answer.result == RIB_OK && adds) {
            model[to] = {uuid, members};
        } else if (answer.result == RIB_OK) {
            model.erase(to);
        }
        uint32_t units = 0;
        for (const auto &[where, what] : model) {
            const auto *route = rib.routes<multicast>().find({1, where}, what.first);
            ASSERT_NE(route, nullptr);
            const auto held = rib.routes<multicast>().read(*route).members;
            ASSERT_TRUE(std::equal(held.begin(), held.end(), what.second.begin(), what.second.end()));
            units += static_cast<uint32_t>(held.size());
        }
        ASSERT_EQ(rib.memory().routes, model.size());
        ASSERT_EQ(rib.memory().path_units, units);
    }
    EXPECT_EQ(results, (std::set<uint32_t>{RIB_OK, RIB_HW_FULL, RIB_NO_ENTRY, RIB_OBJECT_OWNED}));
}

} // namespace
} // namespace ribkit::rib
