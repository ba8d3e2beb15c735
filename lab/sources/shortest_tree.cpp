// The costs come from the shortest paths; a link is on one where it accounts for the difference of its ends.
#include "lab/sources/shortest_tree.h"

#include "lab/fspf.h"
#include "lab/spf.h"

#include <algorithm>

namespace ribkit::lab {

std::vector<size_t> live_links(const fabric &f, uint32_t vsan) {
    std::vector<size_t> links = links_of(f, vsan);
    std::erase_if(links, [&](size_t link) { return !f.links()[link].up; });
    return links;
}

shortest_tree shortest_tree_from(const fabric &f, std::span<const size_t> links, size_t root) {
    std::vector<spf_link> ways;
    for (const size_t link : links) {
        const auto &[ends, cost, up, vsans, line] = f.links()[link];
        ways.push_back({{ends[0].owner, ends[1].owner}, cost});
    }
    shortest_tree tree;
    for (const spf_path &path : shortest_paths(f.switches().size(), ways, root)) {
        tree.costs.push_back(path.cost);
    }
    tree.upwards.resize(tree.costs.size());
    for (size_t i = links.size(); i-- > 0;) { // so that the first of several stays
        for (const size_t child : ways[i].ends) {
            const size_t parent = other_end(f.links()[links[i]], child);
            if (tree.costs[parent] != unreachable && tree.costs[parent] + ways[i].cost == tree.costs[child]) {
                tree.upwards[child] = links[i];
            }
        }
    }
    for (size_t node = 0; node < tree.costs.size(); node++) {
        if (tree.costs[node] != unreachable) {
            tree.order.push_back(node);
        }
    }
    std::stable_sort(tree.order.begin(), tree.order.end(),
                     [&](size_t a, size_t b) { return tree.costs[a] < tree.costs[b]; });
    return tree;
}

size_t root_for(const fabric &f, std::span<const size_t> links, size_t from) {
    const auto &order = shortest_tree_from(f, links, from).order;
    return *std::min_element(order.begin(), order.end(),
                             [&](size_t a, size_t b) { return f.switches()[a].domain < f.switches()[b].domain; });
}

} // namespace ribkit::lab
