// Dijkstra's algorithm. A node is settled when all its cheaper neighbours are, so that the first links of its equal
// paths can be united in the same pass.
#include "lab/spf.h"

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>
#include <queue>
#include <utility>

namespace ribkit::lab {

namespace {

struct arc {
    size_t to;
    size_t link;
    uint32_t cost;
};

/// Those that leave each node, one node's behind the other's.
class arc_table {
  public:
    arc_table(size_t nodes, std::span<const spf_link> links) : begin_(nodes + 1), arcs_(2 * links.size()) {
        for (const spf_link &link : links) {
            begin_[link.ends[0] + 1]++;
            begin_[link.ends[1] + 1]++;
        }
        std::partial_sum(begin_.begin(), begin_.end(), begin_.begin());
        std::vector<size_t> next(begin_.begin(), begin_.end() - 1);
        for (size_t i = 0; i < links.size(); i++) {
            const auto &[ends, cost] = links[i];
            arcs_[next[ends[0]]++] = {ends[1], i, cost};
            arcs_[next[ends[1]]++] = {ends[0], i, cost};
        }
    }

    [[nodiscard]] std::span<const arc> of(size_t node) const {
        return std::span(arcs_).subspan(begin_[node], begin_[node + 1] - begin_[node]);
    }

  private:
    std::vector<size_t> begin_;
    std::vector<arc> arcs_;
};

// The lowest of a union are among the lowest of its parts: cutting early loses nothing.
void unite(std::vector<size_t> &into, std::span<const size_t> more) {
    if (std::includes(into.begin(), into.end(), more.begin(), more.end())) {
        return;
    }
    std::array<size_t, 2 * most_first_links> both;
    const auto end = std::set_union(into.begin(), into.end(), more.begin(), more.end(), both.begin());
    into.assign(both.begin(), std::min(end, both.begin() + most_first_links));
}

} // namespace

std::vector<spf_path> shortest_paths(size_t nodes, std::span<const spf_link> links, size_t root) {
    using candidate = std::pair<uint32_t, size_t>;
    const arc_table arcs(nodes, links);
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
        for (const arc &way : arcs.of(node)) {
            spf_path &path = paths[way.to];
            const uint32_t through = cost + way.cost;
            if (through > path.cost) {
                continue;
            }
            if (through < path.cost) {
                path.cost = through;
                path.first.clear();
                queue.push({through, way.to});
            }
            unite(path.first, node == root ? std::span(&way.link, 1) : std::span<const size_t>(paths[node].first));
        }
    }
    return paths;
}

} // namespace ribkit::lab
