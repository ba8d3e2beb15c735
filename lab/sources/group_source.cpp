// Frames to a group travel along the distribution tree, in any direction: a switch hands them on to every interface of
// the tree behind which there are members, and to its own members, but not back where they came from.
#include "lab/sources/shortest_tree.h"
#include "lab/sources/wanted.h"
#include "rib_codes.h"

#include <algorithm>

namespace ribkit::lab {

namespace {

/// The distribution tree of a VSAN as the local switch sees it.
class local_tree {
  public:
    local_tree(const fabric &f, uint32_t vsan) : fabric_(f) {
        const auto links = live_links(f, vsan);
        tree_ = shortest_tree_from(f, links, root_for(f, links, f.local_index()));
    }

    /// The interfaces behind which there is something of what is counted at each switch, ascending.
    [[nodiscard]] std::vector<uint32_t> interfaces(std::vector<size_t> counted) const {
        for (size_t i = tree_.order.size(); i-- > 1;) {
            counted[parent_of(tree_.order[i])] += counted[tree_.order[i]];
        }
        const size_t local = fabric_.local_index();
        std::vector<uint32_t> all;
        for (const size_t node : tree_.order) {
            const bool is_child = tree_.upwards[node] && parent_of(node) == local;
            if (is_child && counted[node] != 0) {
                all.push_back(interface_at(link_of(node), local));
            }
        }
        if (tree_.upwards[local] && counted[tree_.order[0]] != counted[local]) {
            all.push_back(interface_at(link_of(local), local));
        }
        std::sort(all.begin(), all.end());
        return all;
    }

    [[nodiscard]] bool reaches(size_t node) const {
        return std::find(tree_.order.begin(), tree_.order.end(), node) != tree_.order.end();
    }

  private:
    [[nodiscard]] const fabric_link &link_of(size_t node) const { return fabric_.links()[*tree_.upwards[node]]; }
    [[nodiscard]] size_t parent_of(size_t node) const { return other_end(link_of(node), node); }

    const fabric &fabric_;
    shortest_tree tree_;
};

std::vector<uint32_t> leaving(const fabric &f, const local_tree &tree, const declared_group &group) {
    std::vector<size_t> members(f.switches().size());
    std::vector<uint32_t> own;
    for (const fabric_port &port : group.members) {
        members[port.owner] += tree.reaches(port.owner) ? 1 : 0;
        if (port.owner == f.local_index()) {
            own.push_back(port.if_index);
        }
    }
    std::vector<uint32_t> all = tree.interfaces(members);
    all.insert(all.end(), own.begin(), own.end());
    std::sort(all.begin(), all.end());
    return all;
}

void add(clients::own_table<clients::multicast_table> &table, const model::destination &to,
         std::vector<uint32_t> interfaces) {
    if (!interfaces.empty()) {
        table[to] = {std::move(interfaces)};
    }
}

} // namespace

clients::wanted_tables<clients::multicast_table> group_routes(const fabric &f) {
    constexpr model::destination whole_tree{0, 0};
    drawn_tables<clients::multicast_table> drawn;
    std::map<uint32_t, local_tree> trees;
    for (const declared_group &group : f.declared.groups()) {
        if (!group.up || !f.has_vsan(group.vsan)) {
            continue;
        }
        const auto [found, is_first] = trees.try_emplace(group.vsan, f, group.vsan);
        const local_tree &tree = found->second;
        if (is_first) {
            add(drawn[group.vsan], whole_tree, tree.interfaces(std::vector<size_t>(f.switches().size(), 1)));
        }
        add(drawn[group.vsan], {group.fcid, RIB_MASK_PORT}, leaving(f, tree, group));
    }
    return shared<clients::multicast_table>(f, std::move(drawn));
}

} // namespace ribkit::lab
