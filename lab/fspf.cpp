// The links that are up and carry the VSAN are the graph; those of the local switch stand first, in the order of their
// interfaces, so that the lowest first links are the lowest interfaces.
#include "lab/fspf.h"

#include "lab/spf.h"
#include "rib_codes.h"

#include <algorithm>

namespace ribkit::lab {

namespace {

/// Links of the local switch with the local end first, then all others.
class vsan_graph {
  public:
    vsan_graph(const fabric &f, std::span<const size_t> carrying) {
        const size_t local = f.local_index();
        std::vector<spf_link> others;
        for (const size_t index : carrying) {
            const fabric_link &link = f.links()[index];
            if (!link.up) {
                continue;
            }
            const auto &[a, b] = link.ends;
            if (a.owner == local || b.owner == local) {
                local_.push_back({a.owner == local ? a.if_index : b.if_index,
                                  {{local, a.owner == local ? b.owner : a.owner}, link.cost}});
            } else {
                others.push_back({{a.owner, b.owner}, link.cost});
            }
        }
        std::sort(local_.begin(), local_.end(), [](const auto &x, const auto &y) { return x.if_index < y.if_index; });
        for (const local_link &link : local_) {
            links_.push_back(link.link);
        }
        links_.insert(links_.end(), others.begin(), others.end());
    }

    [[nodiscard]] const std::vector<spf_link> &links() const { return links_; }
    [[nodiscard]] uint32_t if_index(size_t first) const { return local_[first].if_index; }
    [[nodiscard]] size_t neighbour(size_t first) const { return local_[first].link.ends[1]; }

  private:
    struct local_link {
        uint32_t if_index;
        spf_link link;
    };
    std::vector<local_link> local_;
    std::vector<spf_link> links_;
};

model::route route_of(const fabric &f, const vsan_graph &graph, size_t to, const spf_path &path) {
    model::route r{path.cost, RIB_FLAG_ACTIVE, {}};
    r.hops.reserve(path.first.size());
    for (const size_t first : path.first) {
        const size_t neighbour = graph.neighbour(first);
        r.flag |= neighbour == to ? RIB_FLAG_DIRECT : 0;
        r.hops.push_back({graph.if_index(first), f.switches()[neighbour].domain});
    }
    return r;
}

} // namespace

fspf_outcome run_fspf(const fabric &f, std::span<const size_t> links) {
    const vsan_graph graph(f, links);
    const auto paths = shortest_paths(f.switches().size(), graph.links(), f.local_index());
    fspf_outcome outcome;
    outcome.costs.reserve(paths.size());
    for (size_t to = 0; to < paths.size(); to++) {
        outcome.costs.push_back(paths[to].cost);
        if (to != f.local_index() && paths[to].cost != unreachable) {
            const model::destination domain{f.switches()[to].domain << 16, RIB_MASK_DOMAIN};
            outcome.routes.emplace_hint(outcome.routes.end(), domain,
                                        route_of(f, graph, to, paths[to])); // in order mostly
        }
    }
    return outcome;
}

std::vector<size_t> links_of(const fabric &f, uint32_t vsan) {
    std::vector<size_t> links;
    for (size_t i = 0; i < f.links().size(); i++) {
        if (f.links()[i].carries(vsan)) {
            links.push_back(i);
        }
    }
    return links;
}

model::route_table fspf_routes(const fabric &f, uint32_t vsan) { return run_fspf(f, links_of(f, vsan)).routes; }

} // namespace ribkit::lab
