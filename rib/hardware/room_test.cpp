// What the RIB's tables are made of: who gets room, who is refused, and what a route costs.
#include "rib/hardware/room_rig.h"

#include "rib_codes.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include "testing/random_routes.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <random>
#include <set>
#include <sstream>
#include <string>

namespace ribkit::rib {
namespace {

constexpr model::destination domain(uint32_t number) { return {number << 16, RIB_MASK_DOMAIN}; }
const model::route one_hop{500, RIB_FLAG_ACTIVE, {{0x01010001, 2}}};

std::vector<model::route_change> domains_added(uint32_t first, uint32_t last) {
    std::vector<model::route_change> changes;
    for (uint32_t number = first; number <= last; number++) {
        changes.push_back({RIB_ACTION_ADD, domain(number), one_hop});
    }
    return changes;
}

class move_lines final : public effects {
  public:
    void moved(uint32_t vsan, const model::destination &what, uint32_t from, uint32_t to) override {
        lines.insert(joined("vsan ", vsan, " domain ", what.fcid >> 16, " from ", from, " to ", to));
    }
    void owned(uint32_t segment, uint32_t first, uint32_t count) override {
        lines.insert(joined(count, " from ", first, " are of segment ", segment));
    }

    std::set<std::string> lines;

  private:
    template <class... Parts> static std::string joined(const Parts &...parts) {
        std::ostringstream text;
        (text << ... << parts);
        return text.str();
    }
};

TEST(room, a_full_segment_grows_into_its_neighbours_and_their_routes_move) {
    move_lines told;
    state rib({.spaces = {3, 24, 64}, .shows_segments = true}, &told);
    const std::string text = testing::printed_by([&] {
        update(rib, 1, domains_added(1, 2));
        update(rib, 2, domains_added(1, 2));
        update(rib, 3, domains_added(1, 2));
        update(rib, 3, {{RIB_ACTION_DELETE, domain(1), {}}, {RIB_ACTION_DELETE, domain(2), {}}});
        EXPECT_EQ(update(rib, 2, domains_added(3, 16)).result, RIB_OK);
    });
    EXPECT_TRUE(told.lines.contains("vsan 3 domain 2 from 17 to 16"));
    EXPECT_TRUE(told.lines.contains("8 from 16 are of segment 1"));
    EXPECT_NE(text.find("segment"), std::string::npos) << "the allocator shows its table";
    expect_sound(rib);
    EXPECT_EQ(rib.held(table_id::unicast, 2), 16U);
    EXPECT_EQ(rib.behind().positions.owner(23), 1U);
}

TEST(room, a_full_space_is_one_answer_and_has_room_again_after_a_delete) {
    const rib_spaces spaces{1, 8, 64};
    state rib({.spaces = spaces, .shows_segments = true});
    std::string text = testing::printed_by([&] {
        EXPECT_EQ(update(rib, 1, domains_added(1, 12)), (update_answer{RIB_HW_FULL, RIB_OPER_UPDATE_RSP, 1, 8, 8}));
    });
    EXPECT_NE(text.find("Error! cont_mv_up"), std::string::npos);
    EXPECT_EQ(text.find("Error! cont_mv_up"), text.rfind("Error! cont_mv_up")) << "asked once, not four times";
    const auto swap = [&] {
        return update(rib, 1, {{RIB_ACTION_DELETE, domain(1), {}}, {RIB_ACTION_ADD, domain(12), one_hop}});
    };
    EXPECT_EQ(swap().result, RIB_OK);
    expect_sound(rib);
}

TEST(room, a_route_without_room_for_more_hops_stays_as_it_is) {
    const rib_spaces spaces{1, 8, 16};
    state rib({.spaces = spaces});
    model::route wide = one_hop;
    wide.hops.assign(16, one_hop.hops[0]);
    EXPECT_EQ(update(rib, 1, {{RIB_ACTION_ADD, domain(1), one_hop}}).result, RIB_OK);
    EXPECT_EQ(update(rib, 1, {{RIB_ACTION_ADD, domain(1), wide}}),
              (update_answer{RIB_HW_FULL, RIB_OPER_UPDATE_RSP, 1, 0, 1}));
    EXPECT_EQ(active_routes(rib).at({1, domain(1)}).what, one_hop);
    expect_sound(rib);
}

TEST(room, a_route_for_which_memory_fails_is_not_there) {
    const rib_spaces spaces{1, 8, 64};
    const auto add = domains_added(1, 1);
    bool happened = true;
    uint32_t refused = 0; // not always: the buddy allocator has a way that needs less
    for (size_t n = 1; happened; n++) {
        state rib({.spaces = spaces});
        update_answer response{};
        try {
            const testing::failing_allocation failing(n, testing::failing_allocation::how::onwards);
            response = update(rib, 1, add);
            happened = failing.happened();
        } catch (const std::bad_alloc &) {
            response.result = RIB_OUT_OF_MEMORY;
        }
        refused += response.result == RIB_OUT_OF_MEMORY ? 1 : 0;
        EXPECT_TRUE(response.result == RIB_OK || response.result == RIB_OUT_OF_MEMORY) << n;
        EXPECT_EQ(active_routes(rib).size(), response.result == RIB_OK ? 1U : 0U) << n;
        expect_sound(rib);
        EXPECT_EQ(update(rib, 1, domains_added(2, 2)).result, RIB_OK);
        expect_sound(rib);
    }
    EXPECT_GE(refused, 4U);
}

update_answer update_of(state &rib, uint32_t uuid, uint32_t vsan, const model::route_change &change) {
    return testing::send(rib, {uuid, vsan, RIB_OPER_UPDATE_RSP}, testing::unicast_records{change});
}

TEST(room, a_client_has_no_more_routes_than_its_quota) {
    const std::map<uint32_t, uint32_t> quotas{{RIB_CLIENT_FSPF, 5}, {RIB_CLIENT_MCAST, 0}, {RIB_CLIENT_TEST, 2}};
    constexpr uint32_t clients[] = {RIB_CLIENT_FSPF, RIB_CLIENT_MCAST, RIB_CLIENT_TEST, RIB_CLIENT_RSCN};
    state rib({.quotas = quotas});
    std::map<uint32_t, std::set<model::route_key>> model;
    std::mt19937 random(1);
    std::map<uint32_t, uint32_t> refused;
    for (int i = 0; i < 20000; i++) {
        const uint32_t uuid = clients[testing::below(random, 4)];
        const model::route_key key{1 + testing::below(random, 3),
                                   {(1 + testing::below(random, 15)) << 16, RIB_MASK_DOMAIN}};
        std::set<model::route_key> &mine = model[uuid];
        const bool has = mine.contains(key);
        const auto most = quotas.find(uuid);
        const bool room = most == quotas.end() || mine.size() < most->second || has;
        if (testing::below(random, 3) != 0) {
            const auto added = update_of(rib, uuid, key.vsan, {RIB_ACTION_ADD, key.to, one_hop});
            ASSERT_EQ(added.result, room ? RIB_OK : RIB_HW_FULL) << i;
            refused[uuid] += room ? 0 : 1;
            if (room) {
                mine.insert(key);
            }
        } else {
            const bool others = !has && rib.routes<unicast>().all().contains(key);
            const auto removed = update_of(rib, uuid, key.vsan, {RIB_ACTION_DELETE, key.to, one_hop});
            ASSERT_EQ(removed.result, has ? RIB_OK : others ? RIB_OBJECT_OWNED : RIB_NO_ENTRY) << i;
            mine.erase(key);
        }
    }
    for (const auto &[uuid, keys] : model) {
        for (const model::route_key &key : keys) {
            ASSERT_NE(rib.routes<unicast>().find(key, uuid), nullptr);
        }
        ASSERT_EQ(keys.empty() ? 0 : rib.clients().all().at(uuid).held(), keys.size());
    }
    EXPECT_GT(refused[RIB_CLIENT_FSPF], 100U);
    EXPECT_GT(refused[RIB_CLIENT_TEST], 100U);
    EXPECT_EQ(refused[RIB_CLIENT_RSCN], 0U);
}

// Interfaces without end, each in a group of its own: what they cost is in proportion to the messages.
TEST(room, interfaces_cost_as_much_as_they_say_and_nothing_when_they_are_gone) {
    constexpr uint32_t routes = 200;
    state rib;
    const auto wide = [](uint32_t number) {
        model::route what = one_hop;
        what.hops.clear();
        for (uint32_t hop = 0; hop < RIBKIT_MOST_HOPS; hop++) {
            what.hops.push_back({(number * RIBKIT_MOST_HOPS + hop) << 8, 1});
        }
        return what;
    };
    const size_t sent = routes * protocol::fcurt_record_size(RIBKIT_MOST_HOPS);
    const size_t before = mallinfo2().uordblks;
    for (int round = 0; round < 3; round++) {
        for (uint32_t i = 1; i <= routes; i++) {
            update(rib, 1, {{RIB_ACTION_ADD, domain(i), wide(i + routes * static_cast<uint32_t>(round))}});
        }
        EXPECT_EQ(rib.behind().ports.count(), routes * RIBKIT_MOST_HOPS);
        EXPECT_LT(mallinfo2().uordblks - before, sent * 12);
        for (uint32_t i = 1; i <= routes; i++) {
            update(rib, 1, {{RIB_ACTION_DELETE, domain(i), {}}});
        }
        EXPECT_EQ(rib.behind().ports.count(), 0U);
        EXPECT_LT(mallinfo2().uordblks - before, sent * 3 / 2); // what the buddy allocator keeps for the next ones
    }
}

/// Bytes that the program has from the allocator, with what that adds to each; 0 where another one stands in.
size_t allocated() {
    const struct mallinfo2 now = mallinfo2();
    return now.uordblks + now.hblkhd;
}

// As many VSANs and domains as a switch has in a large fabric, all spaces included.
TEST(room, a_route_costs_less_than_200_bytes_at_rest) {
    constexpr uint32_t vsans = 400;
    constexpr uint32_t domains = RIB_LAST_DOMAIN;
    const auto changes = domains_added(1, domains);
    const size_t before = allocated();
    state rib({.spaces = rib_spaces::for_vsans(vsans)});
    for (uint32_t vsan = 1; vsan <= vsans; vsan++) {
        ASSERT_EQ(update(rib, vsan, changes).accepted, domains);
    }
    const size_t held = allocated() - before;
    if (held == 0) {
        GTEST_SKIP() << "the allocator does not count";
    }
    EXPECT_GT(held, vsans * domains * sizeof(table<unicast>::record));
    EXPECT_LT(held, vsans * domains * 200) << static_cast<double>(held) / (vsans * domains) << " bytes a route";
    RecordProperty("bytes_a_route", std::to_string(held / (vsans * domains)));
}

TEST(room, vsans_beyond_the_segments_are_refused_until_one_is_empty) {
    state rib({.spaces = {2, 16, 64}});
    EXPECT_EQ(update(rib, 7, domains_added(1, 1)).result, RIB_OK);
    EXPECT_EQ(update(rib, 4095, domains_added(1, 1)).result, RIB_OK);
    EXPECT_EQ(update(rib, 8, domains_added(1, 1)), (update_answer{RIB_VSAN_TCAM_FULL, RIB_OPER_UPDATE_RSP, 8, 0, 0}));
    EXPECT_EQ(update(rib, 7, {{RIB_ACTION_DELETE, domain(1), {}}}).result, RIB_OK);
    EXPECT_EQ(update(rib, 8, domains_added(1, 1)).result, RIB_OK);
}

TEST(room, the_defaults_hold_every_domain_with_all_its_hops) {
    state rib;
    model::route wide = one_hop;
    wide.hops.assign(16, one_hop.hops[0]);
    for (uint32_t vsan = 1; vsan <= 16; vsan++) {
        auto changes = domains_added(1, 239);
        EXPECT_EQ(update(rib, vsan, changes).result, RIB_OK);
        for (model::route_change &change : changes) {
            change.what = wide;
        }
        EXPECT_EQ(update(rib, vsan, changes).result, RIB_OK);
    }
    EXPECT_EQ(rib.memory().path_units, 16U * 239U * 16U);
}

TEST(room, everything_is_displayed) {
    state rib;
    update(rib, 20, domains_added(2, 3));
    const std::string text = testing::printed_by([&] { rib.show(); });
    for (const char *line : {"Chunk size 128", "Block Size 1\t\t0\t\t2\n", "Total 4096, block size 8, # segments 16\n",
                             "0: VSAN 20     \t0c 00 ", "0x010100NN     \t02 00 "}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
    }
}

} // namespace
} // namespace ribkit::rib
