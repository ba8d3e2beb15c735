// Static routes are rows of the route table as a manager creates them: what is left out is filled in, and what makes no
// sense refused, by the functions for such rows.
#include "lab/files/declarations.h"

#include "base/input_error.h"
#include "base/near_names.h"
#include "base/text.h"
#include "lab/fabric.h"
#include "rib_codes.h"

#include <algorithm>
#include <iomanip>

namespace ribkit::lab {

namespace {

constexpr uint32_t static_protocol = 3;
constexpr uint32_t group_class = 16;

std::string hex(uint32_t fcid) { return base::joined("0x", std::hex, std::setfill('0'), std::setw(6), fcid); }

[[noreturn]] void refuse(uint32_t line, const std::string &why) { throw base::line_error(line, why); }

/// What is written down is of this fabric, and its name is nobody else's.
template <class Declared>
void check_head(const fabric &f, const std::vector<Declared> &others, const declared_route &head, const char *what) {
    if (!f.has_vsan(head.vsan)) {
        refuse(head.line, base::joined(what, " in VSAN ", head.vsan, ", but there is no such VSAN"));
    }
    for (const Declared &other : others) {
        if (!head.name.empty() && other.name == head.name) {
            refuse(head.line, base::joined(what, " \"", head.name, "\" is already there, on line ", other.line));
        }
    }
}

template <class Declared>
size_t named(const std::vector<Declared> &all, std::string_view name, const char *what, uint32_t line) {
    std::vector<std::string_view> names;
    for (const Declared &one : all) {
        if (one.name == name && !name.empty()) {
            return names.size();
        }
        names.push_back(one.name);
    }
    std::erase(names, "");
    refuse(line, base::joined("there is no ", what, " \"", name, '"', base::near_text(name, names)));
}

fcRouteEntry row_to(uint32_t fcid, uint32_t mask) {
    fcRouteEntry row{};
    row.vsan = 1;
    row.destination = fcid;
    row.mask = mask;
    return row;
}

/// VSAN and mask where they are left out are those of a repaired row.
fcRouteEntry filled(const static_text &text, const fabric_port &via, std::optional<uint32_t> neighbour) {
    fcRouteEntry row{};
    fcRouteEntry_set_defaults(&row);
    row.vsan = text.head.vsan;
    row.if_index = via.if_index;
    row.protocol = static_protocol;
    row.destination = text.fcid;
    fcRouteEntry repaired = row;
    fcRouteEntry_is_valid(FC_ROUTE_REPAIR, &repaired);
    row.mask = text.mask.value_or(repaired.mask);
    row.domain = text.domain.value_or(neighbour.value_or(row.domain));
    row.cost = text.cost.value_or(row.cost);
    return row;
}

/// The domain at the other end of an interface's link.
std::optional<uint32_t> neighbour_at(const fabric &f, const fabric_port &port) {
    const auto link = f.link_at(port);
    if (!link) {
        return std::nullopt;
    }
    const auto &ends = f.links()[*link].ends;
    return f.switches()[ends[ends[0].owner == port.owner ? 1 : 0].owner].domain;
}

std::string route_text(const fcRouteEntry &row) { return hex(row.destination) + '/' + hex(row.mask); }

void check_labels(const std::vector<uint32_t> &labels, size_t most, const char *what, uint32_t line) {
    if (labels.size() > most) {
        refuse(line, base::joined(what, " takes ", most, " labels at most"));
    }
    for (const uint32_t label : labels) {
        if (label > last_label) {
            refuse(line, base::joined("label ", label, " is outside 0 to ", last_label));
        }
    }
}

fabric_port free_port(const fabric &f, const std::string &text, const char *what, uint32_t line) {
    fabric_port port = f.parse_port(text, what, line);
    if (const auto link = f.link_at(port)) {
        refuse(line,
               base::joined(what, " \"", text, "\", but that interface has the link of line ", f.links()[*link].line));
    }
    return port;
}

label_tunnel read(const fabric &f, const tunnel_text &text, uint32_t line) {
    check_labels({text.label}, 1, "label", line);
    return {free_port(f, text.ends[0], "tunnel from", line), free_port(f, text.ends[1], "tunnel to", line), text.label};
}

label_rule read(const fabric &f, const rule_text &text, uint32_t line) {
    label_rule rule{{}, text.push, f.parse_port(text.via, "route via", line)};
    check_labels(text.match, model::most_match_labels, "match", line);
    check_labels(text.push, most_pushed, "push", line);
    if (!text.from.empty() && text.fcid) {
        refuse(line, "a label route matches an interface or an FC ID, not both");
    }
    if (!text.from.empty()) {
        const fabric_port from = f.parse_port(text.from, "route from", line);
        if (from.owner != rule.via.owner) {
            refuse(line, base::joined("route from \"", text.from, "\" via \"", text.via, "\", of another switch"));
        }
        rule.key.type = RIB_ROUTE_SRC_LABEL;
        rule.key.source = from.if_index;
    } else if (text.fcid) {
        fcRouteEntry row = row_to(*text.fcid, text.mask.value_or(RIB_MASK_DOMAIN));
        if (fcRouteEntry_is_valid(FC_ROUTE_CHECK, &row) == 0) {
            refuse(line, base::joined("no route leads to ", route_text(row)));
        }
        rule.key.type = RIB_ROUTE_FC_LABEL;
        rule.key.to = {row.destination & row.mask, row.mask};
    } else if (!text.match.empty()) {
        rule.key.type = RIB_ROUTE_LABEL;
    } else {
        refuse(line, "a label route matches something: give it from, match or fcid");
    }
    rule.key.match_count = static_cast<uint32_t>(text.match.size());
    std::transform(text.match.begin(), text.match.end(), rule.key.match.begin(), model::matched_label);
    return rule;
}

/// The keys that a declared route takes, each at a switch, or at all of them.
std::vector<std::pair<std::optional<size_t>, model::label_key>> keys_of(const declared_label &one) {
    if (const auto *rule = std::get_if<label_rule>(&one.what)) {
        return {{rule->via.owner, rule->key}};
    }
    const auto &tunnel = std::get<label_tunnel>(one.what);
    model::label_key source{.type = RIB_ROUTE_SRC_LABEL, .source = tunnel.from.if_index};
    model::label_key label{.type = RIB_ROUTE_LABEL, .match_count = 1, .match = {model::matched_label(tunnel.label)}};
    return {{tunnel.from.owner, source}, {std::nullopt, label}};
}

bool take_the_same(const declared_label &a, const declared_label &b) {
    for (const auto &[where, key] : keys_of(a)) {
        for (const auto &[other_where, other_key] : keys_of(b)) {
            if (a.vsan == b.vsan && key == other_key && (!where || !other_where || where == other_where)) {
                return true;
            }
        }
    }
    return false;
}

bool is_same_port(const fabric_port &a, const fabric_port &b) { return a.owner == b.owner && a.if_index == b.if_index; }

} // namespace

void declarations::add(const fabric &f, const static_text &text) {
    const uint32_t line = text.head.line;
    check_head(f, statics_, text.head, "static route");
    declared_static one{text.head, {}, f.parse_port(text.via, "static route via", line)};
    one.row = filled(text, one.via, neighbour_at(f, one.via));
    if (fcRouteEntry_is_valid(FC_ROUTE_CHECK_STATIC, &one.row) == 0) {
        refuse(line, base::joined(route_text(one.row), " by domain ", one.row.domain,
                                  " is no static route: FC IDs from 0x010000 to 0xefffff but those that end with ffff, "
                                  "masks 0xff0000, 0xffff00 and 0xffffff, and domains 1 to ",
                                  RIB_LAST_DOMAIN, " make one"));
    }
    one.row.destination &= one.row.mask;
    for (const declared_static &other : statics_) {
        if (other.vsan == one.vsan && other.via.owner == one.via.owner &&
            other.row.destination == one.row.destination && other.row.mask == one.row.mask) {
            refuse(line, base::joined(route_text(one.row), " has a static route already, on line ", other.line));
        }
    }
    statics_.push_back(std::move(one));
}

void declarations::add(const fabric &f, const group_text &text) {
    const uint32_t line = text.head.line;
    check_head(f, groups_, text.head, "group");
    const fcRouteEntry row = row_to(text.fcid, RIB_MASK_PORT);
    uint32_t route_class = 0;
    fcRouteEntry_route_type_get(&row, &route_class);
    if (route_class != group_class) {
        refuse(line, base::joined(hex(text.fcid), " is no group: 0xfffb00 to 0xfffbff and 0xffffff are"));
    }
    for (const declared_group &other : groups_) {
        if (other.vsan == text.head.vsan && other.fcid == text.fcid) {
            refuse(line, base::joined("group ", hex(text.fcid), " is already there, on line ", other.line));
        }
    }
    declared_group one{text.head, text.fcid, {}};
    for (const std::string &member : text.members) {
        fabric_port port = free_port(f, member, "member", line);
        if (std::any_of(one.members.begin(), one.members.end(),
                        [&](const fabric_port &other) { return is_same_port(port, other); })) {
            refuse(line, base::joined("member \"", member, "\" is there twice"));
        }
        one.members.push_back(std::move(port));
    }
    groups_.push_back(std::move(one));
}

void declarations::add(const fabric &f, const label_text &text) {
    const uint32_t line = text.head.line;
    check_head(f, labels_, text.head, "label route");
    declared_label one{text.head, {}};
    std::visit([&](const auto &what) { one.what = read(f, what, line); }, text.what);
    for (const declared_label &other : labels_) {
        if (take_the_same(one, other)) {
            refuse(line, base::joined("the label route of line ", other.line, " matches the same"));
        }
    }
    labels_.push_back(std::move(one));
}

void declarations::set_distance(uint32_t client, uint32_t distance, uint32_t line) {
    if (distance > most_distance) {
        refuse(line, base::joined("distance ", distance, " is outside 0 to ", most_distance));
    }
    if (!distances_.emplace(client, distance).second) {
        refuse(line, base::joined("client ", client, " has a distance already"));
    }
}

size_t declarations::static_named(std::string_view name, uint32_t line) const {
    return named(statics_, name, "static route", line);
}

size_t declarations::group_named(std::string_view name, uint32_t line) const {
    return named(groups_, name, "group", line);
}

size_t declarations::label_named(std::string_view name, uint32_t line) const {
    return named(labels_, name, "label route", line);
}

void declarations::check(const fabric &f, const fabric_event &event, uint32_t line) const {
    if (!event.up && !event.cost && !event.joins && !event.leaves && !event.to) {
        refuse(line, "the event changes nothing: give it a state, or what else becomes of its subject");
    }
    if (event.subject == event_subject::distance && event.cost.value_or(0) > most_distance) {
        refuse(line, base::joined("distance ", *event.cost, " is outside 0 to ", most_distance));
    }
    if (event.joins && f.link_at(*event.joins)) {
        refuse(line, base::joined(f.port_text(*event.joins), " has a link: no member can join there"));
    }
    if (event.to && !std::holds_alternative<label_tunnel>(labels_[event.index].what)) {
        refuse(line,
               base::joined("label route \"", labels_[event.index].name, "\" is no tunnel: it ends nowhere else"));
    }
    if (event.to && f.link_at(*event.to)) {
        refuse(line, base::joined(f.port_text(*event.to), " has a link: no tunnel can end there"));
    }
}

void declarations::apply(const fabric_event &event) {
    switch (event.subject) {
    case event_subject::link:
    case event_subject::module:
        return;
    case event_subject::static_route: {
        declared_static &one = statics_[event.index];
        one.up = event.up.value_or(one.up);
        one.row.cost = event.cost.value_or(one.row.cost);
        return;
    }
    case event_subject::group: {
        declared_group &one = groups_[event.index];
        one.up = event.up.value_or(one.up);
        if (event.leaves) {
            std::erase_if(one.members, [&](const fabric_port &port) { return is_same_port(port, *event.leaves); });
        }
        if (event.joins) {
            std::erase_if(one.members, [&](const fabric_port &port) { return is_same_port(port, *event.joins); });
            one.members.push_back(*event.joins);
        }
        return;
    }
    case event_subject::label: {
        declared_label &one = labels_[event.index];
        one.up = event.up.value_or(one.up);
        if (event.to) {
            std::get<label_tunnel>(one.what).to = *event.to;
        }
        return;
    }
    case event_subject::distance:
        distances_[static_cast<uint32_t>(event.index)] = event.cost.value_or(0);
        return;
    }
}

std::optional<uint32_t> declarations::distance_of(uint32_t client) const {
    const auto found = distances_.find(client);
    return found == distances_.end() ? std::nullopt : std::optional(found->second);
}

} // namespace ribkit::lab
