// Every type of query of the three tables, against tables that are known; and batches while the tables change.
#include "rib/service/route_queries.h"

#include "protocol/query_kinds.h"
#include "protocol/route_changes.h"
#include "protocol/route_messages.h"
#include "rib_check.h"
#include "ribkit_rib.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

namespace ribkit::rib {
namespace {

class dice {
  public:
    explicit dice(uint32_t seed) : random_(seed) {}
    uint32_t below(uint32_t end) { return static_cast<uint32_t>(random_() % end); }
    bool coin() { return below(2) == 0; }

  private:
    std::mt19937 random_;
};

constexpr uint32_t fspf = RIB_CLIENT_FSPF;
constexpr uint32_t other = 200;
constexpr uint32_t most = 1000;

void change_unicast(state &rib, uint32_t action, uint32_t client, const model::route_key &key, uint32_t hops = 1) {
    const std::vector<model::next_hop> ways(hops, {0x01010001, 2});
    const std::vector<model::unicast_change> changes{{action, key.to, {client, 0, ways}}};
    rib.update<unicast>({client, key.vsan, RIB_OPER_UPDATE, {}, false, 1000}, changes);
}

void change_multicast(state &rib, uint32_t action, const model::multicast_key &key,
                      std::vector<uint32_t> members = {4}) {
    const std::vector<model::multicast_change> changes{{action, key.to, {members}}};
    rib.update<multicast>({RIB_CLIENT_MCAST, key.vsan, RIB_OPER_UPDATE, {}, false, 1000}, changes);
}

void change_label(state &rib, uint32_t action, const model::label_key &key) {
    const std::vector<uint32_t> sources(key.type == RIB_ROUTE_SRC_LABEL ? 1 : 0, key.source);
    const std::vector<uint32_t> hop{0x00018000, 0x01010001, 0x7140};
    const std::vector<model::label_change> changes{{action, key, {sources, hop}}};
    rib.update<label>({RIB_CLIENT_FCMPLS, key.vsan, RIB_OPER_UPDATE, {}, false, 1000}, changes);
}

// --- Unicast

struct unicast_found {
    model::route_key key;
    uint32_t owner;
    bool active;

    bool operator==(const unicast_found &) const = default;
    bool operator<(const unicast_found &to) const { return std::tie(key, owner) < std::tie(to.key, to.owner); }
};

std::vector<unicast_found> routes_in(const reply &answer) {
    std::vector<unicast_found> found;
    EXPECT_EQ(answer.result, RIB_OK);
    EXPECT_EQ(rib_check_fcurt_update(answer.message.data(), answer.message.size(), nullptr), RIB_OK);
    const protocol::update_view update(answer.message.data());
    for (const auto route : update.list<"route">()) {
        EXPECT_EQ(route.get<"action">(), RIB_ACTION_ADD);
        found.push_back({{update.get<"vsan">(), protocol::destination_in(route)},
                         update.get<"uuid">(),
                         (route.get<"flag">() & RIB_FLAG_ACTIVE) != 0});
    }
    return found;
}

std::vector<unicast_found> entries_in(const reply &answer) {
    std::vector<unicast_found> found;
    EXPECT_EQ(answer.result, RIB_OK);
    EXPECT_EQ(rib_check_fcurt_info(answer.message.data(), answer.message.size(), nullptr), RIB_OK);
    for (const auto route : codec::view<wire::fcurt_info>(answer.message.data()).list<"route">()) {
        found.push_back({{route.get<"vsan">(), {route.get<"fcid">(), route.get<"mask">()}},
                         route.get<"uuid">(),
                         (route.get<"flag">() & RIB_FLAG_ACTIVE) != 0});
    }
    return found;
}

/// All that a type of query finds from a place on, in answers of at most `batch`; `between` is called between them.
template <class Between>
std::vector<unicast_found> read_all(const state &rib, protocol::unicast_query query, uint32_t batch, Between between) {
    std::vector<unicast_found> all;
    query.requested = batch;
    const auto *kind = protocol::find_kind(protocol::unicast_kinds, query.type);
    while (true) {
        const reply answer = answer_routes(rib, query, kind->in_envelope);
        const auto part = kind->form == protocol::answer_form::entries ? entries_in(answer) : routes_in(answer);
        EXPECT_LE(part.size(), batch);
        if (part.empty() || query.from.vsan > RIB_LAST_VSAN) {
            return all;
        }
        all.insert(all.end(), part.begin(), part.end());
        const auto next = protocol::place_after({part.back().key, part.back().owner});
        query.owner = next.owner;
        if (kind->keys == protocol::chosen_keys::holding) {
            query.from.to.mask = next.key.to.mask;
        } else {
            query.from = next.key;
        }
        if (kind->keys == protocol::chosen_keys::exact && next.owner == 0) {
            return all;
        }
        between();
    }
}

std::vector<unicast_found> read_all(const state &rib, uint32_t type, const model::route_key &from = {0, {0, 0}}) {
    return read_all(rib, {fspf, type, 0, from, 0}, most, [] {});
}

/// Three destinations in each of two VSANs; FSPF has all of them, another client those of VSAN 2, at a larger distance.
struct small_tables : ::testing::Test {
    small_tables() {
        for (const uint32_t vsan : {1U, 2U}) {
            for (const model::destination &to : {wide, middle, narrow}) {
                change_unicast(rib, RIB_ACTION_ADD, fspf, {vsan, to});
            }
        }
        for (const model::destination &to : {wide, middle, narrow}) {
            change_unicast(rib, RIB_ACTION_ADD, other, {2, to}, 0);
        }
    }
    static constexpr model::destination wide{0x020000, 0xff0000};
    static constexpr model::destination middle{0x020300, 0xffff00};
    static constexpr model::destination narrow{0x020304, 0xffffff};
    state rib;
};

TEST_F(small_tables, all_routes_of_all_owners_come_in_the_order_of_the_keys) {
    for (const uint32_t type : {0x1U, 0x10U, 0x4000U, 0x100000U}) {
        const auto all = read_all(rib, type);
        EXPECT_EQ(all.size(), 9U) << type;
        EXPECT_TRUE(std::is_sorted(all.begin(), all.end())) << type;
        EXPECT_EQ(all[3], (unicast_found{{2, wide}, fspf, true})) << type;
        EXPECT_EQ(all[4], (unicast_found{{2, wide}, other, false})) << type;
    }
}

TEST_F(small_tables, active_routes_are_one_a_destination) {
    for (const uint32_t type : {0x4U, 0x400000U}) {
        const auto all = read_all(rib, type);
        EXPECT_EQ(all.size(), 6U) << type;
        EXPECT_TRUE(std::all_of(all.begin(), all.end(), [](const auto &one) { return one.active; }));
    }
    EXPECT_EQ(read_all(rib, 0x400, {2, {0, 0}}).size(), 3U);
    EXPECT_EQ(read_all(rib, 0x400, {3, {0, 0}}).size(), 0U);
}

TEST_F(small_tables, mine_are_the_asker_s) {
    for (const uint32_t type : {0x8U, 0x8000U, 0x800000U}) {
        EXPECT_EQ(read_all(rib, type).size(), 6U) << type;
        const auto others = read_all(rib, {other, type, 0, {0, {0, 0}}, 0}, most, [] {});
        EXPECT_EQ(others.size(), 3U) << type;
        EXPECT_FALSE(others[0].active);
    }
}

TEST_F(small_tables, those_of_a_vsan_end_with_it) {
    for (const uint32_t type : {0x100U, 0x1000U}) {
        EXPECT_EQ(read_all(rib, type, {1, {0, 0}}).size(), 3U) << type;
        EXPECT_EQ(read_all(rib, type, {1, middle}).size(), 2U) << type;
        EXPECT_EQ(read_all(rib, type, {2, {0, 0}}).size(), 6U) << type;
    }
}

TEST_F(small_tables, a_matched_route_holds_the_address) {
    for (const uint32_t type : {0x200U, 0x2000U}) {
        const auto found = read_all(rib, type, {1, {0x020304, 0}});
        ASSERT_EQ(found.size(), 3U) << type;
        EXPECT_EQ(found[0].key.to, wide);
        EXPECT_EQ(found[2].key.to, narrow);
        EXPECT_EQ(read_all(rib, type, {1, {0x020399, 0}}).size(), 2U);
        EXPECT_EQ(read_all(rib, {fspf, type, 0, {2, {0x020304, 0}}, 0}, 1, [] {}).size(), 6U);
        EXPECT_TRUE(read_all(rib, type, {1, {0x030304, 0}}).empty());
    }
}

TEST_F(small_tables, one_key_is_just_that) {
    EXPECT_EQ(read_all(rib, 0x800, {2, middle}).size(), 2U);
    EXPECT_EQ(read_all(rib, 0x800, {1, middle}).size(), 1U);
    EXPECT_TRUE(read_all(rib, 0x800, {1, {0x020300, 0xff0000}}).empty());
}

TEST_F(small_tables, an_entry_with_hops_is_alone) {
    const protocol::unicast_query query{fspf, 0x100000, most, {1, {0, 0}}, 0};
    const reply first = answer_routes(rib, query, false);
    ASSERT_EQ(entries_in(first).size(), 1U);
    const auto entry = codec::view<wire::fcurt_info>(first.message.data()).list<"route">()[0];
    EXPECT_EQ(entry.get<"n_hop">(), 1U);
    EXPECT_EQ(entry.get<"cost">(), fspf);
    change_unicast(rib, RIB_ACTION_ADD, other, {5, wide}, 0);
    change_unicast(rib, RIB_ACTION_ADD, other, {5, middle}, 0);
    EXPECT_EQ(entries_in(answer_routes(rib, {fspf, 0x100000, most, {5, {0, 0}}, 0}, false)).size(), 2U);
}

TEST_F(small_tables, what_is_not_answered_says_why) {
    const auto result = [&](uint32_t type, bool in_envelope) {
        return answer_routes(rib, protocol::unicast_query{fspf, type, most, {1, {0, 0}}, 0}, in_envelope).result;
    };
    for (const uint32_t type : {0x40U, 0x80U}) {
        EXPECT_EQ(result(type, true), RIB_NO_DATABASE);
    }
    for (const uint32_t type : {0x10000U, 0x20000U, 0x0U, 0x3U, 0x1000000U}) {
        EXPECT_EQ(result(type, true), RIB_NOT_SUPPORTED);
    }
    for (const uint32_t type : {0x1000U, 0x2000U, 0x4000U, 0x8000U}) {
        EXPECT_EQ(result(type, false), RIB_BAD_PARAMETERS);
        EXPECT_EQ(result(type, true), RIB_OK);
    }
}

TEST_F(small_tables, none_wanted_are_none) {
    EXPECT_TRUE(routes_in(answer_routes(rib, {fspf, 0x1, 0, {0, {0, 0}}, 0}, false)).empty());
    EXPECT_TRUE(entries_in(answer_routes(rib, {fspf, 0x100000, 0, {0, {0, 0}}, 0}, false)).empty());
}

TEST_F(small_tables, versions_of_each_client_and_vsan) {
    const std::vector<uint32_t> three{7, 8, 9};
    const std::vector<model::unicast_change> none;
    for (const auto &[client, vsan] : {std::pair(fspf, 1U), {fspf, 2}, {other, 1}}) {
        EXPECT_EQ(rib.update<unicast>({client, vsan, RIB_OPER_ADD_VERSION, three, false, 1}, none).result, RIB_OK);
    }
    for (const uint32_t type : {0x2U, 0x20U, 0x200000U}) {
        std::vector<std::pair<uint32_t, uint32_t>> found;
        protocol::unicast_query query{fspf, type, 2, {0, {0, 0}}, 0};
        for (int i = 0; i < 4; i++) {
            const reply answer = answer_routes(rib, query, false);
            ASSERT_EQ(answer.result, RIB_OK);
            const bool shown = type == 0x200000;
            const auto words = [&](auto message) {
                found.emplace_back(message.template get<"uuid">(), message.template get<"vsan">());
                EXPECT_EQ(message.template get<"n_version">(), found.back().first == 0 ? 0U : 2U);
            };
            shown ? words(codec::view<wire::topo>(answer.message.data()))
                  : words(protocol::update_view(answer.message.data()));
            query.owner = found.back().first;
            query.from.vsan = found.back().second + 1;
        }
        EXPECT_EQ(found, (std::vector<std::pair<uint32_t, uint32_t>>{{fspf, 1}, {fspf, 2}, {other, 1}, {0, 0}}));
    }
}

TEST(route_queries, routes_that_stay_are_met_once_while_others_change) {
    dice random(13);
    const auto any_key = [&] { return model::route_key{1 + random.below(3), {(random.below(40)) << 16, 0xff0000}}; };
    for (const uint32_t type : {0x1U, 0x8U, 0x4U, 0x100000U}) {
        state rib;
        std::set<unicast_found> staying;
        for (int i = 0; i < 150; i++) {
            const unicast_found one{any_key(), random.coin() ? fspf : other, false};
            change_unicast(rib, RIB_ACTION_ADD, one.owner, one.key, random.below(2));
            staying.insert(one);
        }
        const auto disturb = [&] {
            const model::route_key key = any_key();
            for (const uint32_t owner : {fspf, other, 300U}) {
                if (!staying.contains({key, owner, false})) {
                    change_unicast(rib, random.coin() ? RIB_ACTION_ADD : RIB_ACTION_DELETE, owner, key,
                                   random.below(2));
                }
            }
        };
        std::map<unicast_found, uint32_t> met;
        for (const auto &one : read_all(rib, {fspf, type, 0, {0, {0, 0}}, 0}, 3, disturb)) {
            met[{one.key, one.owner, false}]++;
        }
        for (const auto &[one, times] : met) {
            EXPECT_EQ(times, 1U) << one.key.vsan << ' ' << one.key.to.fcid << ' ' << one.owner;
        }
        for (const auto &one : staying) { // FSPF's are active, and mine
            EXPECT_TRUE((type != 0x1 && type != 0x100000 && one.owner != fspf) || met.contains(one)) << type;
        }
    }
}

// --- Multicast

std::vector<model::multicast_key> groups_in(const reply &answer, bool entries) {
    std::vector<model::multicast_key> found;
    EXPECT_EQ(answer.result, RIB_OK);
    const uint8_t *bytes = answer.message.data();
    const auto size = static_cast<uint32_t>(answer.message.size());
    if (entries) {
        EXPECT_EQ(rib_check_fcmrt_info(bytes, size, nullptr), RIB_OK);
        for (const auto one : codec::view<wire::fcmrt_info>(bytes).list<"route">()) {
            EXPECT_EQ(one.get<"uuid">(), RIB_CLIENT_MCAST);
            found.push_back({one.get<"vsan">(), {one.get<"fcid">(), one.get<"mask">()}});
        }
        return found;
    }
    EXPECT_EQ(rib_check_fcmrt_update(bytes, size, nullptr), RIB_OK);
    const codec::view<wire::fcmrt_update> update(bytes);
    for (const auto one : update.list<"route">()) {
        EXPECT_EQ(one.get<"n_intf">(), 1U);
        found.push_back({update.get<"vsan">(), {one.get<"fcid">(), one.get<"mask">()}});
    }
    return found;
}

TEST(route_queries, multicast_types) {
    state rib;
    const std::vector<model::multicast_key> keys{
        {1, {0, 0xffffff}}, {1, {0x010203, 0xffffff}}, {2, {0x010203, 0xffffff}}};
    for (const auto &key : keys) {
        change_multicast(rib, RIB_ACTION_ADD, key);
    }
    const auto ask = [&](uint32_t type, const model::multicast_key &from, uint32_t wanted = most) {
        return answer_routes(rib, protocol::multicast_query{14, type, wanted, from}, (type & 0x70) != 0);
    };
    for (const uint32_t type : {0x1U, 0x10U}) { // all of one VSAN
        EXPECT_EQ(groups_in(ask(type, {0, {0, 0}}), false), (std::vector{keys[0], keys[1]})) << type;
        EXPECT_EQ(groups_in(ask(type, model::key_after(keys[1])), false), (std::vector{keys[2]})) << type;
    }
    for (const uint32_t type : {0x2U, 0x20U}) {
        EXPECT_EQ(groups_in(ask(type, {1, {0, 0}}), false).size(), 2U);
        EXPECT_TRUE(groups_in(ask(type, model::key_after(keys[1])), false).empty());
    }
    for (const uint32_t type : {0x4U, 0x40U}) {
        EXPECT_EQ(groups_in(ask(type, keys[2]), false), (std::vector{keys[2]}));
        EXPECT_TRUE(groups_in(ask(type, {2, {0x010204, 0xffffff}}), false).empty());
    }
    EXPECT_EQ(groups_in(ask(0x100, {0, {0, 0}}), true), (std::vector{keys[0]}));
    EXPECT_EQ(groups_in(ask(0x100, model::key_after(keys[1])), true), (std::vector{keys[2]}));
    EXPECT_EQ(ask(0x8, {0, {0, 0}}).result, RIB_NO_DATABASE);
    EXPECT_EQ(ask(0x200, {0, {0, 0}}).result, RIB_NOT_SUPPORTED);
    EXPECT_EQ(answer_routes(rib, protocol::multicast_query{14, 0x20, 1, {1, {0, 0}}}, false).result,
              RIB_BAD_PARAMETERS);
}

// --- Label

std::vector<model::label_key> labels_in(const reply &answer, bool entries) {
    std::vector<model::label_key> found;
    EXPECT_EQ(answer.result, RIB_OK);
    const uint8_t *bytes = answer.message.data();
    const auto size = static_cast<uint32_t>(answer.message.size());
    const auto read = [&](auto one, uint32_t source) {
        model::label_key key{one.template get<"vsan">(),
                             one.template get<"type">(),
                             source,
                             {one.template get<"fcid">(), one.template get<"mask">()}};
        for (const auto match : one.template list<"match">()) {
            key.match[key.match_count++] = match.template get<"label">();
        }
        for (const auto hop : one.template list<"intf">()) {
            EXPECT_EQ(hop.template get<"intf">(), 0x01010001U);
            EXPECT_EQ((*hop.template list<"push">().begin()).template get<"label">(), 0x7140U);
        }
        found.push_back(key);
    };
    if (entries) {
        EXPECT_EQ(rib_check_fclrt_info(bytes, size, nullptr), RIB_OK);
        for (const auto one : codec::view<wire::fclrt_info>(bytes).list<"route">()) {
            read(one, one.get<"src">());
        }
    } else {
        EXPECT_EQ(rib_check_fclrt_update(bytes, size, nullptr), RIB_OK);
        for (const auto one : codec::view<wire::fclrt_update>(bytes).list<"route">()) {
            read(one, one.get<"n_src">() == 0 ? 0 : one.list<"src">()[0].get<"intf">());
        }
    }
    return found;
}

TEST(route_queries, a_route_that_is_larger_than_an_answer_has_one_for_itself) {
    state rib({.spaces = {16, 4096, 262144}});
    const std::vector<uint32_t> many(RIBKIT_ANSWER_LIMIT / sizeof(uint32_t), 4);
    change_multicast(rib, RIB_ACTION_ADD, {1, {0xff0001, 0xffffff}});
    change_multicast(rib, RIB_ACTION_ADD, {1, {0xff0002, 0xffffff}}, many);
    change_multicast(rib, RIB_ACTION_ADD, {1, {0xff0003, 0xffffff}});
    model::multicast_key next{0, {0, 0}};
    std::vector<size_t> members;
    for (uint32_t count = 1; count != 0;) {
        const reply answer = answer_routes(rib, protocol::multicast_query{fspf, 0x1, most, next}, false);
        ASSERT_EQ(rib_check_fcmrt_update(answer.message.data(), static_cast<uint32_t>(answer.message.size()), nullptr),
                  RIB_OK);
        const codec::view<wire::fcmrt_update> update(answer.message.data());
        count = update.get<"n_route">();
        for (const auto &one : protocol::multicast_changes(update)) {
            members.push_back(one.what.members.size());
            next = model::key_after(model::multicast_key{1, one.to});
        }
    }
    EXPECT_EQ(members, (std::vector<size_t>{1, many.size(), 1}));
    const reply shown =
        answer_routes(rib, protocol::multicast_query{fspf, 0x100, most, {1, {0xff0002, 0xffffff}}}, false);
    EXPECT_GT(shown.message.size(), RIBKIT_ANSWER_LIMIT);
    EXPECT_EQ(rib_check_fcmrt_info(shown.message.data(), static_cast<uint32_t>(shown.message.size()), nullptr), RIB_OK);
}

TEST(route_queries, label_types) {
    state rib;
    const std::vector<model::label_key> keys{
        {1, 1, 0x01010005, {0, 0}, 1, {0x5140, 0}},      {1, 2, 0, {0, 0}, 1, {0x5140, 0}},
        {1, 2, 0, {0, 0}, 2, {0x5040, 0x6140}},          {1, 4, 0, {0x020000, 0xff0000}, 0, {}},
        {1, 4, 0, {0x020000, 0xff0000}, 1, {0x5140, 0}}, {2, 2, 0, {0, 0}, 1, {0x5140, 0}}};
    for (const auto &key : keys) {
        change_label(rib, RIB_ACTION_ADD, key);
    }
    ASSERT_EQ(rib.routes<label>().count(), keys.size());
    const auto ask = [&](uint32_t type, const model::label_key &from) {
        return labels_in(answer_routes(rib, protocol::label_query{13, type, most, from}, false), (type & 0x1000) != 0);
    };
    using expected = std::vector<model::label_key>;
    const std::vector<std::pair<uint32_t, expected>> of_first_vsan{
        {0x1, {keys[0]}}, {0x2, {keys[1]}}, {0x4, {keys[2]}}, {0x8, {keys[3], keys[4]}}};
    for (const auto &[routes, wanted] : of_first_vsan) {
        EXPECT_EQ(ask(0x10 | routes, {1}), wanted) << routes;
        EXPECT_EQ(ask(0x20 | routes, {1}), wanted) << routes;
        EXPECT_EQ(ask(0x40 | routes, wanted.back()), (expected{wanted.back()})) << routes;
    }
    EXPECT_EQ(ask(0x1002, {1}), (expected{keys[1], keys[5]}));
    EXPECT_EQ(ask(0x100f, {0}), keys);
    EXPECT_EQ(ask(0x1f, {0}), expected(keys.begin(), keys.end() - 1));
    EXPECT_EQ(ask(0x1f, model::key_after(keys[4])), (expected{keys[5]}));
    EXPECT_EQ(ask(0x2f, model::key_after(keys[2])), (expected{keys[3], keys[4]}));
    EXPECT_TRUE(ask(0x42, {1, 2, 0, {0, 0}, 1, {0x5141, 0}}).empty());
    EXPECT_EQ(answer_routes(rib, protocol::label_query{13, 0x101, most, {1}}, false).result, RIB_NO_DATABASE);
    EXPECT_EQ(answer_routes(rib, protocol::label_query{13, 0x4f, most, {1}}, false).result, RIB_NOT_SUPPORTED);
}

TEST(route_queries, label_routes_that_stay_are_met_once) {
    dice random(14);
    const auto any_key = [&] { return model::label_key{1 + random.below(2), 2, 0, {0, 0}, 1, {random.below(60), 0}}; };
    state rib;
    std::set<model::label_key> staying;
    for (int i = 0; i < 60; i++) {
        const auto key = any_key();
        change_label(rib, RIB_ACTION_ADD, key);
        staying.insert(key);
    }
    std::map<model::label_key, uint32_t> met;
    for (protocol::label_query query{13, 0x1f, 3, {0}};;) {
        const auto part = labels_in(answer_routes(rib, query, false), false);
        if (part.empty()) {
            break;
        }
        for (const auto &key : part) {
            met[key]++;
        }
        query.from = model::key_after(part.back());
        if (const auto key = any_key(); !staying.contains(key)) {
            change_label(rib, random.coin() ? RIB_ACTION_ADD : RIB_ACTION_DELETE, key);
        }
    }
    for (const auto &key : staying) {
        EXPECT_EQ(met[key], 1U);
    }
}

} // namespace
} // namespace ribkit::rib
