// What is counted as done: what the RIB has done, by what it was.
#include "clients/client_traffic.h"

#include "model/routes.h"
#include "rib_codes.h"

#include <gtest/gtest.h>

namespace ribkit::clients {
namespace {

model::destination domain(uint32_t number) { return {number << 16, RIB_MASK_DOMAIN}; }

const model::route near{500, RIB_FLAG_ACTIVE, {{7, 2}}};
const model::route far{900, RIB_FLAG_ACTIVE, {{8, 2}}};

TEST(client_traffic, is_counted_by_what_was_there_before) {
    const model::route_table before{{domain(1), near}, {domain(2), near}, {domain(3), near}};
    client_traffic traffic;
    traffic.count(before, std::vector<model::route_change>{{RIB_ACTION_DELETE, domain(1), near},
                                                           {RIB_ACTION_ADD, domain(2), far},
                                                           {RIB_ACTION_CHANGE_METRIC, domain(3), far},
                                                           {RIB_ACTION_ADD, domain(4), near}});
    EXPECT_EQ(traffic.added, 1U);
    EXPECT_EQ(traffic.changed, 2U);
    EXPECT_EQ(traffic.deleted, 1U);
    traffic.refused = 3;
    EXPECT_EQ(traffic.sent(), 7U);
}

TEST(client_traffic, only_what_the_rib_has_and_says_to_have_made_is_effective) {
    const model::route_table after{{domain(2), far}, {domain(3), near}};
    const std::vector<model::route_change> changes{{RIB_ACTION_DELETE, domain(1), near},
                                                   {RIB_ACTION_ADD, domain(2), far},
                                                   {RIB_ACTION_ADD, domain(3), far},
                                                   {RIB_ACTION_ADD, domain(4), near}};
    EXPECT_EQ(effective(changes, after, 4), (std::vector{changes[1], changes[0]}));
    EXPECT_EQ(effective(changes, after, 1), std::vector{changes[1]}); // the other one was gone already
    EXPECT_TRUE(effective(changes, after, 0).empty());
    EXPECT_TRUE(effective(changes, {}, 1).size() == 1);
}

} // namespace
} // namespace ribkit::clients
