// What updates do to the unicast table, one client after the other.
#include "rib/state.h"

#include "rib_codes.h"
#include "testing/random_routes.h"
#include "testing/rib_requests.h"

#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

using model::destination;
using model::route;
using model::route_table;
using testing::send;
using testing::unicast_records;

constexpr destination two{0x020000, RIB_MASK_DOMAIN};
constexpr destination three{0x030000, RIB_MASK_DOMAIN};
const route near{500, RIB_FLAG_DIRECT | RIB_FLAG_ACTIVE, {{0x01010001, 2}}, {1, 2, 3, 4, 5, 6, 7, 8}};
const route dearer{600, RIB_FLAG_ACTIVE, {{0x01010002, 3}}};

class unicast_table : public ::testing::Test {
  protected:
    update_answer take(const unicast_records &records, uint32_t vsan = 1, uint32_t oper = RIB_OPER_UPDATE_RSP) {
        return send(rib, {RIB_CLIENT_FSPF, vsan, oper}, records);
    }
    [[nodiscard]] route held(const destination &to, uint32_t vsan = 1) const {
        const auto *found = rib.routes<unicast>().find({vsan, to}, RIB_CLIENT_FSPF);
        if (found == nullptr) {
            return {};
        }
        const auto what = rib.routes<unicast>().read(*found);
        return {what.metric, what.flag, {what.hops.begin(), what.hops.end()}, what.carried};
    }
    [[nodiscard]] size_t count() const { return rib.routes<unicast>().count(); }

    state rib;
};

TEST_F(unicast_table, an_added_route_is_held_whole_and_replaced_by_the_next) {
    EXPECT_EQ(take({{RIB_ACTION_ADD, two, near}}), (update_answer{RIB_OK, RIB_OPER_UPDATE_RSP, 1, 1, 1}));
    EXPECT_EQ(held(two), near);
    EXPECT_EQ(take({{RIB_ACTION_ADD, two, dearer}}).held, 1U);
    EXPECT_EQ(held(two), dearer);
}

TEST_F(unicast_table, a_deleted_route_is_gone) {
    take({{RIB_ACTION_ADD, two, near}, {RIB_ACTION_ADD, three, near}});
    EXPECT_EQ(take({{RIB_ACTION_DELETE, two, {}}}), (update_answer{RIB_OK, RIB_OPER_UPDATE_RSP, 1, 1, 1}));
    EXPECT_EQ(held(two), route());
    EXPECT_EQ(held(three), near);
}

TEST_F(unicast_table, metric_and_flag_change_alone_or_together) {
    take({{RIB_ACTION_ADD, two, near}});
    take({{RIB_ACTION_CHANGE_METRIC, two, dearer}});
    EXPECT_EQ(held(two), (route{dearer.metric, near.flag, near.hops, near.carried}));
    take({{RIB_ACTION_CHANGE_FLAG, two, dearer}});
    EXPECT_EQ(held(two), (route{dearer.metric, dearer.flag, near.hops, near.carried}));
    take({{RIB_ACTION_CHANGE_FLAG | RIB_ACTION_CHANGE_METRIC, two, near}});
    EXPECT_EQ(held(two), near);
}

TEST_F(unicast_table, what_is_not_there_cannot_change_and_the_others_do) {
    take({{RIB_ACTION_ADD, two, near}});
    const auto answer = take({{RIB_ACTION_DELETE, three, {}}, {RIB_ACTION_CHANGE_METRIC, two, dearer}});
    EXPECT_EQ(answer, (update_answer{RIB_NO_ENTRY, RIB_OPER_UPDATE_RSP, 1, 1, 1}));
    EXPECT_EQ(held(two).metric, dearer.metric);
    EXPECT_EQ(take({{RIB_ACTION_CHANGE_FLAG, three, near}}).result, RIB_NO_ENTRY);
}

TEST_F(unicast_table, vsans_have_tables_of_their_own) {
    take({{RIB_ACTION_ADD, two, near}});
    EXPECT_EQ(take({{RIB_ACTION_ADD, two, dearer}}, 2).held, 1U);
    EXPECT_EQ(held(two), near);
    EXPECT_EQ(rib.held(table_id::unicast, 1), 1U);
    EXPECT_EQ(rib.held(table_id::unicast, 2), 1U);
    EXPECT_EQ(rib.held(table_id::unicast, 3), 0U);
    EXPECT_EQ(rib.held(table_id::label, 1), 0U);
}

TEST_F(unicast_table, an_update_that_is_not_sound_changes_nothing) {
    take({{RIB_ACTION_ADD, two, near}});
    for (const uint32_t action : {0U, 0x3U, 0x10U, 0x18U, 0x1000U}) {
        EXPECT_EQ(take({{RIB_ACTION_DELETE, two, {}}, {action, three, near}}),
                  (update_answer{RIB_BAD_PARAMETERS, RIB_OPER_UPDATE_RSP, 1, 0, 1}));
    }
    for (const uint32_t oper : {0U, 0x3U, 0x800U, 0x20000U}) {
        EXPECT_EQ(take({{RIB_ACTION_DELETE, two, {}}}, 1, oper), (update_answer{RIB_NOT_SUPPORTED, oper, 1, 0, 1}));
    }
    EXPECT_EQ(take({{RIB_ACTION_ADD, two, near}}, 0).result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(take({{RIB_ACTION_ADD, two, near}}, 4096).result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(count(), 1U);
    EXPECT_EQ(take({{RIB_ACTION_ADD, two, near}}, 4095).result, RIB_OK);
}

TEST_F(unicast_table, more_hops_than_there_can_be_are_refused_and_the_route_stays) {
    route wide = near;
    wide.hops.assign(17, near.hops[0]);
    take({{RIB_ACTION_ADD, two, near}});
    EXPECT_EQ(take({{RIB_ACTION_ADD, two, wide}, {RIB_ACTION_ADD, three, wide}}),
              (update_answer{RIB_BAD_PARAMETERS, RIB_OPER_UPDATE_RSP, 1, 0, 1}));
    EXPECT_EQ(held(two), near);
    wide.hops.pop_back();
    EXPECT_EQ(take({{RIB_ACTION_ADD, three, wide}}).result, RIB_OK);
    EXPECT_EQ(held(three), wide);
}

TEST_F(unicast_table, random_updates_leave_what_the_client_has) {
    std::mt19937 random(3);
    route_table client;
    for (int round = 0; round < 300; round++) {
        const route_table after = testing::random_neighbour(random, client);
        const auto changes = model::changes_between(client, after);
        client = after;
        if (!changes.empty()) {
            EXPECT_EQ(take(changes),
                      (update_answer{RIB_OK, RIB_OPER_UPDATE_RSP, 1, static_cast<uint32_t>(changes.size()),
                                     static_cast<uint32_t>(after.size())}));
        }
        ASSERT_EQ(count(), after.size());
        for (const auto &[to, what] : after) {
            ASSERT_EQ(held(to), what) << "round " << round;
        }
    }
}

} // namespace
} // namespace ribkit::rib
