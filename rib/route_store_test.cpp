// What the RIB's tables are made of: every structure agrees with the routes that are held, whatever was taken, refused
// and given back on the way.
#include "rib/route_store.h"

#include "rib/rib_tables.h"
#include "rib_codes.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include "testing/literal_updates.h"
#include "testing/random_routes.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <set>

namespace ribkit::rib {
namespace {

protocol::fcurt_response update(rib_tables &rib, uint32_t vsan, std::vector<model::route_change> changes) {
    return rib.take_update(testing::literal_update({RIB_CLIENT_FSPF, vsan, RIB_OPER_UPDATE_RSP, std::move(changes)}));
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

/// Every position that a segment hands out has a record, which knows it; no record stands in two places.
void expect_positions(const route_store &store, const rib_spaces &spaces) {
    const position_space &positions = store.positions();
    std::map<uint32_t, uint32_t> standing;
    std::set<const route_record *> records;
    for (uint32_t p = 0; p < spaces.positions; p++) {
        if (const route_record *record = positions.at(p); record != nullptr) {
            ASSERT_EQ(record->position, p);
            ASSERT_TRUE(records.insert(record).second);
            ASSERT_EQ(positions.owner(p), store.vsans().at(record->vsan).segment);
            standing[record->vsan]++;
        }
    }
    std::set<uint32_t> segments;
    for (const auto &[id, vsan] : store.vsans()) {
        ASSERT_TRUE(segments.insert(vsan.segment).second);
        ASSERT_EQ(vsan.routes, standing[id]);
        ASSERT_EQ(vsan.routes, positions.used(vsan.segment));
    }
}

void expect_sound(const rib_tables &rib, const rib_spaces &spaces) {
    const expected_use expected = use_of(rib.routes());
    const route_store &store = rib.store();
    const rib_memory memory = store.memory();
    ASSERT_EQ(memory.routes, expected.routes);
    ASSERT_EQ(memory.path_units, expected.units);
    ASSERT_EQ(memory.positions, expected.routes);
    ASSERT_EQ(store.ports(), expected.ports.size());
    for (const uint32_t port : expected.ports) {
        ASSERT_TRUE(store.uses_port(port));
    }
    ASSERT_EQ(store.vsans().size(), expected.domains.size());
    for (const auto &[id, domains] : expected.domains) {
        ASSERT_EQ(store.vsans().at(id).domains.count(), domains.size());
        for (const uint32_t domain : domains) {
            ASSERT_TRUE(store.vsans().at(id).domains.has(static_cast<uint8_t>(domain)));
        }
    }
    expect_positions(store, spaces);
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
    rib_tables rib(spaces);
    model::held_routes model;
    std::set<uint32_t> results;
    for (int i = 0; i < count; i++) {
        const uint32_t vsan = 1 + testing::below(random, 5);
        const model::route_change change = random_change(random);
        const protocol::fcurt_response response = update(rib, vsan, {change});
        results.insert(response.result);
        EXPECT_EQ(response.accepted, response.result == RIB_OK ? 1U : 0U);
        const bool missing = change.action != RIB_ACTION_ADD && !model.contains({vsan, change.to});
        EXPECT_EQ(response.result == RIB_NO_ENTRY, missing);
        if (response.result == RIB_OK) {
            follow(model, vsan, change);
        }
        expect_same(rib.routes(), model);
        expect_sound(rib, spaces);
        if (::testing::Test::HasFailure()) {
            return results;
        }
    }
    while (!model.empty()) {
        const model::route_key key = model.begin()->first;
        EXPECT_EQ(update(rib, key.vsan, {{RIB_ACTION_DELETE, key.to, {}}}).result, RIB_OK);
        model.erase(key);
        expect_sound(rib, spaces);
    }
    const rib_memory left = rib.store().memory();
    EXPECT_EQ(left.routes + left.path_units + left.positions + rib.store().ports(), 0U);
    EXPECT_TRUE(rib.store().vsans().empty());
    return results;
}

TEST(route_store, random_changes_leave_every_structure_in_agreement) {
    const auto results = results_of_random_changes({}, 1, 600);
    EXPECT_EQ(results, (std::set<uint32_t>{RIB_OK, RIB_BAD_PARAMETERS, RIB_NO_ENTRY}));
}

TEST(route_store, whatever_is_full_refuses_a_route_whole) {
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

TEST(route_store, a_full_segment_grows_into_its_neighbours_and_their_routes_move) {
    const rib_spaces spaces{3, 24, 64};
    rib_tables rib(spaces, {true, true});
    const std::string text = testing::printed_by([&] {
        update(rib, 1, domains_added(1, 2));
        update(rib, 2, domains_added(1, 2));
        update(rib, 3, domains_added(1, 2));
        update(rib, 3, {{RIB_ACTION_DELETE, domain(1), {}}, {RIB_ACTION_DELETE, domain(2), {}}});
        EXPECT_EQ(update(rib, 2, domains_added(3, 16)).result, RIB_OK);
    });
    EXPECT_NE(text.find("RIB moves vsan 3 fc id 0x020000 mask 0xff0000 from position 0x00011 to 0x00010\n"),
              std::string::npos);
    EXPECT_NE(text.find("RIB hardware positions 0x00010 to 0x00017 now belong to segment 1\n"), std::string::npos)
        << text;
    expect_sound(rib, spaces);
    EXPECT_EQ(rib.held(2), 16U);
    EXPECT_EQ(rib.store().positions().owner(23), 1U);
}

TEST(route_store, a_full_space_is_one_answer_and_has_room_again_after_a_delete) {
    const rib_spaces spaces{1, 8, 64};
    rib_tables rib(spaces, {false, true});
    std::string text = testing::printed_by([&] {
        EXPECT_EQ(update(rib, 1, domains_added(1, 12)),
                  (protocol::fcurt_response{RIB_FAILED, RIB_OPER_UPDATE_RSP, 1, 8, 8}));
    });
    EXPECT_NE(text.find("Error! cont_mv_up"), std::string::npos);
    EXPECT_EQ(text.find("Error! cont_mv_up"), text.rfind("Error! cont_mv_up")) << "asked once, not four times";
    const auto swap = [&] {
        return update(rib, 1, {{RIB_ACTION_DELETE, domain(1), {}}, {RIB_ACTION_ADD, domain(12), one_hop}});
    };
    EXPECT_EQ(swap().result, RIB_OK);
    expect_sound(rib, spaces);
}

TEST(route_store, a_route_without_room_for_more_hops_stays_as_it_is) {
    const rib_spaces spaces{1, 8, 16};
    rib_tables rib(spaces);
    model::route wide = one_hop;
    wide.hops.assign(16, one_hop.hops[0]);
    EXPECT_EQ(update(rib, 1, {{RIB_ACTION_ADD, domain(1), one_hop}}).result, RIB_OK);
    EXPECT_EQ(update(rib, 1, {{RIB_ACTION_ADD, domain(1), wide}}),
              (protocol::fcurt_response{RIB_HW_FULL, RIB_OPER_UPDATE_RSP, 1, 0, 1}));
    EXPECT_EQ(rib.routes().at({1, domain(1)}).what, one_hop);
    expect_sound(rib, spaces);
}

TEST(route_store, a_route_for_which_memory_fails_is_not_there) {
    const rib_spaces spaces{1, 8, 64};
    const auto add = testing::literal_update({RIB_CLIENT_FSPF, 1, RIB_OPER_UPDATE_RSP, domains_added(1, 1)});
    bool happened = true;
    uint32_t refused = 0; // not always: the buddy allocator has a way that needs less
    for (size_t n = 1; happened; n++) {
        rib_tables rib(spaces);
        protocol::fcurt_response response{};
        try {
            const testing::failing_allocation failing(n, testing::failing_allocation::how::onwards);
            response = rib.take_update(add);
            happened = failing.happened();
        } catch (const std::bad_alloc &) {
            response.result = RIB_OUT_OF_MEMORY;
        }
        refused += response.result == RIB_OUT_OF_MEMORY ? 1 : 0;
        EXPECT_TRUE(response.result == RIB_OK || response.result == RIB_OUT_OF_MEMORY) << n;
        EXPECT_EQ(rib.routes().size(), response.result == RIB_OK ? 1U : 0U) << n;
        expect_sound(rib, spaces);
        EXPECT_EQ(update(rib, 1, domains_added(2, 2)).result, RIB_OK);
        expect_sound(rib, spaces);
    }
    EXPECT_GE(refused, 4U);
}

protocol::fcurt_response update_of(rib_tables &rib, uint32_t uuid, uint32_t vsan, const model::route_change &change) {
    return rib.take_update(testing::literal_update({uuid, vsan, RIB_OPER_UPDATE_RSP, {change}}));
}

// The model counts what each client has; whoever adds a route last has it.
TEST(route_store, a_client_has_no_more_routes_than_its_quota) {
    const std::map<uint32_t, uint32_t> quotas{{RIB_CLIENT_FSPF, 5}, {RIB_CLIENT_MCAST, 0}, {RIB_CLIENT_TEST, 2}};
    constexpr uint32_t clients[] = {RIB_CLIENT_FSPF, RIB_CLIENT_MCAST, RIB_CLIENT_TEST, RIB_CLIENT_RSCN};
    rib_tables rib({}, {}, quotas);
    std::map<model::route_key, uint32_t> model;
    std::mt19937 random(1);
    std::map<uint32_t, uint32_t> refused;
    for (int i = 0; i < 20000; i++) {
        const uint32_t uuid = clients[testing::below(random, 4)];
        const model::route_key key{1 + testing::below(random, 3),
                                   {(1 + testing::below(random, 15)) << 16, RIB_MASK_DOMAIN}};
        const bool adds = testing::below(random, 3) != 0;
        const auto most = quotas.find(uuid);
        const auto has = std::count_if(model.begin(), model.end(), [&](const auto &one) { return one.second == uuid; });
        const bool room = most == quotas.end() || static_cast<uint32_t>(has) < most->second ||
                          (model.contains(key) && model.at(key) == uuid);
        uint32_t expected = RIB_OK;
        if (adds) {
            expected = room ? RIB_OK : RIB_HW_FULL;
        } else if (!model.contains(key)) {
            expected = RIB_NO_ENTRY;
        }
        const auto response =
            update_of(rib, uuid, key.vsan, {adds ? RIB_ACTION_ADD : RIB_ACTION_DELETE, key.to, one_hop});
        ASSERT_EQ(response.result, expected) << i;
        refused[uuid] += expected == RIB_HW_FULL ? 1 : 0;
        if (expected == RIB_OK && adds) {
            model[key] = uuid;
        } else if (expected == RIB_OK) {
            model.erase(key);
        }
    }
    const model::held_routes held = rib.routes();
    ASSERT_EQ(held.size(), model.size());
    for (const auto &[key, uuid] : model) {
        ASSERT_EQ(held.at(key).uuid, uuid);
    }
    EXPECT_GT(refused[RIB_CLIENT_FSPF], 100U);
    EXPECT_GT(refused[RIB_CLIENT_TEST], 100U);
    EXPECT_EQ(refused[RIB_CLIENT_RSCN], 0U);
}

// Interfaces without end, each in a group of its own: what they cost is in proportion to the messages.
TEST(route_store, interfaces_cost_as_much_as_they_say_and_nothing_when_they_are_gone) {
    constexpr uint32_t routes = 200;
    rib_tables rib;
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
        EXPECT_EQ(rib.store().ports(), routes * RIBKIT_MOST_HOPS);
        EXPECT_LT(mallinfo2().uordblks - before, sent * 12);
        for (uint32_t i = 1; i <= routes; i++) {
            update(rib, 1, {{RIB_ACTION_DELETE, domain(i), {}}});
        }
        EXPECT_EQ(rib.store().ports(), 0U);
        EXPECT_LT(mallinfo2().uordblks - before, sent * 3 / 2); // what the buddy allocator keeps for the next ones
    }
}

TEST(route_store, vsans_beyond_the_segments_are_refused_until_one_is_empty) {
    rib_tables rib({2, 16, 64});
    EXPECT_EQ(update(rib, 7, domains_added(1, 1)).result, RIB_OK);
    EXPECT_EQ(update(rib, 4095, domains_added(1, 1)).result, RIB_OK);
    EXPECT_EQ(update(rib, 8, domains_added(1, 1)),
              (protocol::fcurt_response{RIB_VSAN_TCAM_FULL, RIB_OPER_UPDATE_RSP, 8, 0, 0}));
    EXPECT_EQ(update(rib, 7, {{RIB_ACTION_DELETE, domain(1), {}}}).result, RIB_OK);
    EXPECT_EQ(update(rib, 8, domains_added(1, 1)).result, RIB_OK);
}

TEST(route_store, the_defaults_hold_every_domain_with_all_its_hops) {
    rib_tables rib;
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
    EXPECT_EQ(rib.store().memory().path_units, 16U * 239U * 16U);
}

TEST(route_store, everything_is_displayed) {
    rib_tables rib;
    update(rib, 20, domains_added(2, 3));
    const std::string text = testing::printed_by([&] { rib.store().show(); });
    for (const char *line : {"Chunk size 128", "Block Size 1\t\t0\t\t2\n", "Total 4096, block size 8, # segments 16\n",
                             "0: VSAN 20     \t0c 00 ", "0x010100NN     \t02 00 "}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
    }
}

} // namespace
} // namespace ribkit::rib
