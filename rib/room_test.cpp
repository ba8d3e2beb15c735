// What the RIB's tables are made of: every structure agrees with the routes that are held, whatever was taken, refused
// and given back on the way.
#include "rib/service/answers.h"

#include "rib/state.h"
#include "rib_codes.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include "testing/random_routes.h"
#include "testing/rib_requests.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <set>
#include <sstream>
#include <string>

namespace ribkit::rib {
namespace {

update_answer update(state &rib, uint32_t vsan, const testing::unicast_records &changes) {
    return testing::send(rib, {RIB_CLIENT_FSPF, vsan, RIB_OPER_UPDATE_RSP}, changes);
}

struct expected_use {
    uint32_t routes = 0, units = 0;
    std::set<uint32_t> ports;
    std::map<uint32_t, std::set<uint32_t>> domains;
};

expected_use use_of(const model::held_routes &model) {
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
void expect_positions(const hardware &behind) {
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

void expect_sound(const state &rib) {
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
    EXPECT_EQ(results, (std::set<uint32_t>{RIB_OK, RIB_BAD_PARAMETERS, RIB_NO_ENTRY, RIB_HW_FULL, RIB_FAILED,
                                           RIB_VSAN_TCAM_FULL}));
}

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
        EXPECT_EQ(update(rib, 1, domains_added(1, 12)), (update_answer{RIB_FAILED, RIB_OPER_UPDATE_RSP, 1, 8, 8}));
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
