// Tables of routes and the fewest changes from one to the other.
#include "model/routes.h"

#include "rib_codes.h"
#include "testing/random_routes.h"

#include <gtest/gtest.h>

namespace ribkit::model {
namespace {

constexpr destination two{0x020000, RIB_MASK_DOMAIN};
const route near{500, RIB_FLAG_DIRECT | RIB_FLAG_ACTIVE, {{0x01010001, 2}}};

route_table only(const route &what) { return {{two, what}}; }

TEST(routes, equal_tables_need_no_change) {
    EXPECT_TRUE(changes_between(route_table{}, route_table{}).empty());
    EXPECT_TRUE(changes_between(only(near), only(near)).empty());
}

TEST(routes, a_new_route_is_added_and_a_lost_one_deleted) {
    EXPECT_EQ(changes_between({}, only(near)), (std::vector<route_change>{{RIB_ACTION_ADD, two, near}}));
    EXPECT_EQ(changes_between(only(near), {}), (std::vector<route_change>{{RIB_ACTION_DELETE, two, near}}));
}

TEST(routes, the_action_says_what_differs) {
    const auto action = [](const route &after) { return changes_between(only(near), only(after)).at(0).action; };
    route dearer = near;
    dearer.metric = 501;
    EXPECT_EQ(action(dearer), RIB_ACTION_CHANGE_METRIC);
    route remote = near;
    remote.flag = RIB_FLAG_ACTIVE;
    EXPECT_EQ(action(remote), RIB_ACTION_CHANGE_FLAG);
    remote.metric = 501;
    EXPECT_EQ(action(remote), RIB_ACTION_CHANGE_FLAG | RIB_ACTION_CHANGE_METRIC);
    route wider = near;
    wider.hops.push_back({0x01010002, 2});
    EXPECT_EQ(action(wider), RIB_ACTION_ADD);
}

TEST(routes, random_tables_become_one_another) {
    std::mt19937 random(1);
    for (int round = 0; round < 500; round++) {
        route_table table = testing::random_table(random);
        const route_table after = testing::random_neighbour(random, table);
        const auto changes = changes_between(table, after);
        EXPECT_LE(changes.size(), table.size() + after.size());
        for (const route_change &change : changes) {
            apply_change(table, change);
        }
        ASSERT_EQ(table, after) << "round " << round;
    }
}

TEST(routes, behind_the_last_key_of_a_vsan_the_next_one_begins) {
    EXPECT_EQ(key_after({7, {0x020000, 1}}), (route_key{7, {0x020000, 2}}));
    EXPECT_EQ(key_after({7, {0x020000, UINT32_MAX}}), (route_key{7, {0x020001, 0}}));
    EXPECT_EQ(key_after({7, {UINT32_MAX, UINT32_MAX}}), (route_key{8, {0, 0}}));
}

} // namespace
} // namespace ribkit::model
