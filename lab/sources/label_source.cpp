// A tunnel is one route at each switch of its path: the first pushes the label, the next ones hand it on, the last
// takes it off. All switches compute the same path.
#include "lab/sources/shortest_tree.h"
#include "lab/sources/wanted.h"
#include "rib_codes.h"

#include <algorithm>

namespace ribkit::lab {

namespace {

using routes = clients::own_table<clients::label_table>;

/// Takes labels off, pushes others, and sends the frame out.
std::vector<uint32_t> hop(uint32_t if_index, uint32_t pops, const std::vector<uint32_t> &pushes) {
    std::vector<uint32_t> words{model::label_control(pops, static_cast<uint32_t>(pushes.size())), if_index};
    for (size_t i = 0; i < pushes.size(); i++) {
        words.push_back(model::pushed_label(pushes[i], i + 1 == pushes.size()));
    }
    return words;
}

void add(routes &to, const model::label_key &key, std::vector<uint32_t> ways) {
    const bool has_source = key.type == RIB_ROUTE_SRC_LABEL;
    to[key] = {has_source ? std::vector<uint32_t>{key.source} : std::vector<uint32_t>(), std::move(ways)};
}

/// The link by which a path to a switch leaves the local one; none where it does not pass it, or ends there.
std::optional<size_t> way_out(const fabric &f, const shortest_tree &from_start, size_t end) {
    for (size_t node = end; from_start.upwards[node];) {
        const size_t link = *from_start.upwards[node];
        node = other_end(f.links()[link], node);
        if (node == f.local_index()) {
            return link;
        }
    }
    return std::nullopt;
}

void add_tunnel(routes &to, const fabric &f, uint32_t vsan, const label_tunnel &tunnel) {
    const size_t local = f.local_index();
    const auto tree = shortest_tree_from(f, live_links(f, vsan), tunnel.from.owner);
    const auto link = way_out(f, tree, tunnel.to.owner);
    const bool begins = local == tunnel.from.owner;
    const bool ends = local == tunnel.to.owner && (begins || tree.upwards[local]);
    if (!link && !ends) {
        return;
    }
    model::label_key key{};
    key.vsan = vsan;
    key.type = begins ? RIB_ROUTE_SRC_LABEL : RIB_ROUTE_LABEL;
    if (begins) {
        key.source = tunnel.from.if_index;
    } else {
        key.match_count = 1;
        key.match[0] = model::matched_label(tunnel.label);
    }
    const uint32_t out = ends ? tunnel.to.if_index : interface_at(f.links()[*link], local);
    add(to, key, hop(out, begins ? 0 : 1, ends ? std::vector<uint32_t>() : std::vector{tunnel.label}));
}

void add_rule(routes &to, const fabric &f, uint32_t vsan, const label_rule &rule) {
    if (rule.via.owner == f.local_index() && leads_out(f, rule.via, vsan)) {
        model::label_key key = rule.key;
        key.vsan = vsan;
        add(to, key, hop(rule.via.if_index, key.match_count, rule.push));
    }
}

} // namespace

clients::wanted_tables<clients::label_table> label_routes(const fabric &f) {
    drawn_tables<clients::label_table> drawn;
    for (const declared_label &one : f.declared.labels()) {
        if (!one.up || !f.has_vsan(one.vsan)) {
            continue;
        }
        if (const auto *tunnel = std::get_if<label_tunnel>(&one.what)) {
            add_tunnel(drawn[one.vsan], f, one.vsan, *tunnel);
        } else {
            add_rule(drawn[one.vsan], f, one.vsan, std::get<label_rule>(one.what));
        }
    }
    return shared<clients::label_table>(f, std::move(drawn));
}

} // namespace ribkit::lab
