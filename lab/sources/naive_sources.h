// What the sources have to want, found by the simplest means, which share nothing with theirs: for tests of the
// sources, and of what the RIB and modules hold of theirs.
#pragma once

#include "lab/fabric.h"
#include "lab/files/fabric_file.h"
#include "lab/generator/fabric_generator.h"
#include "lab/route_role.h"
#include "model/routes.h"
#include "model/system.h"
#include "rib_codes.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <optional>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

namespace ribkit::lab {

inline constexpr uint32_t far = UINT32_MAX / 4;

/// How many fabrics a test draws.
inline int rounds() { return std::getenv("RIBKIT_ALL") == nullptr ? 20 : 1000; }

/// A small fabric with something of everything, of whose clients all run.
inline lab::fabric drawn_fabric(std::mt19937 &random) {
    const auto below = [&](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
    fabric_plan plan;
    plan.switches = 2 + below(10);
    plan.vsans = 1 + below(3);
    plan.shape = static_cast<fabric_shape>(below(3));
    plan.seed = below(1'000'000);
    plan.groups = below(6);
    plan.labels = below(6);
    plan.statics = below(6);
    plan.events = 6;
    lab::fabric f = parse_fabric(generate_fabric(plan), "drawn");
    f.roles = {role_names.begin(), role_names.end()};
    return f;
}

inline bool works(const fabric_link &link, uint32_t vsan) { return link.up && link.carries(vsan); }

/// Distances between all switches, found by trying every switch as a way station.
inline std::vector<std::vector<uint32_t>> distances(const lab::fabric &f, uint32_t vsan) {
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
inline std::optional<size_t> neighbour(const lab::fabric &f, uint32_t vsan, size_t at, uint32_t if_index) {
    for (const fabric_link &link : f.links()) {
        for (const size_t end : {0, 1}) {
            if (works(link, vsan) && link.ends[end].owner == at && link.ends[end].if_index == if_index) {
                return link.ends[1 - end].owner;
            }
        }
    }
    return std::nullopt;
}

inline uint32_t way_in(const lab::fabric &f, uint32_t vsan, size_t at, size_t from, uint32_t if_index_of_from) {
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

/// Next hops of the shortest paths, by interface.
inline std::vector<model::next_hop> first_hops(const lab::fabric &f, uint32_t vsan, size_t to) {
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

inline owned_routes expected_unicast(const lab::fabric &f) {
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

/// Of several routes of a destination the one of the nearest client, then the cheapest, then that of the lowest
/// identity.
inline std::map<model::route_key, model::route> expected_active(const lab::fabric &f) {
    using rank = std::tuple<uint32_t, uint32_t, uint32_t>;
    std::map<model::route_key, std::pair<rank, model::route>> best;
    for (const auto &[owner_and_key, what] : expected_unicast(f)) {
        const auto &[owner, key] = owner_and_key;
        const rank here{f.declared.distance_of(owner).value_or(model::default_distance(owner)), what.metric, owner};
        const auto found = best.find(key);
        if (found == best.end() || here < found->second.first) {
            best[key] = {here, what};
        }
    }
    std::map<model::route_key, model::route> active;
    for (const auto &[key, one] : best) {
        active[key] = one.second;
    }
    return active;
}

} // namespace ribkit::lab
