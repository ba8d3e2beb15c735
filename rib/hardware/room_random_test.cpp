// Random changes: whatever was taken, refused and given back on the way, the rooms agree with the routes.
#include "rib/hardware/room_rig.h"

#include "rib_codes.h"
#include "testing/capture.h"
#include "testing/random_routes.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace ribkit::rib {
namespace {

/// None to five hops, now and then 16 or too many, by two slots.
model::route wide_route(std::mt19937 &random) {
    model::route r{testing::below(random, 3), RIB_FLAG_ACTIVE, {}};
    for (uint32_t left = testing::below(random, 8) == 0 ? 16 + testing::below(random, 3) : testing::below(random, 6);
         left > 0; left--) {
        r.hops.push_back({0x01010000 + (testing::below(random, 2) << 16) + testing::below(random, 300),
                          1 + testing::below(random, 239)});
    }
    return r;
}

model::route_change random_change(std::mt19937 &random) {
    constexpr uint32_t actions[] = {RIB_ACTION_ADD, RIB_ACTION_ADD, RIB_ACTION_DELETE, RIB_ACTION_CHANGE_METRIC};
    const uint32_t mask = random() % 2 != 0 ? RIB_MASK_DOMAIN : 0xffffff;
    const model::destination to{(testing::below(random, 24) << 16 | testing::below(random, 2)) & mask, mask};
    return {actions[testing::below(random, 4)], to, wide_route(random)};
}

/// What an accepted change does to the model.
void follow(model::held_routes &model, uint32_t vsan, const model::route_change &change) {
    const model::route_key key{vsan, change.to};
    if (change.action == RIB_ACTION_ADD) {
        model[key] = {RIB_CLIENT_FSPF, change.what};
    } else if (change.action == RIB_ACTION_DELETE) {
        model.erase(key);
    } else {
        model.at(key).what.metric = change.what.metric;
    }
}

void expect_same(const model::held_routes &held, const model::held_routes &model) {
    ASSERT_EQ(held.size(), model.size());
    for (const auto &[key, expected] : model) {
        ASSERT_TRUE(held.contains(key)) << key.vsan;
        ASSERT_EQ(held.at(key).what, expected.what);
    }
}

std::set<uint32_t> results_of_random_changes(const rib_spaces &spaces, uint32_t seed, int count) {
    std::mt19937 random(seed);
    state rib({.spaces = spaces});
    model::held_routes model;
    std::set<uint32_t> results;
    for (int i = 0; i < count; i++) {
        const uint32_t vsan = 1 + testing::below(random, 5);
        const model::route_change change = random_change(random);
        const update_answer response = update(rib, vsan, {change});
        results.insert(response.result);
        EXPECT_EQ(response.accepted, response.result == RIB_OK ? 1U : 0U);
        const bool missing = change.action != RIB_ACTION_ADD && !model.contains({vsan, change.to});
        EXPECT_EQ(response.result == RIB_NO_ENTRY, missing);
        if (response.result == RIB_OK) {
            follow(model, vsan, change);
        }
        expect_same(active_routes(rib), model);
        expect_sound(rib);
        if (::testing::Test::HasFailure()) {
            return results;
        }
    }
    while (!model.empty()) {
        const model::route_key key = model.begin()->first;
        EXPECT_EQ(update(rib, key.vsan, {{RIB_ACTION_DELETE, key.to, {}}}).result, RIB_OK);
        model.erase(key);
        expect_sound(rib);
    }
    const rib_memory left = rib.memory();
    EXPECT_EQ(left.routes + left.path_units + left.positions + rib.behind().ports.count(), 0U);
    EXPECT_TRUE(rib.vsans().empty());
    return results;
}

TEST(room, random_changes_leave_every_structure_in_agreement) {
    const auto results = results_of_random_changes({}, 1, 600);
    EXPECT_EQ(results, (std::set<uint32_t>{RIB_OK, RIB_BAD_PARAMETERS, RIB_NO_ENTRY}));
}

TEST(room, whatever_is_full_refuses_a_route_whole) {
    std::set<uint32_t> results;
    testing::printed_by([&] { // the allocator of segments reports its moves
        for (const rib_spaces &spaces : {rib_spaces{5, 48, 4096}, rib_spaces{5, 40, 128}, rib_spaces{4, 64, 300}}) {
            results.merge(results_of_random_changes(spaces, spaces.positions, 2000));
        }
    });
    EXPECT_EQ(results, (std::set<uint32_t>{RIB_OK, RIB_BAD_PARAMETERS, RIB_NO_ENTRY, RIB_HW_FULL, RIB_VSAN_TCAM_FULL}));
}

} // namespace
} // namespace ribkit::rib
