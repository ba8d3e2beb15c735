// The tree of shortest paths of a VSAN: every switch computes the same, since where several paths are equally short the
// link that the fabric names first belongs to it.
#pragma once

#include "lab/fabric.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace ribkit::lab {

/// Links of the fabric that are up and carry the VSAN, ascending.
std::vector<size_t> live_links(const fabric &f, uint32_t vsan);

struct shortest_tree {
    std::vector<uint32_t> costs;                ///< from the root to each switch, or `unreachable`
    std::vector<std::optional<size_t>> upwards; ///< each switch's link towards the root
    std::vector<size_t> order;                  ///< those that are reached, the root first, each behind its parent
};

shortest_tree shortest_tree_from(const fabric &f, std::span<const size_t> links, size_t root);

/// The switch of the lowest domain that a switch reaches, or is.
size_t root_for(const fabric &f, std::span<const size_t> links, size_t from);

/// The switch at the other end of a link.
inline size_t other_end(const fabric_link &link, size_t one) {
    return link.ends[link.ends[0].owner == one ? 1 : 0].owner;
}
/// The interface at a switch's end of a link.
inline uint32_t interface_at(const fabric_link &link, size_t one) {
    return link.ends[link.ends[0].owner == one ? 0 : 1].if_index;
}

} // namespace ribkit::lab
