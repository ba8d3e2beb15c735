// Dijkstra's algorithm. A node is settled when all its cheaper neighbours are, so that the first links of its equal
// paths can be united in the same pass.
#include "tools/spf.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <queue>
#include <utility>

namespace ribkit::tools {

namespace {

struct arc {
    size_t to;
    size_t link;
    uint32_t cost;
};

std::vector<std::vector<arc>> arcs_of(size_t nodes, std::span<const spf_link> links) {
    std::vector<std::vector<arc>> arcs(nodes);
    for (size_t i = 0; i < links.size(); i++) {
        const auto &[ends, cost] = links[i];
        arcs[ends[0]].push_back({ends[1], i, cost});
        arcs[ends[1]].push_back({ends[0], i, cost});
    }
    return arcs;
}

// The lowest of a union are among the lowest of its parts: cutting early loses nothing.
void unite(std::vector<size_t> &into, std::span<const size_t> more) {
    if (std::includes(into.begin(), into.end(), more.begin(), more.end())) {
        return;
    }
    std::vector<size_t> both;
    std::set_union(into.begin(), into.end(), more.begin(), more.end(), std::back_inserter(both));
    both.resize(std::min(both.size(), most_first_links));
    into = std::move(both);
}

} // namespace

std::vector<spf_path> shortest_paths(size_t nodes, std::span<const spf_link> links, size_t root) {
    using candidate = std::pair<uint32_t, size_t>;
    const auto arcs = arcs_of(nodes, links);
    std::vector<spf_path> paths(nodes);
    std::priority_queue<candidate, std::vector<candidate>, std::greater<>> queue;
    paths[root].cost = 0;
    queue.push({0, root});
    while (!queue.empty()) {
        const auto [cost, node] = queue.top();
        queue.pop();
        if (cost != paths[node].cost) {
            continue;
        }
        for (const arc &way : arcs[node]) {
            spf_path &path = paths[way.to];
            const uint32_t through = cost + way.cost;
            if (through > path.cost) {
                continue;
            }
            if (through < path.cost) {
                path = {through, {}};
                queue.push({through, way.to});
            }
            unite(path.first, node == root ? std::span(&way.link, 1) : std::span<const size_t>(paths[node].first));
        }
    }
    return paths;
}

} // namespace ribkit::tools
