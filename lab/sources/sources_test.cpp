// What the sources want, judged by frames that are followed from switch to switch, and by distances computed naively;
// and what their clients bring to the RIB while the fabric changes and everybody restarts.
#include "lab/sources/wanted.h"

#include "lab/fabric_generator.h"
#include "lab/files/fabric_file.h"
#include "lab/route_role.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "testing/capture.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <set>

namespace ribkit::lab {
namespace {

constexpr const char *bus = "local:sources_test";
constexpr uint32_t far = UINT32_MAX / 4;

lab::fabric drawn_fabric(std::mt19937 &random) {
    const auto below = [&](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
    fabric_plan plan;
    plan.switches = 2 + below(10);
    plan.vsans = 1 + below(3);
    plan.shape = static_cast<fabric_shape>(below(3));
    plan.seed = below(1'000'000);
    plan.groups = below(6);
    plan.labels = below(6);
    plan.statics = below(6);
    lab::fabric f = parse_fabric(generate_fabric(plan), "drawn");
    f.roles = {role_names.begin(), role_names.end()};
    return f;
}

/// Something that can happen to the fabric.
fabric_event drawn_event(const lab::fabric &f, std::mt19937 &random) {
    const auto below = [&](size_t limit) { return random() % limit; };
    fabric_event event{{}, 0, below(2) == 0, {}};
    const auto of = [&](event_subject subject, size_t count) {
        event.subject = count == 0 ? event_subject::link : subject;
        event.index = below(count == 0 ? f.links().size() : count);
    };
    switch (below(6)) {
    case 0:
        of(event_subject::static_route, f.declared.statics().size());
        event.cost = 1 + static_cast<uint32_t>(below(3));
        break;
    case 1:
        of(event_subject::group, f.declared.groups().size());
        if (event.subject == event_subject::group) {
            const auto &members = f.declared.groups()[event.index].members;
            event.up = true;
            if (!members.empty() && below(2) == 0) {
                event.leaves = members[below(members.size())];
            } else {
                const size_t owner = below(f.switches().size());
                event.joins = f.parse_port(f.switches()[owner].name + " fc9/" + std::to_string(1 + below(9)), "", 0);
            }
        }
        break;
    case 2:
        of(event_subject::label, f.declared.labels().size());
        break;
    case 3:
        event.subject = event_subject::distance;
        event.index = below(2) == 0 ? RIB_CLIENT_CONFIG : RIB_CLIENT_FSPF;
        event.cost = static_cast<uint32_t>(below(200));
        break;
    default:
        of(event_subject::link, 0);
        event.cost = 1 + static_cast<uint32_t>(below(3));
    }
    return event;
}

/// The same fabric seen by another switch.
lab::fabric seen_by(const lab::fabric &f, size_t local) {
    lab::fabric other = f;
    other.set_local(f.switches()[local].name, 0);
    return other;
}

bool works(const fabric_link &link, uint32_t vsan) { return link.up && link.carries(vsan); }

/// Distances between all switches, found by trying every switch as a way station.
std::vector<std::vector<uint32_t>> distances(const lab::fabric &f, uint32_t vsan) {
    const size_t n = f.switches().size();
    std::vector<std::vector<uint32_t>> all(n, std::vector<uint32_t>(n, far));
    for (size_t i = 0; i < n; i++) {
        all[i][i] = 0;
    }
    for (const fabric_link &link : f.links()) {
        const size_t a = link.ends[0].owner;
        const size_t b = link.ends[1].owner;
        if (works(link, vsan)) {
            all[a][b] = all[b][a] = std::min(all[a][b], link.cost);
        }
    }
    for (size_t k = 0; k < n; k++) {
        for (size_t i = 0; i < n; i++) {
            for (size_t j = 0; j < n; j++) {
                all[i][j] = std::min(all[i][j], all[i][k] + all[k][j]);
            }
        }
    }
    return all;
}

/// Who is at the other end of an interface; none where no working link is.
std::optional<size_t> neighbour(const lab::fabric &f, uint32_t vsan, size_t at, uint32_t if_index) {
    for (const fabric_link &link : f.links()) {
        for (const size_t end : {0, 1}) {
            if (works(link, vsan) && link.ends[end].owner == at && link.ends[end].if_index == if_index) {
                return link.ends[1 - end].owner;
            }
        }
    }
    return std::nullopt;
}

uint32_t way_in(const lab::fabric &f, uint32_t vsan, size_t at, size_t from, uint32_t if_index_of_from) {
    for (const fabric_link &link : f.links()) {
        for (const size_t end : {0, 1}) {
            if (works(link, vsan) && link.ends[end].owner == from && link.ends[end].if_index == if_index_of_from &&
                link.ends[1 - end].owner == at) {
                return link.ends[1 - end].if_index;
            }
        }
    }
    return 0;
}

using place = std::pair<size_t, uint32_t>; // a switch and an interface of it

/// Where copies of a frame come out of the fabric; every switch sends a frame once at most, or it loops.
class frame_to_group {
  public:
    frame_to_group(const lab::fabric &f, const declared_group &group) : fabric_(f), group_(group) {
        for (size_t one = 0; one < f.switches().size(); one++) {
            tables_.push_back(group_routes(seen_by(f, one)));
        }
    }
    void enter(size_t at, uint32_t from_interface) {
        ASSERT_TRUE(passed_.insert(at).second) << "the frame came to a switch twice";
        const auto &table = *tables_[at].at(group_.vsan);
        const auto found = table.find({group_.fcid, RIB_MASK_PORT});
        bool is_wanted_here = from_interface == 0; // where a device has sent it
        for (const uint32_t out : found == table.end() ? std::vector<uint32_t>() : found->second.members) {
            const auto next = neighbour(fabric_, group_.vsan, at, out);
            if (out == from_interface) {
                continue;
            }
            is_wanted_here = true;
            if (next) {
                enter(*next, way_in(fabric_, group_.vsan, *next, at, out));
            } else {
                EXPECT_TRUE(out_.insert({at, out}).second);
            }
        }
        EXPECT_TRUE(is_wanted_here) << "it was sent where no member is";
    }
    [[nodiscard]] const std::set<place> &out() const { return out_; }

  private:
    const lab::fabric &fabric_;
    const declared_group &group_;
    std::vector<clients::wanted_tables<clients::multicast_table>> tables_;
    std::set<size_t> passed_;
    std::set<place> out_;
};

void expect_groups_served(const lab::fabric &f) {
    for (const declared_group &group : f.declared.groups()) {
        const auto distance = distances(f, group.vsan);
        for (size_t from = 0; from < f.switches().size(); from++) {
            std::set<place> members;
            for (const fabric_port &port : group.members) {
                if (group.up && distance[from][port.owner] < far) {
                    members.insert({port.owner, port.if_index});
                }
            }
            frame_to_group frame(f, group);
            frame.enter(from, 0);
            EXPECT_EQ(frame.out(), members);
        }
    }
}

/// Where a frame with such a label, or none, that comes in at an interface leaves the fabric, and what that cost.
struct labelled_way {
    std::optional<place> out;
    uint32_t cost = 0;
};

labelled_way follow_label(const lab::fabric &f, uint32_t vsan, size_t at, uint32_t from, uint32_t cost = 0,
                          uint32_t label = 0) {
    const auto wanted = label_routes(seen_by(f, at));
    for (const auto &[key, what] : *wanted.at(vsan)) {
        const bool matches = label == 0 ? key.source == from && key.match_count == 0 && key.type == RIB_ROUTE_SRC_LABEL
                                        : key.match_count == 1 && key.match[0] >> 12 == label;
        if (matches && cost < far) {
            const uint32_t out = what.hops[1];
            const auto next = neighbour(f, vsan, at, out);
            EXPECT_EQ(what.hops[0] >> 24, label == 0 ? 0U : 1U) << "labels taken off";
            if (!next) {
                EXPECT_EQ(what.hops.size(), 2U) << "it leaves with a label";
                return {place{at, out}, cost};
            }
            for (const fabric_link &link : f.links()) {
                if (way_in(f, vsan, *next, at, out) != 0 && works(link, vsan) &&
                    ((link.ends[0].owner == at && link.ends[0].if_index == out) ||
                     (link.ends[1].owner == at && link.ends[1].if_index == out))) {
                    return follow_label(f, vsan, *next, 0, cost + link.cost, what.hops.at(2) >> 12);
                }
            }
        }
    }
    return {};
}

void expect_tunnels_lead_there(const lab::fabric &f) {
    for (const declared_label &one : f.declared.labels()) {
        const auto &tunnel = std::get<label_tunnel>(one.what);
        const uint32_t shortest = distances(f, one.vsan)[tunnel.from.owner][tunnel.to.owner];
        const labelled_way way = follow_label(f, one.vsan, tunnel.from.owner, tunnel.from.if_index);
        ASSERT_EQ(way.out.has_value(), one.up && shortest < far);
        if (way.out) {
            EXPECT_EQ(*way.out, (place{tunnel.to.owner, tunnel.to.if_index}));
            EXPECT_EQ(way.cost, shortest);
        }
    }
}

/// Next hops of the shortest paths, by interface.
std::vector<model::next_hop> first_hops(const lab::fabric &f, uint32_t vsan, size_t to) {
    const auto distance = distances(f, vsan);
    const size_t local = f.local_index();
    std::map<uint32_t, uint32_t> hops;
    for (const fabric_link &link : f.links()) {
        for (const size_t end : {0, 1}) {
            const fabric_port &other = link.ends[1 - end];
            if (works(link, vsan) && link.ends[end].owner == local &&
                link.cost + distance[other.owner][to] == distance[local][to]) {
                hops[link.ends[end].if_index] = f.switches()[other.owner].domain;
            }
        }
    }
    std::vector<model::next_hop> all;
    for (const auto &[if_index, domain] : hops) {
        if (all.size() < 16) {
            all.push_back({if_index, domain});
        }
    }
    return all;
}

using owned_routes = std::map<std::pair<uint32_t, model::route_key>, model::route>; // by owner

owned_routes expected_unicast(const lab::fabric &f) {
    owned_routes all;
    for (const uint32_t vsan : f.vsan_ids()) {
        const auto distance = distances(f, vsan);
        for (size_t to = 0; to < f.switches().size(); to++) {
            const uint32_t cost = distance[f.local_index()][to];
            if (to == f.local_index() || cost >= far) {
                continue;
            }
            const uint32_t domain = f.switches()[to].domain;
            model::route way{cost, 0, first_hops(f, vsan, to)};
            for (const model::next_hop &hop : way.hops) {
                way.flag |= hop.domain == domain ? RIB_FLAG_DIRECT : 0;
            }
            all[{RIB_CLIENT_FSPF, {vsan, {domain << 16, 0xff0000}}}] = way;
            all[{RIB_CLIENT_FCDOMAIN, {vsan, {0xfffc00 + domain, 0xffffff}}}] = way;
        }
    }
    for (const declared_static &one : f.declared.statics()) {
        const auto next = neighbour(f, one.vsan, one.via.owner, one.via.if_index);
        if (one.up && one.via.owner == f.local_index() && next) {
            all[{RIB_CLIENT_CONFIG, {one.vsan, {one.row.destination, 0xffffff}}}] = {
                one.row.cost, RIB_FLAG_DIRECT, {{one.via.if_index, f.switches()[*next].domain}}};
        }
    }
    return all;
}

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

int rounds() { return std::getenv("RIBKIT_ALL") == nullptr ? 20 : 1000; }

TEST(sources, frames_reach_every_member_once_and_leave_every_tunnel_at_its_end) {
    std::mt19937 random(61);
    for (int round = 0; round < rounds(); round++) {
        SCOPED_TRACE(round);
        lab::fabric f = drawn_fabric(random);
        for (int events = 0; events < 3; events++) {
            expect_groups_served(f);
            expect_tunnels_lead_there(f);
            f.apply(drawn_event(f, random));
        }
    }
}

/// The five clients of a fabric, anew.
route_roles started(const lab::fabric &f) {
    route_roles roles = make_roles(roles_of(f), f, bus, {});
    for (const auto &one : roles) {
        one->start_over();
    }
    return roles;
}

TEST(sources, the_rib_has_what_is_wanted_whoever_restarts_meanwhile) {
    std::mt19937 random(62);
    for (int round = 0; round < rounds(); round++) {
        SCOPED_TRACE(round);
        lab::fabric f = drawn_fabric(random);
        auto rib = std::make_unique<rib::rib_service>(bus, rib::rib_options{.spaces = f.spaces()});
        route_roles roles = started(f);
        fabric_routes paths;
        for (int step = 0; step < 12; step++) {
            paths.follow(f, [](size_t, size_t) {});
            for (size_t i = 0; i < roles.size(); i++) {
                if (random() % 4 == 0) {
                    roles[i] = std::move(started(f)[i]);
                }
                roles[i]->compute(f, paths);
                EXPECT_EQ(roles[i]->converge().refused, 0U);
            }
            if (step < 11 && random() % 6 == 0) {
                rib = nullptr;
                rib = std::make_unique<rib::rib_service>(bus, rib::rib_options{.spaces = f.spaces()});
            }
            if (step < 11) {
                f.apply(drawn_event(f, random));
            }
        }
        rib->stop();
        EXPECT_TRUE(held_unicast(rib->tables()) == expected_unicast(f));
        expect_table<rib::multicast, clients::multicast_table>(rib->tables(), group_routes(f));
        expect_table<rib::label, clients::label_table>(rib->tables(), label_routes(f));
    }
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
