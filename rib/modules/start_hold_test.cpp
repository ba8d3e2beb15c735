// When modules that have entries are given those of a RIB that has just started.
#include "rib/modules/modules.h"
#include "rib/modules/start_hold.h"
#include "rib/naive/played_module.h"

#include <gtest/gtest.h>
#include <vector>

namespace ribkit::rib {
namespace {

constexpr uint64_t millisecond = 1000;
constexpr uint64_t start = 7'000'000;

TEST(start_hold, ends_when_clients_have_been_quiet_for_half_a_second) {
    start_hold hold(start, std::chrono::seconds(3));
    EXPECT_EQ(hold.due(), start + 3000 * millisecond); // nobody has come
    hold.hear_update(start + 100 * millisecond);
    hold.hear_update(start + 550 * millisecond);
    EXPECT_FALSE(hold.is_over(start + 1049 * millisecond));
    EXPECT_TRUE(hold.is_over(start + 1050 * millisecond));
    hold.hear_update(start + 1051 * millisecond); // it does not begin again
    EXPECT_TRUE(hold.is_over(start + 1052 * millisecond));
}

TEST(start_hold, ends_in_any_case) {
    start_hold hold(start, std::chrono::seconds(3));
    for (uint64_t now = start; now < start + 3000 * millisecond; now += 400 * millisecond) {
        EXPECT_FALSE(hold.is_over(now));
        hold.hear_update(now);
    }
    EXPECT_TRUE(hold.is_over(start + 3000 * millisecond));
    EXPECT_TRUE(start_hold(start, std::chrono::seconds(0)).is_over(start));
}

/// Sends all that there is, and lets the module take it.
void exchange(module_feed &feed, played_module &module) {
    while (feed.has_work()) {
        played_sink sink(3);
        if (const auto sequence = feed.write(sink)) {
            feed.settle(*sequence, module.take(sink.now));
        }
    }
}

/// A module that was programmed by a RIB that is gone, and the one that has come after it.
TEST(start_hold, routes_that_come_back_never_leave_the_module) {
    state routes;
    modules followed(routes);
    played_module module(100);
    const auto entry = [](uint32_t fcid) {
        return any_key{table_id::unicast, {.vsan = 1, .to = {fcid << 16, RIB_MASK_DOMAIN}}};
    };
    for (uint32_t domain = 1; domain <= 5; domain++) {
        module.behind_the_back()[entry(domain)] = {domain};
    }
    module_feed &feed = followed.enter(1, 0);
    feed.set_held(true);
    exchange(feed, module);
    EXPECT_EQ(module.all().size(), 5U);
    EXPECT_FALSE(feed.is_done());
    for (uint32_t domain = 1; domain <= 4; domain++) { // the client of the fifth is gone, too
        const std::vector<model::route_change> back{{RIB_ACTION_ADD, {domain << 16, RIB_MASK_DOMAIN}, {}}};
        routes.update<unicast>({RIB_CLIENT_FSPF, 1, RIB_OPER_UPDATE}, back);
        exchange(feed, module);
        EXPECT_EQ(module.all().size(), 5U);
    }
    followed.release();
    while (feed.has_work()) {
        played_sink sink(3);
        if (const auto sequence = feed.write(sink)) {
            feed.settle(*sequence, module.take(sink.now));
            for (uint32_t domain = 1; domain <= 4; domain++) {
                EXPECT_TRUE(module.all().contains(entry(domain)));
            }
        }
    }
    EXPECT_TRUE(feed.is_done());
    EXPECT_EQ(module.all().size(), 4U);
}

} // namespace
} // namespace ribkit::rib
