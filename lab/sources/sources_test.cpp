// What the clients bring to the RIB, and the RIB to its modules, while the fabric changes and everybody restarts: what
// both hold in the end is what the fabric demands.
#include "lab/sources/naive_sources.h"
#include "lab/sources/wanted.h"

#include "fib/service/fib_service.h"
#include "lab/files/fabric_file.h"
#include "lab/modules.h"
#include "lab/route_role.h"
#include "rib/service/rib_service.h"
#include "testing/capture.h"

#include <gtest/gtest.h>
#include <memory>

namespace ribkit::lab {
namespace {

constexpr const char *bus = "local:sources_test";

owned_routes held_unicast(const rib::state &tables) {
    owned_routes all;
    const auto &table = tables.routes<rib::unicast>();
    for (const auto &[key, active] : table.all()) {
        for (const auto *one = active; one != nullptr; one = one->next) {
            const auto what = table.read(*one);
            all[{one->of->uuid, key}] = {
                what.metric, what.flag & ~RIB_FLAG_ACTIVE, {what.hops.begin(), what.hops.end()}, what.carried};
        }
    }
    return all;
}

template <class Kind, class Table> void expect_table(const rib::state &tables, clients::wanted_tables<Table> wanted) {
    std::map<typename Table::key_in_vsan, typename Table::route> held;
    size_t routes = 0;
    for (const auto &[vsan, table] : wanted) {
        routes += table->size();
    }
    const auto &table = tables.routes<Kind>();
    EXPECT_EQ(table.all().size(), routes);
    for (const auto &[key, active] : table.all()) {
        const auto &of_vsan = *wanted.at(key.vsan);
        const auto found = of_vsan.find(Table::in_vsan(key));
        ASSERT_NE(found, of_vsan.end());
        const auto what = table.read(*active);
        if constexpr (std::is_same_v<Table, clients::multicast_table>) {
            EXPECT_TRUE(std::equal(what.members.begin(), what.members.end(), found->second.members.begin(),
                                   found->second.members.end()));
        } else {
            EXPECT_TRUE(
                std::equal(what.hops.begin(), what.hops.end(), found->second.hops.begin(), found->second.hops.end()));
        }
    }
}

/// What a module's tables say: by which interfaces frames leave, and with what.
struct module_tables {
    std::map<model::route_key, std::vector<model::next_hop>> unicast{};
    std::map<model::multicast_key, std::vector<uint32_t>> multicast{};
    std::map<model::label_key, std::vector<uint32_t>> label{};

    bool operator==(const module_tables &) const = default;
};

module_tables demanded_of_modules(const lab::fabric &f) {
    module_tables all;
    for (const auto &[key, what] : expected_active(f)) {
        all.unicast[key] = what.hops;
    }
    for (const auto &[vsan, table] : group_routes(f)) {
        for (const auto &[to, what] : *table) {
            all.multicast[{vsan, to}] = what.members;
        }
    }
    for (const auto &[vsan, table] : label_routes(f)) {
        for (const auto &[key, what] : *table) {
            all.label[key] = what.hops;
        }
    }
    return all;
}

module_tables held_by(const fib::fib_service &module) {
    module_tables all;
    module.read([&](const fib::module &of) {
        for (const auto &[key, entry] : of.fib.entries<fib::unicast>().all()) {
            const auto ways = fib::table<fib::unicast>::read(entry).ways;
            for (size_t at = 0; at + 1 < ways.size(); at += 2) { // a control word and an interface
                all.unicast[key].push_back({ways[at + 1], ways[at] >> 5 & 0xff});
            }
            all.unicast[key];
        }
        for (const auto &[key, entry] : of.fib.entries<fib::multicast>().all()) {
            const auto members = fib::table<fib::multicast>::read(entry).members;
            all.multicast[key] = {members.begin(), members.end()};
        }
        for (const auto &[key, entry] : of.fib.entries<fib::label>().all()) {
            const auto ways = fib::table<fib::label>::read(entry).ways;
            all.label[key] = {ways.begin(), ways.end()};
        }
        return 0;
    });
    return all;
}

/// The five clients of a fabric, anew.
route_roles started(const lab::fabric &f) {
    route_roles roles = make_roles(roles_of(f), f, bus, {});
    for (const auto &one : roles) {
        one->start_over();
    }
    return roles;
}

/// A RIB with two modules and five clients, each of which may start anew.
class running_switch {
  public:
    explicit running_switch(const lab::fabric &f) : clients_(started(f)) {
        restart_rib(f);
        for (const uint32_t number : {1U, 2U}) {
            modules_.push_back(std::make_unique<fib::fib_service>(bus, fib::fib_options{.number = number}));
        }
    }
    void restart_rib(const lab::fabric &f) {
        rib_ = nullptr;
        rib_ = std::make_unique<rib::rib_service>(bus, rib::rib_options{.spaces = f.spaces()});
    }
    void restart_module(size_t index) {
        modules_[index] = nullptr;
        modules_[index] =
            std::make_unique<fib::fib_service>(bus, fib::fib_options{.number = static_cast<uint32_t>(index) + 1});
    }

    /// Every client brings what it wants; those that are chosen start anew before.
    template <class Chosen> void converge(const lab::fabric &f, const Chosen &starts_anew) {
        paths_.follow(f, [](size_t, size_t) {});
        for (size_t i = 0; i < clients_.size(); i++) {
            if (starts_anew()) {
                clients_[i] = std::move(started(f)[i]);
            }
            clients_[i]->compute(f, paths_);
            EXPECT_EQ(clients_[i]->converge().refused, 0U);
        }
    }

    void expect_demanded(const lab::fabric &f) {
        const module_tables demanded = demanded_of_modules(f);
        for (const auto &module : modules_) {
            EXPECT_TRUE(wait_until(std::chrono::minutes(1), [&] { return held_by(*module) == demanded; }));
        }
        rib_->stop();
        EXPECT_TRUE(held_unicast(rib_->tables()) == expected_unicast(f));
        expect_table<rib::multicast, clients::multicast_table>(rib_->tables(), group_routes(f));
        expect_table<rib::label, clients::label_table>(rib_->tables(), label_routes(f));
    }

  private:
    std::unique_ptr<rib::rib_service> rib_;
    std::vector<std::unique_ptr<fib::fib_service>> modules_;
    route_roles clients_;
    fabric_routes paths_;
};

TEST(sources, rib_and_modules_have_what_is_demanded_whoever_restarts_meanwhile) {
    std::mt19937 random(62);
    for (int round = 0; round < rounds() && !::testing::Test::HasFailure(); round++) {
        SCOPED_TRACE(round);
        lab::fabric f = drawn_fabric(random);
        running_switch all(f);
        const auto one_in = [&](unsigned count) { return random() % count == 0; };
        all.converge(f, [] { return false; });
        for (const fabric_event &event : f.events()) {
            if (one_in(6)) {
                all.restart_rib(f);
            }
            if (one_in(6)) {
                all.restart_module(random() % 2);
            }
            f.apply(event);
            all.converge(f, [&] { return one_in(4); });
        }
        all.expect_demanded(f);
    }
}

TEST(sources, what_is_declared_stands_while_its_interface_leads_out) {
    const auto wanted_through = [](const std::string &via, const std::string &vsan, const std::string &owner = "a") {
        const lab::fabric f =
            parse_fabric(R"(
local = "a"
vsan = [{id = 1}, {id = 2}]
switch = [{name = "a", domain = 1}, {name = "b", domain = 2}]
link = [{ends = ["a fc1/1", "b fc1/1"], vsans = [1]}, {ends = ["a fc1/2", "b fc1/2"], state = "down"}]
)" + ("[[static]]\nfcid = 0x020000\ndomain = 2\nvsan = " + vsan) +
                             "\nvia = \"" + owner + ' ' + via + "\"\n[[label]]\nmatch = [16]\nvsan = " + vsan +
                             "\nvia = \"" + owner + ' ' + via + "\"\n",
                         "f");
        const uint32_t number = vsan == "1" ? 1 : 2;
        return std::pair(static_routes(f).at(number)->size(), label_routes(f).at(number)->size());
    };
    constexpr std::pair<size_t, size_t> both(1, 1), none(0, 0);
    EXPECT_EQ(wanted_through("fc1/1", "1"), both);
    EXPECT_EQ(wanted_through("fc1/1", "2"), none) << "the link does not carry it";
    EXPECT_EQ(wanted_through("fc1/2", "1"), none) << "the link is down";
    EXPECT_EQ(wanted_through("fc1/3", "2"), both) << "no link";
    EXPECT_EQ(wanted_through("fc1/1", "1", "b"), none) << "another switch's";
}

TEST(sources, restarts_leave_routes_whole) {
    std::mt19937 random(63);
    lab::fabric f = drawn_fabric(random);
    rib::rib_service rib(bus, {.spaces = f.spaces()});
    fabric_routes paths;
    paths.follow(f, [](size_t, size_t) {});
    for (const auto &one : started(f)) {
        one->compute(f, paths);
        one->converge();
    }
    for (const auto &one : started(f)) {
        one->compute(f, paths);
        const clients::client_traffic traffic = one->converge();
        EXPECT_EQ(traffic.added + traffic.deleted + traffic.changed + traffic.refused, 0U) << one->name();
    }
}

} // namespace
} // namespace ribkit::lab
