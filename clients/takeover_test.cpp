// Clients of all tables: what they want is what the RIB has, whoever restarts and whatever is lost; merging; staying
// registered.
#include "clients/route_client.h"

#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "testing/capture.h"
#include "testing/fault_script.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace ribkit::clients {
namespace {

using namespace std::chrono_literals;

constexpr const char *bus = "local:takeover_test";
constexpr uint32_t vsans = 3;

/// What is different between the tables for these tests: who has such routes, and routes drawn at random.
template <class Table> struct drawn;

template <> struct drawn<unicast_table> {
    using kind = rib::unicast;
    static constexpr uint32_t owner = RIB_CLIENT_CONFIG;
    static model::destination key(uint32_t /*vsan*/, uint32_t number) { return {number << 16, RIB_MASK_DOMAIN}; }
    static model::route route(const model::destination & /*key*/, std::mt19937 &random) {
        return {static_cast<uint32_t>(random() % 3), RIB_FLAG_ACTIVE,
                std::vector<model::next_hop>(random() % 3, {0x01000000, 2})};
    }
};
template <> struct drawn<multicast_table> {
    using kind = rib::multicast;
    static constexpr uint32_t owner = RIB_CLIENT_MCAST;
    static model::destination key(uint32_t /*vsan*/, uint32_t number) { return {0xfffb00 + number, RIB_MASK_PORT}; }
    static model::multicast_route route(const model::destination & /*key*/, std::mt19937 &random) {
        return {std::vector<uint32_t>(1 + random() % 3, 0x01000000 + random() % 3)};
    }
};
template <> struct drawn<label_table> {
    using kind = rib::label;
    static constexpr uint32_t owner = RIB_CLIENT_FCMPLS;
    static model::label_key key(uint32_t vsan, uint32_t number) {
        if (number % 2 == 0) {
            return {vsan, RIB_ROUTE_SRC_LABEL, 0x01000000 + number, {0, 0}, 0, {}};
        }
        return {vsan, RIB_ROUTE_LABEL, 0, {0, 0}, 1, {number << 12, 0}};
    }
    static model::label_route route(const model::label_key &key, std::mt19937 &random) {
        std::vector<uint32_t> hops{static_cast<uint32_t>(random() % 2) << 16, 0x01000001};
        hops.resize(2 + model::pushed_labels(hops[0]), 77U << 12);
        return {key.source == 0 ? std::vector<uint32_t>() : std::vector<uint32_t>{key.source}, hops};
    }
};

template <class Table> wanted_tables<Table> drawn_tables(std::mt19937 &random) {
    wanted_tables<Table> all;
    for (uint32_t vsan = 1; vsan <= vsans; vsan++) {
        own_table<Table> table;
        for (uint32_t number = 1; number <= 8; number++) {
            const auto key = drawn<Table>::key(vsan, number);
            if (random() % 2 == 0) {
                table[key] = drawn<Table>::route(key, random);
            }
        }
        all[vsan] = std::make_shared<const own_table<Table>>(std::move(table));
    }
    return all;
}

/// The owner's routes as the stopped RIB has them.
template <class Table> wanted_tables<Table> held_by(rib::rib_service &rib) {
    rib.stop();
    using kind = typename drawn<Table>::kind;
    std::map<uint32_t, own_table<Table>> all;
    for (uint32_t vsan = 1; vsan <= vsans; vsan++) {
        all[vsan] = {};
    }
    const auto &table = rib.tables().routes<kind>();
    for (const auto &[key, active] : table.all()) {
        if (const auto *mine = table.find(key, drawn<Table>::owner)) {
            const auto what = table.read(*mine);
            auto &kept = all[key.vsan][Table::in_vsan(key)];
            kept = copied(what);
            if constexpr (std::is_same_v<Table, unicast_table>) {
                kept.flag |= RIB_FLAG_ACTIVE;
            }
        }
    }
    wanted_tables<Table> shared;
    for (auto &[vsan, routes] : all) {
        shared[vsan] = std::make_shared<const own_table<Table>>(std::move(routes));
    }
    return shared;
}

template <class Table> void expect_held(rib::rib_service &rib, const wanted_tables<Table> &wanted) {
    const auto held = held_by<Table>(rib);
    ASSERT_EQ(held.size(), wanted.size());
    for (const auto &[vsan, routes] : wanted) {
        EXPECT_TRUE(*held.at(vsan) == *routes) << Table::name << ", VSAN " << vsan;
    }
}

template <class Table> size_t size_of(const wanted_tables<Table> &wanted) {
    size_t routes = 0;
    for (const auto &[vsan, table] : wanted) {
        routes += table->size();
    }
    return routes;
}

template <class Table> class takeover_of : public ::testing::Test {
  protected:
    static constexpr uint32_t owner = drawn<Table>::owner;
    std::mt19937 random{41};

    auto drawn_wishes() { return drawn_tables<Table>(random); }
    void quietly(const std::function<void()> &action) const {
        ::testing::internal::CaptureStderr();
        testing::printed_by(action);
        ::testing::internal::GetCapturedStderr();
    }
};
using tables = ::testing::Types<unicast_table, multicast_table, label_table>;
TYPED_TEST_SUITE(takeover_of, tables);

TYPED_TEST(takeover_of, follows_what_is_wanted) {
    rib::rib_service rib(bus);
    route_client<TypeParam> client(bus, this->owner, {});
    auto wanted = this->drawn_wishes();
    EXPECT_EQ(client.converge(wanted).added, size_of<TypeParam>(wanted));
    for (int round = 0; round < 20; round++) {
        wanted = this->drawn_wishes();
        EXPECT_EQ(client.converge(wanted).refused, 0U);
    }
    EXPECT_EQ(client.converge(wanted).messages, 0U);
    expect_held<TypeParam>(rib, wanted);
}

TYPED_TEST(takeover_of, merging_keeps_what_is_named_and_removes_the_rest) {
    rib::rib_service rib(bus);
    const auto before = this->drawn_wishes();
    const auto wanted = this->drawn_wishes();
    route_client<TypeParam>(bus, this->owner, {}).converge(before);
    size_t gone = 0;
    for (const auto &[vsan, routes] : before) {
        for (const auto &[key, what] : *routes) {
            gone += wanted.at(vsan)->contains(key) ? 0 : 1;
        }
    }
    route_client<TypeParam> client(bus, this->owner, {});
    client.start_over(takeover::merges);
    const client_traffic traffic = client.converge(wanted);
    EXPECT_EQ(traffic.merged, size_of<TypeParam>(wanted));
    EXPECT_EQ(traffic.deleted, gone);
    EXPECT_EQ(traffic.added + traffic.changed + traffic.refused, 0U);
    EXPECT_EQ(traffic.messages, 2 * vsans); // the routes of each VSAN, and the end
    EXPECT_EQ(client.converge(wanted).messages, 0U);
    expect_held<TypeParam>(rib, wanted);
}

// Whatever one merge has marked is marked still when the next one ends.
TYPED_TEST(takeover_of, a_merge_that_went_no_further_leaves_nothing_behind) {
    const auto before = this->drawn_wishes();
    const auto wanted = this->drawn_wishes();
    for (unsigned last = 3; last < 12; last++) { // behind what the RIB says of its start
        rib::rib_service rib(bus);
        this->quietly([&] {
            const testing::fault_script script("clock virtual\ndrop " + std::to_string(last) + "\n");
            route_client<TypeParam> first(bus, this->owner, {.link = {.patience = 1ms}});
            first.start_over(takeover::merges);
            try {
                first.converge(before);
            } catch (const bus::no_answer &) { // it ends there
            }
        });
        route_client<TypeParam> client(bus, this->owner, {});
        client.start_over(takeover::merges);
        EXPECT_EQ(client.converge(wanted).refused, 0U);
        expect_held<TypeParam>(rib, wanted);
    }
}

TYPED_TEST(takeover_of, whatever_is_lost_while_it_merges_the_routes_are_right_in_the_end) {
    for (int round = 0; round < 30; round++) {
        const auto before = this->drawn_wishes();
        const auto wanted = this->drawn_wishes();
        std::string text = "clock virtual\nseed " + std::to_string(round) + "\ndrop one-in 5\ntruncate one-in 9 40\n";
        rib::rib_service rib(bus);
        route_client<TypeParam>(bus, this->owner, {}).converge(before);
        this->quietly([&] {
            const testing::fault_script script(text);
            route_client<TypeParam> client(bus, this->owner, {.link = {.patience = 24h}});
            client.start_over(takeover::merges);
            EXPECT_EQ(client.converge(wanted).refused, 0U);
        });
        expect_held<TypeParam>(rib, wanted);
    }
}

TYPED_TEST(takeover_of, merging_leaves_routes_of_others_alone) {
    rib::rib_service rib(bus);
    const auto theirs = this->drawn_wishes();
    const auto wanted = this->drawn_wishes();
    constexpr bool has_candidates = drawn<TypeParam>::kind::has_candidates;
    route_client<TypeParam>(bus, RIB_CLIENT_TEST, {}).converge(theirs);
    route_client<TypeParam> client(bus, this->owner, {});
    client.start_over(takeover::merges);
    this->quietly([&] { client.converge(wanted); });
    rib.stop();
    for (const auto &[key, active] : rib.tables().template routes<typename drawn<TypeParam>::kind>().all()) {
        EXPECT_TRUE(has_candidates || active->of->uuid == RIB_CLIENT_TEST ||
                    !theirs.at(key.vsan)->contains(TypeParam::in_vsan(key)));
    }
    for (const auto &[vsan, routes] : theirs) {
        for (const auto &[to, what] : *routes) {
            typename TypeParam::key key{};
            if constexpr (std::is_same_v<TypeParam, label_table>) {
                key = to;
            } else {
                key = {vsan, to};
            }
            EXPECT_NE(rib.tables().template routes<typename drawn<TypeParam>::kind>().find(key, RIB_CLIENT_TEST),
                      nullptr);
        }
    }
}

TYPED_TEST(takeover_of, a_rib_that_starts_anew_has_everything_again) {
    auto rib = std::make_unique<rib::rib_service>(bus);
    route_client<TypeParam> client(bus, this->owner, {});
    const auto wanted = this->drawn_wishes();
    client.converge(wanted);
    rib.reset();
    rib = std::make_unique<rib::rib_service>(bus);
    EXPECT_EQ(client.converge(wanted).added, size_of<TypeParam>(wanted));
    expect_held<TypeParam>(*rib, wanted);
}

/// The distance of a client as the RIB has it; none where it has not registered.
std::optional<uint32_t> distance_in(const rib::rib_service &stopped, uint32_t client) {
    const auto &all = stopped.tables().clients();
    return all.distance(client) == model::default_distance(client) ? std::nullopt : std::optional(all.distance(client));
}

TEST(route_client, registers_before_it_sends_and_again_with_a_rib_that_starts_anew) {
    std::mt19937 random(43);
    const auto wanted = drawn_tables<unicast_table>(random);
    auto rib = std::make_unique<rib::rib_service>(bus);
    unicast_client client(bus, RIB_CLIENT_CONFIG, {.name = "static", .distance = 7});
    client.converge(wanted);
    rib = nullptr;
    rib = std::make_unique<rib::rib_service>(bus);
    client.converge(wanted);
    rib->stop();
    EXPECT_EQ(distance_in(*rib, RIB_CLIENT_CONFIG), 7U);
}

TEST(route_client, registers_every_ten_seconds_and_with_a_new_distance_at_once) {
    const testing::fault_script script("clock virtual\n");
    std::mt19937 random(44);
    const auto wanted = drawn_tables<unicast_table>(random);
    rib::rib_service rib(bus);
    unicast_client client(bus, RIB_CLIENT_CONFIG, {.name = "static", .distance = 7});
    client.converge(wanted);
    EXPECT_EQ(client.converge(wanted).messages, 0U);
    client.set_distance(7);
    EXPECT_EQ(client.converge(wanted).messages, 0U);
    client.set_distance(8);
    EXPECT_EQ(client.converge(wanted).messages, 1U);
    EXPECT_FALSE(client.rib_started(35s));
    EXPECT_EQ(client.converge(wanted).messages, 3U); // while it waited
    rib.stop();
    EXPECT_EQ(distance_in(rib, RIB_CLIENT_CONFIG), 8U);
}

TEST(route_client, a_registration_that_is_lost_is_repeated) {
    const testing::fault_script script("clock virtual\ndrop 3\ndrop 5\n"); // behind what the RIB says of its start
    std::mt19937 random(45);
    rib::rib_service rib(bus);
    unicast_client client(bus, RIB_CLIENT_CONFIG, {.link = {.patience = 1h}, .name = "static", .distance = 7});
    ::testing::internal::CaptureStderr();
    testing::printed_by([&] { client.converge(drawn_tables<unicast_table>(random)); });
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("asking again"), std::string::npos);
    rib.stop();
    EXPECT_EQ(distance_in(rib, RIB_CLIENT_CONFIG), 7U);
}

TEST(route_client, of_two_owners_of_a_destination_the_nearer_is_active_and_the_other_takes_its_place) {
    const model::destination to{0x020000, RIB_MASK_DOMAIN};
    const auto wants = [&](uint32_t metric) {
        return wanted_tables<unicast_table>{
            {1, std::make_shared<model::route_table>(model::route_table{{to, {metric, RIB_FLAG_ACTIVE, {}}}})}};
    };
    const auto nothing = wanted_tables<unicast_table>{{1, std::make_shared<model::route_table>()}};
    rib::rib_service rib(bus);
    unicast_client fspf(bus, RIB_CLIENT_FSPF, {.name = "fspf", .distance = {}});
    unicast_client fixed(bus, RIB_CLIENT_CONFIG, {.name = "static", .distance = {}});
    fspf.converge(wants(1));
    const auto active = [&] {
        uint32_t owner = 0;
        bus::rib_link link(bus, RIB_CLIENT_TEST);
        read_table<unicast_table>(link, {.uuid = RIB_CLIENT_TEST, .vsan = 1, .active = true},
                                  [&](uint32_t of, auto &&...) { owner = of; });
        return owner;
    };
    EXPECT_EQ(active(), RIB_CLIENT_FSPF);
    fixed.converge(wants(500));
    EXPECT_EQ(active(), RIB_CLIENT_CONFIG);
    fixed.set_distance(120);
    fixed.converge(wants(500));
    EXPECT_EQ(active(), RIB_CLIENT_FSPF);
    fspf.converge(nothing);
    EXPECT_EQ(active(), RIB_CLIENT_CONFIG);
    fspf.converge(wants(1));
    EXPECT_EQ(active(), RIB_CLIENT_FSPF);
}

} // namespace
} // namespace ribkit::clients
