// The rules of a fabric: what a name, a domain, a cost and a VSAN may be, and what may stand only once.
#include "lab/fabric.h"

#include "base/input_error.h"
#include "base/text.h"
#include "rib_codes.h"
#include "ribkit_platform.h"

#include <algorithm>
#include <cctype>

namespace ribkit::lab {

namespace {

bool is_name(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return std::isalnum(c) != 0 || c == '-' || c == '_' || c == '.';
    });
}

bool carries_links(uint32_t if_index) {
    const uint32_t kind = if_index >> 24;
    return kind == RIBKIT_IF_FC || kind == RIBKIT_IF_PORT_CHANNEL || kind == RIBKIT_IF_FC_TUNNEL;
}

void check_range(const char *what, uint32_t value, uint32_t last, uint32_t line) {
    if (value < 1 || value > last) {
        throw base::line_error(line, base::joined(what, " ", value, " is outside 1 to ", last));
    }
}

// Of a space: whole blocks, and enough of them.
bool is_multiple(uint32_t value, uint32_t block, uint32_t least) {
    return value >= least && value <= rib::largest_space && value % block == 0;
}

} // namespace

bool fabric_link::carries(uint32_t vsan) const { return std::binary_search(vsans.begin(), vsans.end(), vsan); }

void fabric::add_vsan(fabric_vsan vsan, uint32_t line) {
    check_range("VSAN", vsan.id, RIB_LAST_VSAN, line);
    for (const fabric_vsan &other : vsans_) {
        if (other.id == vsan.id) {
            throw base::line_error(line, base::joined("VSAN ", vsan.id, " is already there"));
        }
        if (!vsan.name.empty() && other.name == vsan.name) {
            throw base::line_error(line, base::joined("VSAN ", other.id, " has the name \"", vsan.name, "\" already"));
        }
    }
    if (vsan.is.latency > largest_latency) {
        throw base::line_error(line, base::joined("latency ", vsan.is.latency, " is more than ", largest_latency));
    }
    vsans_.push_back(std::move(vsan));
}

void fabric::set_spaces(std::optional<uint32_t> positions, std::optional<uint32_t> path_units, uint32_t line) {
    const auto least = static_cast<uint32_t>(vsans_.size()) * rib::position_block;
    if (positions && !is_multiple(*positions, rib::position_block, least)) {
        throw base::line_error(line, base::joined("positions ", *positions, " is no multiple of ", rib::position_block,
                                                  " from ", least, " (", rib::position_block, " for each VSAN) to ",
                                                  rib::largest_space));
    }
    if (path_units && !is_multiple(*path_units, rib::unit_block, rib::unit_block)) {
        throw base::line_error(line, base::joined("units ", *path_units, " is no multiple of ", rib::unit_block,
                                                  " from ", rib::unit_block, " to ", rib::largest_space));
    }
    positions_ = positions;
    path_units_ = path_units;
}

bool fabric::has_vsan(uint32_t id) const {
    return std::any_of(vsans_.begin(), vsans_.end(), [&](const fabric_vsan &vsan) { return vsan.id == id; });
}

void fabric::keep_vsans(const std::vector<uint32_t> &ids) {
    std::erase_if(vsans_,
                  [&](const fabric_vsan &vsan) { return std::find(ids.begin(), ids.end(), vsan.id) == ids.end(); });
}

std::map<uint32_t, model::vsan_attributes> fabric::vsan_records() const {
    std::map<uint32_t, model::vsan_attributes> records;
    for (const fabric_vsan &vsan : vsans_) {
        records.emplace(vsan.id, vsan.is);
    }
    return records;
}

std::vector<uint32_t> fabric::vsan_ids() const {
    std::vector<uint32_t> ids;
    for (const fabric_vsan &vsan : vsans_) {
        ids.push_back(vsan.id);
    }
    return ids;
}

rib::rib_spaces fabric::spaces() const {
    rib::rib_spaces spaces = rib::rib_spaces::for_vsans(static_cast<uint32_t>(vsans_.size()));
    spaces.positions = positions_.value_or(spaces.positions);
    spaces.path_units = path_units_.value_or(spaces.path_units);
    return spaces;
}

void fabric::add_switch(const std::string &switch_name, uint32_t domain, uint32_t line) {
    if (!is_name(switch_name)) {
        throw base::line_error(
            line,
            base::joined('"', switch_name, "\" is no name for a switch: letters, digits, '-', '_' and '.' make one"));
    }
    check_range("domain", domain, RIB_LAST_DOMAIN, line);
    if (const auto same = switch_by_name_.find(switch_name); same != switch_by_name_.end()) {
        throw base::line_error(line, base::joined("switch \"", switch_name, "\" is already there, on line ",
                                                  switches_[same->second].line));
    }
    if (const auto same = switch_by_domain_.find(domain); same != switch_by_domain_.end()) {
        throw base::line_error(
            line, base::joined("domain ", domain, " is already that of \"", switches_[same->second].name, '"'));
    }
    switch_by_name_[switch_name] = switches_.size();
    switch_by_domain_[domain] = switches_.size();
    switches_.push_back({switch_name, domain, line});
}

fabric_port fabric::parse_port(std::string_view text, const char *what, uint32_t line) const {
    const size_t blank = text.find(' ');
    const std::string_view owner = text.substr(0, blank);
    const auto found = switch_by_name_.find(owner);
    if (found == switch_by_name_.end()) {
        throw base::line_error(line, base::joined(what, " \"", owner, "\", but there is no such switch"));
    }
    if (blank == std::string_view::npos) {
        throw base::line_error(line,
                               base::joined(what, " \"", owner, "\" names no interface: \"", owner, " fc1/1\" would"));
    }
    fabric_port port{found->second, std::string(text.substr(blank + 1)), 0};
    if (if_index_parse(port.name.c_str(), &port.if_index) != 0 || !carries_links(port.if_index)) {
        throw base::line_error(
            line,
            base::joined('"', port.name,
                         "\" is no interface for a link: fcS/P (slot 1 to 255, port 1 to 65535), \"port-channel N\" (1 "
                         "to 65535) and fc-tunnelN (0 to 65535) are"));
    }
    return port;
}

std::vector<uint32_t> fabric::checked_vsans(const std::vector<uint32_t> &ids, uint32_t line) const {
    std::vector<uint32_t> known;
    std::transform(vsans_.begin(), vsans_.end(), std::back_inserter(known), [](const auto &vsan) { return vsan.id; });
    std::sort(known.begin(), known.end());
    if (ids.empty()) {
        return known;
    }
    std::vector<uint32_t> chosen = ids;
    std::sort(chosen.begin(), chosen.end());
    for (size_t i = 0; i < chosen.size(); i++) {
        check_range("VSAN", chosen[i], RIB_LAST_VSAN, line);
        if (!std::binary_search(known.begin(), known.end(), chosen[i])) {
            throw base::line_error(line, base::joined("link in VSAN ", chosen[i], ", but there is no such VSAN"));
        }
        if (i > 0 && chosen[i] == chosen[i - 1]) {
            throw base::line_error(line, base::joined("VSAN ", chosen[i], " is there twice"));
        }
    }
    return chosen;
}

void fabric::add_link(const link_text &text, uint32_t line) {
    check_range("cost", text.cost, largest_cost, line);
    fabric_link link{{parse_port(text.ends[0], "link to", line), parse_port(text.ends[1], "link to", line)},
                     text.cost,
                     text.up,
                     checked_vsans(text.vsans, line),
                     line};
    if (link.ends[0].owner == link.ends[1].owner) {
        throw base::line_error(line, base::joined("link from \"", switches_[link.ends[0].owner].name, "\" to itself"));
    }
    for (const fabric_port &end : link.ends) {
        const auto taken = link_by_port_.find({end.owner, end.if_index});
        if (taken != link_by_port_.end()) {
            throw base::line_error(
                line, base::joined(port_text(end), " has a link already, on line ", links_[taken->second].line));
        }
    }
    for (const fabric_port &end : link.ends) {
        link_by_port_[{end.owner, end.if_index}] = links_.size();
    }
    links_.push_back(std::move(link));
}

std::optional<size_t> fabric::link_at(const fabric_port &port) const {
    const auto found = link_by_port_.find({port.owner, port.if_index});
    return found == link_by_port_.end() ? std::nullopt : std::optional(found->second);
}

size_t fabric::find_link(std::string_view end, uint32_t line) const {
    const fabric_port port = parse_port(end, "link of", line);
    const auto found = link_at(port);
    if (!found) {
        throw base::line_error(line, base::joined(port_text(port), " has no link"));
    }
    return *found;
}

void fabric::add_event(std::chrono::milliseconds at, std::string_view link_end, std::optional<bool> up,
                       std::optional<uint32_t> cost, uint32_t line) {
    if (!up && !cost) {
        throw base::line_error(line, "the event changes nothing: give it a state or a cost");
    }
    if (cost) {
        check_range("cost", *cost, largest_cost, line);
    }
    insert({at, find_link(link_end, line), up, cost});
}

void fabric::add_event(const fabric_event &event, uint32_t line) {
    if (event.subject != event_subject::module) {
        declared.check(*this, event, line);
    }
    insert(event);
}

size_t fabric::module_named(std::string_view module_name, uint32_t number, uint32_t line) const {
    const auto found = std::find_if(modules.begin(), modules.end(), [&](const fabric_module &one) {
        return module_name.empty() ? one.number == number : one.name == module_name;
    });
    if (found == modules.end()) {
        throw base::line_error(line, module_name.empty() ? base::joined("there is no module ", number)
                                                         : base::joined("there is no module \"", module_name, '"'));
    }
    return static_cast<size_t>(found - modules.begin());
}

void fabric::forget_modules() {
    modules.clear();
    std::erase_if(events_, [](const fabric_event &event) { return event.subject == event_subject::module; });
}

void fabric::insert(const fabric_event &event) {
    const auto later = std::upper_bound(events_.begin(), events_.end(), event,
                                        [](const auto &a, const auto &b) { return a.at < b.at; });
    events_.insert(later, event);
}

void fabric::set_local(const std::string &switch_name, uint32_t line) {
    const auto found = switch_by_name_.find(switch_name);
    if (found == switch_by_name_.end()) {
        throw base::line_error(line,
                               base::joined("the local switch is \"", switch_name, "\", but there is no such switch"));
    }
    local_ = found->second;
}

void fabric::apply(const fabric_event &event) {
    if (event.subject == event_subject::module) {
        return event.room.give(modules[event.index].sizes);
    }
    if (event.subject != event_subject::link) {
        return declared.apply(event);
    }
    fabric_link &link = links_[event.index];
    link.up = event.up.value_or(link.up);
    link.cost = event.cost.value_or(link.cost);
}

std::string fabric::port_text(const fabric_port &port) const { return switches_[port.owner].name + " " + port.name; }

std::string fabric::link_name(const fabric_link &link) const {
    return port_text(link.ends[0]) + " - " + port_text(link.ends[1]);
}

} // namespace ribkit::lab
