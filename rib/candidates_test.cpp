// Several clients have a route of the same destination: which is active, and what is told of it.
#include "rib/state.h"

#include "rib_codes.h"
#include "testing/random_routes.h"
#include "testing/rib_requests.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

using lines = std::vector<std::string>;

constexpr model::destination two{0x020000, RIB_MASK_DOMAIN};

model::route cost(uint32_t metric) { return {metric, RIB_FLAG_ACTIVE, {{0x01010001, 2}}}; }

class candidates : public ::testing::Test {
  protected:
    update_answer take(uint32_t uuid, uint32_t action, const model::route &what = {},
                       const model::destination &to = two) {
        return testing::send(rib, {uuid, 1, RIB_OPER_UPDATE}, testing::unicast_records{{action, to, what}});
    }
    /// Clients by rank, each with whether its route says that it is active.
    [[nodiscard]] std::vector<std::pair<uint32_t, bool>> ranked() const {
        std::vector<std::pair<uint32_t, bool>> all;
        const auto &table = rib.routes<unicast>();
        const auto at = table.all().find({1, two});
        for (const auto *one = at == table.all().end() ? nullptr : at->second; one != nullptr; one = one->next) {
            all.emplace_back(one->of->uuid, (table.read(*one).flag & RIB_FLAG_ACTIVE) != 0);
        }
        return all;
    }

    testing::told_lines told;
    state rib{{}, &told};
};

using ranks = std::vector<std::pair<uint32_t, bool>>;

TEST_F(candidates, the_nearest_is_active_then_the_cheapest_then_the_lowest_identity) {
    EXPECT_EQ(take(RIB_CLIENT_TEST, RIB_ACTION_ADD, cost(1)).held, 1U);
    EXPECT_EQ(take(RIB_CLIENT_RSCN, RIB_ACTION_ADD, cost(1)).held, 2U);
    EXPECT_EQ(take(RIB_CLIENT_FSPF, RIB_ACTION_ADD, cost(900)).held, 3U);
    EXPECT_EQ(take(RIB_CLIENT_SPAN, RIB_ACTION_ADD, cost(0)).held, 4U);
    EXPECT_EQ(
        ranked(),
        (ranks{{RIB_CLIENT_FSPF, true}, {RIB_CLIENT_SPAN, false}, {RIB_CLIENT_RSCN, false}, {RIB_CLIENT_TEST, false}}));
    EXPECT_EQ(rib.memory().positions, 1U) << "the destination stands in the hardware once";
    EXPECT_EQ(rib.memory().routes, 4U);
}

TEST_F(candidates, defaults_are_local_then_static_then_the_domain_manager_then_fspf) {
    for (const uint32_t uuid : {RIB_CLIENT_MCAST, RIB_CLIENT_FSPF, RIB_CLIENT_FCDOMAIN, RIB_CLIENT_OPERATOR,
                                RIB_CLIENT_CONFIG, RIB_CLIENT_TLPORT, RIB_CLIENT_FLOGI, RIB_CLIENT_PORT_MANAGER}) {
        take(uuid, RIB_ACTION_ADD, cost(uuid == RIB_CLIENT_OPERATOR ? 6 : 5));
    }
    std::vector<uint32_t> order;
    for (const auto &[uuid, active] : ranked()) {
        order.push_back(uuid);
    }
    EXPECT_EQ(order,
              (std::vector<uint32_t>{RIB_CLIENT_PORT_MANAGER, RIB_CLIENT_FLOGI, RIB_CLIENT_TLPORT, RIB_CLIENT_CONFIG,
                                     RIB_CLIENT_OPERATOR, RIB_CLIENT_FCDOMAIN, RIB_CLIENT_FSPF, RIB_CLIENT_MCAST}));
}

TEST_F(candidates, what_the_sender_says_of_being_active_counts_for_nothing) {
    take(RIB_CLIENT_FSPF, RIB_ACTION_ADD, {1, RIB_FLAG_DIRECT, {}});
    take(RIB_CLIENT_TEST, RIB_ACTION_ADD, {1, RIB_FLAG_ACTIVE, {}});
    EXPECT_EQ(ranked(), (ranks{{RIB_CLIENT_FSPF, true}, {RIB_CLIENT_TEST, false}}));
    take(RIB_CLIENT_TEST, RIB_ACTION_CHANGE_FLAG, {1, RIB_FLAG_ACTIVE, {}});
    EXPECT_EQ(ranked(), (ranks{{RIB_CLIENT_FSPF, true}, {RIB_CLIENT_TEST, false}}));
}

TEST_F(candidates, nobody_changes_or_deletes_what_is_anothers) {
    take(RIB_CLIENT_FSPF, RIB_ACTION_ADD, cost(1));
    for (const uint32_t action : {RIB_ACTION_DELETE, RIB_ACTION_CHANGE_METRIC, RIB_ACTION_CHANGE_FLAG}) {
        EXPECT_EQ(take(RIB_CLIENT_TEST, action, cost(2)), (update_answer{RIB_OBJECT_OWNED, RIB_OPER_UPDATE, 1, 0, 1}));
        EXPECT_EQ(take(RIB_CLIENT_TEST, action, cost(2), {0x030000, RIB_MASK_DOMAIN}).result, RIB_NO_ENTRY);
    }
    EXPECT_EQ(ranked(), (ranks{{RIB_CLIENT_FSPF, true}}));
}

// First the sender's own route, then the one that is active no more, then the one that is active now.
TEST_F(candidates, every_route_that_changes_is_told_in_order) {
    take(RIB_CLIENT_TEST, RIB_ACTION_ADD, cost(5));
    EXPECT_EQ(told.take(), (lines{"ucast oper 1 action 1 of 64 vsan 1 20000/ff0000 metric 5 flag 8 1010001:2"}));
    take(RIB_CLIENT_RSCN, RIB_ACTION_ADD, cost(6));
    EXPECT_EQ(told.take(), (lines{"ucast oper 1 action 1 of 19 vsan 1 20000/ff0000 metric 6 flag 0 1010001:2"}));
    take(RIB_CLIENT_RSCN, RIB_ACTION_CHANGE_METRIC, cost(4));
    EXPECT_EQ(told.take(), (lines{"ucast oper 1 action 8 of 19 vsan 1 20000/ff0000 metric 4 flag 8 1010001:2",
                                  "ucast oper 1 action 4 of 64 vsan 1 20000/ff0000 metric 5 flag 0 1010001:2"}));
    take(RIB_CLIENT_RSCN, RIB_ACTION_ADD, cost(7));
    EXPECT_EQ(told.take(), (lines{"ucast oper 1 action 1 of 19 vsan 1 20000/ff0000 metric 7 flag 0 1010001:2",
                                  "ucast oper 1 action 4 of 64 vsan 1 20000/ff0000 metric 5 flag 8 1010001:2"}));
    take(RIB_CLIENT_TEST, RIB_ACTION_DELETE);
    EXPECT_EQ(told.take(), (lines{"ucast oper 1 action 2 of 64 vsan 1 20000/ff0000 metric 5 flag 8 1010001:2",
                                  "ucast oper 1 action 4 of 19 vsan 1 20000/ff0000 metric 7 flag 8 1010001:2"}));
    take(RIB_CLIENT_RSCN, RIB_ACTION_DELETE);
    EXPECT_EQ(told.take(), (lines{"ucast oper 1 action 2 of 19 vsan 1 20000/ff0000 metric 7 flag 8 1010001:2"}));
    EXPECT_TRUE(rib.vsans().empty());
}

TEST_F(candidates, a_registered_distance_is_in_force_until_it_is_taken_back) {
    take(RIB_CLIENT_TEST, RIB_ACTION_ADD, cost(5));
    take(RIB_CLIENT_FSPF, RIB_ACTION_ADD, cost(6));
    told.take();
    rib.set_distance(RIB_CLIENT_TEST, 1, 70);
    EXPECT_EQ(ranked(), (ranks{{RIB_CLIENT_TEST, true}, {RIB_CLIENT_FSPF, false}}));
    EXPECT_EQ(told.take(), (lines{"ucast oper 0 action 4 of 12 vsan 1 20000/ff0000 metric 6 flag 0 1010001:2",
                                  "ucast oper 0 action 4 of 64 vsan 1 20000/ff0000 metric 5 flag 8 1010001:2"}));
    EXPECT_EQ(rib.vsans().at(1).changed, 70U);
    rib.set_distance(RIB_CLIENT_TEST, 2, 71);
    EXPECT_EQ(told.take(), lines());
    rib.set_distance(RIB_CLIENT_TEST, {}, 72);
    EXPECT_EQ(ranked(), (ranks{{RIB_CLIENT_FSPF, true}, {RIB_CLIENT_TEST, false}}));
}

TEST_F(candidates, a_distance_may_be_registered_before_there_are_routes) {
    rib.set_distance(RIB_CLIENT_TEST, 1, 0);
    EXPECT_EQ(rib.clients().distance(RIB_CLIENT_TEST), 1U);
    take(RIB_CLIENT_FSPF, RIB_ACTION_ADD, cost(6));
    take(RIB_CLIENT_TEST, RIB_ACTION_ADD, cost(5));
    EXPECT_EQ(ranked(), (ranks{{RIB_CLIENT_TEST, true}, {RIB_CLIENT_FSPF, false}}));
    rib.set_distance(RIB_CLIENT_TEST, {}, 0);
    EXPECT_EQ(rib.clients().distance(RIB_CLIENT_TEST), 200U);
}

TEST_F(candidates, a_client_without_routes_is_forgotten) {
    take(RIB_CLIENT_TEST, RIB_ACTION_DELETE);
    take(RIB_CLIENT_FSPF, RIB_ACTION_ADD, cost(1));
    take(RIB_CLIENT_FSPF, RIB_ACTION_DELETE);
    rib.set_distance(RIB_CLIENT_RSCN, 7, 0);
    rib.set_distance(RIB_CLIENT_RSCN, {}, 0);
    EXPECT_TRUE(rib.clients().all().empty());
}

// The model is a list of routes, of which the first by rank is active.
TEST_F(candidates, random_changes_of_several_clients_leave_the_order_of_ranks) {
    struct entry {
        uint32_t distance, metric, uuid;
        auto operator<=>(const entry &) const = default;
    };
    std::mt19937 random(7);
    std::map<uint32_t, uint32_t> metrics;
    std::map<uint32_t, uint32_t> distances;
    for (int i = 0; i < 3000; i++) {
        const uint32_t uuid = 100 + testing::below(random, 6);
        const uint32_t metric = testing::below(random, 4);
        switch (testing::below(random, 4)) {
        case 0:
            EXPECT_EQ(take(uuid, RIB_ACTION_DELETE).result == RIB_OK, metrics.erase(uuid) != 0);
            break;
        case 1:
            distances[uuid] = testing::below(random, 3);
            rib.set_distance(uuid, distances[uuid], 0);
            break;
        default:
            EXPECT_EQ(take(uuid, RIB_ACTION_ADD, cost(metric)).result, RIB_OK);
            metrics[uuid] = metric;
        }
        std::vector<entry> model;
        for (const auto &[owner, at] : metrics) {
            model.push_back({distances.contains(owner) ? distances[owner] : 200, at, owner});
        }
        std::sort(model.begin(), model.end());
        ranks expected;
        for (const entry &one : model) {
            expected.emplace_back(one.uuid, expected.empty());
        }
        ASSERT_EQ(ranked(), expected) << i;
    }
}

} // namespace
} // namespace ribkit::rib
