// Every word is written and read where it stands, in network order.
#include "protocol/fib/fib_messages.h"

#include "codec/path_kind.h"
#include "rib_codes.h"

#include <algorithm>

namespace ribkit::protocol {

using codec::view;
using codec::writer;

namespace {

/// The bits of a control word that are a path's own; the others count its labels.
constexpr uint32_t own_bits = 0xff00ffff;

/// Adds the first of some ways to a path's slots, with what is more in each control word.
template <class Path> void add_ways(const Path &path, std::span<const uint32_t> ways) {
    for (uint32_t count = 0; !ways.empty() && count < model::most_paths; count++) {
        const std::span<const uint32_t> way = model::take_label_hop(ways);
        const auto slot = path.template add<"path">();
        slot.template set<"path">(way[0] & own_bits).template set<use<wire::path_slot, "intf">>(way[1]);
        for (const uint32_t label : way.subspan(2)) {
            slot.template add<"hop">().template set<"hop">(label);
        }
    }
}

/// The way of a label route that leaves by an interface; empty where there is none.
std::span<const uint32_t> way_by(std::span<const uint32_t> ways, uint32_t if_index) {
    while (!ways.empty()) {
        const std::span<const uint32_t> way = model::take_label_hop(ways);
        if (way[1] == if_index) {
            return way;
        }
    }
    return {};
}

void add_hop(const writer<wire::fcu_path> &path, const model::next_hop &hop, std::span<const uint32_t> labelled) {
    const auto slot = path.add<"path">();
    const uint32_t ctrl = labelled.empty() ? 0 : labelled[0] & own_bits;
    slot.set<"path">(ctrl | model::ctrl_of_domain(hop.domain)).set<use<wire::path_slot, "intf">>(hop.if_index);
    for (const uint32_t label : labelled.subspan(labelled.empty() ? 0 : 2)) {
        slot.add<"hop">().set<"hop">(label);
    }
}

/// All of a unicast path but its ways. Its kind follows from the rest.
void write_fixed(const writer<wire::fcu_path> &path, const model::destination &to, const model::fib_unicast &what) {
    const auto &[rctl, rctl_mask, rewrite, more] = what.carried;
    path.set<"fcid">(to.fcid).set<"mask">(to.mask).set<use<wire::fcu_path, "rctl">>(rctl).set<"special">(rctl_mask);
    path.set<use<wire::fcu_path, "rewrite">>(rewrite).set<use<wire::fcu_path, "more">>(more);
    path.set<use<wire::fcu_path, "metric">>(what.metric).set<use<wire::fcu_path, "flag">>(what.flag);
    if (path) {
        path.set<"kind">(codec::sent_kind(path.read()));
    }
}

void write_key(const writer<wire::fcl_path> &path, const model::label_key &key) {
    path.set<use<wire::fcl_path, "type">>(fib_type_of(key)).set<use<wire::fcl_path, "source">>(key.source);
    path.set<use<wire::fcl_path, "fcid">>(key.to.fcid).set<use<wire::fcl_path, "mask">>(key.to.mask);
    for (uint32_t i = 0; i < key.match_count; i++) {
        path.add<"label">().set<"label">(key.match[i]);
    }
}

/// The ways of a path's slots, as words.
template <class Path> std::span<const uint32_t> ways_of(Path path, way_words &ways) {
    size_t used = 0;
    for (const auto slot : path.template list<"path">()) {
        ways[used++] = slot.template get<"path">();
        ways[used++] = slot.template get<use<wire::path_slot, "intf">>();
        for (const auto hop : slot.template list<"hop">()) {
            ways[used++] = hop.template get<"hop">();
        }
    }
    return std::span<const uint32_t>(ways).first(used);
}

} // namespace

bool fits_path(const model::label_values &what) {
    for (auto ways = what.hops; !ways.empty();) {
        if (model::take_label_hop(ways).size() > 2 + model::most_path_labels) {
            return false;
        }
    }
    return true;
}

bool add_path(unicast_fib_update &update, const model::destination &to, const model::route_values &what,
              const model::label_values &labels) {
    return update.add([&](const writer<wire::fcu_path> &path) {
        model::fib_unicast fixed{.metric = what.metric, .flag = what.flag};
        std::copy_n(what.carried.begin(), fixed.carried.size(), fixed.carried.begin());
        write_fixed(path, to, fixed);
        for (const model::next_hop &hop : what.hops.first(std::min<size_t>(what.hops.size(), model::most_paths))) {
            add_hop(path, hop, way_by(labels.hops, hop.if_index));
        }
    });
}

bool add_path(unicast_fib_update &update, const model::destination &to, const model::fib_unicast &what) {
    return update.add([&](const writer<wire::fcu_path> &path) {
        write_fixed(path, to, what);
        add_ways(path, what.ways);
    });
}

bool add_path(multicast_fib_update &update, const model::destination &to, const model::fib_multicast &what) {
    return update.add([&](const writer<wire::fcm_path> &path) {
        path.set<use<wire::fcm_path, "fcid">>(to.fcid).set<use<wire::fcm_path, "mask">>(to.mask);
        for (const uint32_t member : what.members) {
            path.add<"member">().set<"intf">(member);
        }
    });
}

bool add_path(label_fib_update &update, const model::label_key &key, const model::fib_label &what) {
    return update.add([&](const writer<wire::fcl_path> &path) {
        write_key(path, key);
        add_ways(path, what.ways);
    });
}

bool add_path(label_fib_update &update, const model::label_key &key, const model::label_values &what) {
    return add_path(update, key, model::fib_label{what.hops});
}

bool add_key(unicast_fib_update &update, const model::destination &to) {
    return add_path(update, to, model::fib_unicast{});
}
bool add_key(multicast_fib_update &update, const model::destination &to) {
    return add_path(update, to, model::fib_multicast{});
}
bool add_key(label_fib_update &update, const model::label_key &key) {
    return add_path(update, key, model::fib_label{});
}

model::fib_head head_of(view<wire::fib_update> head) {
    return {head.get<use<wire::fib_update, "oper">>(), head.get<use<wire::fib_update, "vsan">>(),
            head.get<use<wire::fib_update, "sequence">>()};
}

uint32_t paths_of(view<wire::fib_update> head) { return head.get<use<wire::fib_update, "n_path">>(); }

unicast_path path_of(view<wire::fcu_path> path, way_words &ways) {
    const uint32_t mask = path.get<"mask">();
    return {{path.get<"fcid">() & mask, mask},
            {codec::received_kind(path),
             {path.get<use<wire::fcu_path, "rctl">>(), path.get<"special">(),
              path.get<use<wire::fcu_path, "rewrite">>(), path.get<use<wire::fcu_path, "more">>()},
             path.get<use<wire::fcu_path, "metric">>(),
             path.get<use<wire::fcu_path, "flag">>(),
             ways_of(path, ways)}};
}

multicast_path path_of(view<wire::fcm_path> path, std::vector<uint32_t> &members) {
    members.clear();
    for (const auto member : path.list<"member">()) {
        members.push_back(member.get<"intf">());
    }
    const uint32_t mask = path.get<use<wire::fcm_path, "mask">>();
    return {{path.get<use<wire::fcm_path, "fcid">>() & mask, mask}, std::span<const uint32_t>(members)};
}

label_path path_of(view<wire::fcl_path> path, uint32_t vsan, way_words &ways) {
    model::label_key key{.vsan = vsan,
                         .type = route_type_of(path.get<use<wire::fcl_path, "type">>()),
                         .source = path.get<use<wire::fcl_path, "source">>(),
                         .to = {path.get<use<wire::fcl_path, "fcid">>(), path.get<use<wire::fcl_path, "mask">>()}};
    for (const auto match : path.list<"label">()) {
        key.match[key.match_count++] = match.get<"label">();
    }
    return {key, {ways_of(path, ways)}};
}

uint32_t fib_type_of(const model::label_key &key) {
    switch (key.type) {
    case RIB_ROUTE_SRC_LABEL:
        return FIB_ROUTE_SRC_LABEL;
    case RIB_ROUTE_FC_LABEL:
        return FIB_ROUTE_FC_LABEL;
    default:
        return key.match_count == 2 ? FIB_ROUTE_2_LABELS : FIB_ROUTE_1_LABEL;
    }
}

uint32_t route_type_of(uint32_t fib_type) {
    switch (fib_type) {
    case FIB_ROUTE_SRC_LABEL:
        return RIB_ROUTE_SRC_LABEL;
    case FIB_ROUTE_1_LABEL:
    case FIB_ROUTE_2_LABELS:
        return RIB_ROUTE_LABEL;
    case FIB_ROUTE_FC_LABEL:
        return RIB_ROUTE_FC_LABEL;
    default:
        return 0;
    }
}

} // namespace ribkit::protocol
