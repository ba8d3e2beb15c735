// Shortest paths from one node to every other, with all the ways in which a shortest path can begin.
#pragma once

#include "ribkit_rib.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace ribkit::lab {

inline constexpr size_t most_first_links = RIBKIT_MOST_HOPS;
inline constexpr uint32_t unreachable = std::numeric_limits<uint32_t>::max();

/// A link between two nodes, usable both ways at a cost of at least 1.
struct spf_link {
    std::array<size_t, 2> ends;
    uint32_t cost;
};

struct spf_path {
    uint32_t cost = unreachable;
    std::vector<size_t> first; ///< the root's links with which a shortest path begins: the lowest 16, ascending
};

/// One path for each of `nodes` nodes; that of the root costs 0 and begins with no link.
std::vector<spf_path> shortest_paths(size_t nodes, std::span<const spf_link> links, size_t root);

} // namespace ribkit::lab
