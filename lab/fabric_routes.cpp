// A change of a link matters where the link is part of a shortest path, before or after it. Where it is not, no
// distance changes, and no other path becomes a shortest one; so several such changes at once do not matter either.
#include "lab/fabric_routes.h"

#include "lab/fspf.h"
#include "lab/spf.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <utility>

namespace ribkit::lab {

namespace {

/// The order of lists. On big-endian machines `<` of gcc 12 compares too few of their bytes, and so takes lists for one
/// that differ.
struct by_number {
    bool operator()(const std::vector<size_t> &a, const std::vector<size_t> &b) const {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
    }
};

} // namespace

// An end that is not reached is farther away than any sum.
static bool is_on_shortest_path(uint64_t to_one_end, uint64_t to_the_other, uint64_t cost) {
    return to_one_end + cost <= to_the_other || to_the_other + cost <= to_one_end;
}

void fabric_routes::follow(const fabric &f, const progress &say) {
    if (topologies_.empty()) {
        find_topologies(f);
    }
    const auto changed = changed_links(f);
    lost_.clear();
    size_t done = 0;
    for (topology &t : topologies_) {
        say(done, all_.size());
        if (t.routes == nullptr ||
            std::any_of(changed.begin(), changed.end(), [&](size_t link) { return is_touched(t, f, link); })) {
            compute(t, f);
        }
        done += t.vsans.size();
    }
    std::sort(lost_.begin(), lost_.end(), [](const auto &a, const auto &b) { return a.vsan < b.vsan; });
    for (const size_t link : changed) {
        links_[link] = {f.links()[link].up, f.links()[link].cost};
    }
}

size_t fabric_routes::size() const {
    return std::accumulate(topologies_.begin(), topologies_.end(), size_t{0},
                           [](size_t sum, const topology &t) { return sum + t.vsans.size() * t.routes->size(); });
}

void fabric_routes::find_topologies(const fabric &f) {
    std::map<std::vector<size_t>, size_t, by_number> known;
    for (const fabric_vsan &vsan : f.vsans()) {
        const auto links = links_of(f, vsan.id);
        const auto [place, is_new] = known.try_emplace(links, topologies_.size());
        if (is_new) {
            topologies_.push_back({links, {}, {}, {}});
        }
        topologies_[place->second].vsans.push_back(vsan.id);
        all_[vsan.id] = nullptr;
    }
    for (const fabric_link &link : f.links()) {
        links_.push_back({link.up, link.cost});
    }
}

std::vector<size_t> fabric_routes::changed_links(const fabric &f) const {
    std::vector<size_t> changed;
    for (size_t i = 0; i < links_.size(); i++) {
        if (links_[i] != link_state{f.links()[i].up, f.links()[i].cost}) {
            changed.push_back(i);
        }
    }
    return changed;
}

bool fabric_routes::is_touched(const topology &t, const fabric &f, size_t link) const {
    if (!std::binary_search(t.links.begin(), t.links.end(), link)) {
        return false;
    }
    const auto &ends = f.links()[link].ends;
    const uint32_t near = t.costs[ends[0].owner];
    const uint32_t far = t.costs[ends[1].owner];
    const auto is_part = [&](const link_state &state) {
        return state.up && is_on_shortest_path(near, far, state.cost);
    };
    return is_part(links_[link]) || is_part({f.links()[link].up, f.links()[link].cost});
}

void fabric_routes::compute(topology &t, const fabric &f) {
    computations_++;
    fspf_outcome outcome = run_fspf(f, t.links);
    note_lost(t, f, outcome.costs);
    t.costs = std::move(outcome.costs);
    if (t.routes == nullptr || *t.routes != outcome.routes) {
        t.routes = std::make_shared<const model::route_table>(std::move(outcome.routes));
        for (const uint32_t vsan : t.vsans) {
            all_[vsan] = t.routes;
        }
    }
}

void fabric_routes::note_lost(const topology &t, const fabric &f, const std::vector<uint32_t> &costs) {
    std::vector<uint32_t> domains;
    for (size_t i = 0; i < costs.size(); i++) {
        if (costs[i] == unreachable && (t.costs.empty() || t.costs[i] != unreachable)) {
            domains.push_back(f.switches()[i].domain);
        }
    }
    for (const uint32_t vsan : t.vsans) {
        if (!domains.empty()) {
            lost_.push_back({vsan, domains});
        }
    }
}

} // namespace ribkit::lab
