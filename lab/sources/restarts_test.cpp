// Whatever moment a client ends at, its routes stay whole: another run of it finds or merges them. And of two clients
// that want one destination the modules have the nearer one's route, and the other's when that goes.
#include "lab/sources/naive_sources.h"
#include "lab/sources/wanted.h"

#include "fib/service/fib_service.h"
#include "lab/modules.h"
#include "rib/service/rib_service.h"
#include "testing/capture.h"
#include "testing/fault_script.h"

#include <gtest/gtest.h>
#include <memory>

namespace ribkit::lab {
namespace {

constexpr const char *bus = "local:restarts_test";

using words = std::vector<uint32_t>;
/// Routes of any table, key and content as plain words.
using plain_routes = std::map<words, words>;

words key_words(uint32_t vsan, const model::destination &to) { return {vsan, to.fcid, to.mask}; }
words key_words(uint32_t /*vsan*/, const model::label_key &key) {
    return {key.vsan, key.type, key.source, key.to.fcid, key.to.mask, key.match_count, key.match[0], key.match[1]};
}
words what_words(const model::route &what) {
    words all{what.metric, what.flag | RIB_FLAG_ACTIVE};
    for (const model::next_hop &hop : what.hops) {
        all.insert(all.end(), {hop.if_index, hop.domain});
    }
    return all;
}
words what_words(const model::multicast_route &what) { return what.members; }
words what_words(const model::label_route &what) { return what.hops; }

template <class Table> plain_routes plain(const clients::wanted_tables<Table> &wanted) {
    plain_routes all;
    for (const auto &[vsan, table] : wanted) {
        for (const auto &[key, what] : *table) {
            all[key_words(vsan, key)] = what_words(what);
        }
    }
    return all;
}

plain_routes wanted_by(role which, const lab::fabric &f) {
    fabric_routes paths;
    paths.follow(f, [](size_t, size_t) {});
    switch (which) {
    case role::fspf:
        return plain<clients::unicast_table>(paths.all());
    case role::static_routes:
        return plain<clients::unicast_table>(static_routes(f));
    case role::mcast:
        return plain<clients::multicast_table>(group_routes(f));
    case role::label:
        return plain<clients::label_table>(label_routes(f));
    case role::domain:
        break;
    }
    return plain<clients::unicast_table>(controller_routes(f, paths));
}

template <class Table> void read_held(plain_routes &all) {
    bus::rib_link link(bus, RIB_CLIENT_TEST);
    clients::read_table<Table>(link, {.uuid = RIB_CLIENT_TEST}, [&](uint32_t, const auto &key, const auto &what) {
        all[key_words(key.vsan, Table::in_vsan(key))] = what_words(clients::copied(what));
    });
}

/// All that the RIB has, of one client.
plain_routes held() {
    plain_routes all;
    read_held<clients::unicast_table>(all);
    read_held<clients::multicast_table>(all);
    read_held<clients::label_table>(all);
    return all;
}

std::unique_ptr<route_role> client_of(role which, const lab::fabric &f, std::chrono::milliseconds patience) {
    clients::client_options options;
    options.message_limit = 1140; // several messages for a VSAN
    options.link.patience = patience;
    auto one = std::move(make_roles({which}, f, bus, options)[0]);
    one->start_over();
    return one;
}

/// @return whether it came to its end
bool brings(route_role &client, const lab::fabric &f) {
    fabric_routes paths;
    paths.follow(f, [](size_t, size_t) {});
    client.compute(f, paths);
    size_t refused = 0;
    bool ended = true;
    ::testing::internal::CaptureStderr();
    testing::printed_by([&] {
        try {
            refused = client.converge().refused;
        } catch (const bus::no_answer &) {
            ended = false;
        }
    });
    ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(refused, 0U);
    return ended;
}

/// A client brings the routes of `before`; another run of it, on its way to those of `after`, ends behind the message
/// of a number; a third one goes on. @return whether the second has come to its end
bool restarts_behind(int message, role which, const lab::fabric &before, const lab::fabric &after) {
    const rib::rib_service rib(bus, {.spaces = before.spaces()});
    EXPECT_TRUE(brings(*client_of(which, before, std::chrono::minutes(1)), before));
    const plain_routes was = held();
    EXPECT_TRUE(was == wanted_by(which, before));
    bool ended = false;
    {
        const testing::fault_script quiet("clock virtual\n");
        bus::rib_link(bus, RIB_CLIENT_TEST, {.patience = std::chrono::hours(24)}).find(); // the clock knows the RIB
        const testing::fault_script script("clock virtual\ndrop " + std::to_string(message) + "\n");
        ended = brings(*client_of(which, after, std::chrono::milliseconds(1)), after);
    }
    const plain_routes wanted = wanted_by(which, after);
    const plain_routes now = held();
    for (const auto &[key, what] : wanted) {
        const auto found = was.find(key);
        if (found != was.end() && found->second == what) {
            EXPECT_TRUE(now.contains(key) && now.at(key) == what) << "a route is missing that was wanted all the time";
        }
    }
    EXPECT_TRUE(brings(*client_of(which, after, std::chrono::minutes(1)), after));
    EXPECT_TRUE(held() == wanted);
    return ended;
}

TEST(sources, a_client_that_ends_behind_any_message_leaves_its_routes_whole) {
    std::mt19937 random(64);
    const lab::fabric before = drawn_fabric(random);
    lab::fabric after = before;
    for (const fabric_event &event : before.events()) {
        after.apply(event);
    }
    for (size_t link = 0; link < after.links().size(); link++) {
        const auto &ends = after.links()[link].ends;
        if (ends[0].owner == after.local_index() || ends[1].owner == after.local_index()) {
            after.apply({{}, link, {}, 700}); // which routes of shortest paths notice
        }
    }
    for (const role which : {role::fspf, role::static_routes, role::mcast, role::label, role::domain}) {
        SCOPED_TRACE(role_name(which));
        EXPECT_FALSE(wanted_by(which, before) == wanted_by(which, after));
        int message = 1;
        while (message < 100 && !restarts_behind(message, which, before, after)) {
            message++;
        }
        EXPECT_GE(message, 5); // a request and an answer more than once
        EXPECT_LT(message, 100);
    }
}

/// A client that may have one route, to a destination that all of them share, by an interface of its own.
struct rival {
    rival(uint32_t uuid, uint32_t interface, std::optional<uint32_t> distance)
        : if_index(interface), client(bus, uuid, {.name = "rival", .distance = distance}) {}

    void want(bool it) {
        model::route_table table;
        if (it) {
            table[{0x020000, RIB_MASK_DOMAIN}] = {10, RIB_FLAG_ACTIVE, {{if_index, 2}}};
        }
        client.converge({{1, std::make_shared<const model::route_table>(std::move(table))}});
    }

    uint32_t if_index;
    clients::unicast_client client;
};

/// The interface that a module sends frames to that destination by; 0: none.
uint32_t way_in(const fib::fib_service &module) {
    return module.read([](const fib::module &of) {
        const auto &all = of.fib.entries<fib::unicast>().all();
        const auto found = all.find({1, {0x020000, RIB_MASK_DOMAIN}});
        return found == all.end() ? 0 : fib::table<fib::unicast>::read(found->second).ways[1];
    });
}

bool comes_to(const fib::fib_service &module, uint32_t if_index) {
    return wait_until(std::chrono::minutes(1), [&] { return way_in(module) == if_index; });
}

constexpr uint32_t first_way = 0x01000000;
constexpr uint32_t second_way = 0x01001000;
/// Nearer ones first.
constexpr uint32_t unicast_clients[] = {RIB_CLIENT_CONFIG, RIB_CLIENT_FCDOMAIN, RIB_CLIENT_FSPF, RIB_CLIENT_TEST};

TEST(sources, of_any_two_clients_modules_have_the_nearer_ones_route_and_the_others_when_it_goes) {
    for (size_t nearer = 0; nearer < std::size(unicast_clients); nearer++) {
        for (size_t farther = nearer + 1; farther < std::size(unicast_clients); farther++) {
            const rib::rib_service rib(bus);
            const fib::fib_service module(bus);
            rival near(unicast_clients[nearer], first_way, {});
            rival far(unicast_clients[farther], second_way, {});
            near.want(true);
            EXPECT_TRUE(comes_to(module, first_way));
            far.want(true);
            near.want(true);
            EXPECT_EQ(way_in(module), first_way);
            near.want(false);
            EXPECT_TRUE(comes_to(module, second_way));
            near.want(true);
            EXPECT_TRUE(comes_to(module, first_way));
            near.client.set_distance(250); // farther than any
            near.want(true);
            EXPECT_TRUE(comes_to(module, second_way));
            far.want(false);
            EXPECT_TRUE(comes_to(module, first_way));
            near.want(false);
            EXPECT_TRUE(comes_to(module, 0));
        }
    }
}

TEST(sources, a_client_that_is_not_heard_any_more_is_as_near_as_others_of_its_kind) {
    for (size_t nearer = 0; nearer < std::size(unicast_clients); nearer++) {
        for (size_t farther = nearer + 1; farther < std::size(unicast_clients); farther++) {
            const testing::fault_script script("clock virtual\n");
            const rib::rib_service rib(bus);
            const fib::fib_service module(bus);
            rival near(unicast_clients[nearer], first_way, {});
            rival far(unicast_clients[farther], second_way, 0);
            near.want(true);
            far.want(true);
            EXPECT_TRUE(comes_to(module, second_way));
            near.client.rib_started(std::chrono::seconds(25)); // it registers, the other one does not
            EXPECT_TRUE(comes_to(module, second_way));
            near.client.rib_started(std::chrono::seconds(20));
            EXPECT_TRUE(comes_to(module, first_way));
        }
    }
}

} // namespace
} // namespace ribkit::lab
