// Words are read for the table that they name; what that table has no use for is refused rather than left out.
#include "cli/rib/route_request.h"

#include "base/input_error.h"
#include "base/text.h"
#include "cli/rib/words.h"
#include "clients/route_update.h"
#include "rib_codes.h"

#include <ios>
#include <type_traits>

namespace ribkit::cli {

namespace {

using clients::label_table;
using clients::multicast_table;
using clients::unicast_table;

void refuse(bool given, const char *option, const char *table) {
    if (given) {
        throw base::input_error(base::joined(option, ": is nothing that a ", table, " route has"));
    }
}

void need(bool given, const char *what) {
    if (!given) {
        throw base::input_error(base::joined(what, " is required"));
    }
}

uint32_t vsan_of(const route_words &words) {
    need(!words.vsan.empty(), "--vsan");
    const uint32_t vsan = number_in(words.vsan, "VSAN", RIB_LAST_VSAN);
    if (vsan == 0) {
        throw base::input_error("0 is no VSAN: they are numbered from 1");
    }
    return vsan;
}

std::vector<uint32_t> interfaces_of(const std::vector<std::string> &names) {
    std::vector<uint32_t> all;
    for (const std::string &name : names) {
        all.push_back(interface_in(name));
    }
    return all;
}

route_of_table<unicast_table> unicast_of(const route_words &words) {
    refuse(!words.matches.empty(), "--match", "unicast");
    refuse(!words.sources.empty(), "--source", "unicast");
    need(!words.where.empty(), "a destination, such as 0x650000/0xff0000,");
    route_of_table<unicast_table> route{{vsan_of(words), destination_in(words.where)}, {}};
    if (!words.domains.empty() && words.domains.size() != words.vias.size()) {
        throw base::input_error("--domain: is given for each --via or for none");
    }
    for (size_t i = 0; i < words.vias.size(); i++) {
        const uint32_t domain = words.domains.empty() ? 0 : number_in(words.domains[i], "domain", RIB_LAST_DOMAIN);
        route.what.hops.push_back({interface_in(words.vias[i]), domain});
    }
    route.what.metric = words.cost.empty() ? 0 : number_in(words.cost, "cost");
    route.what.flag = (words.direct ? RIB_FLAG_DIRECT : 0) | (words.is_volatile ? RIB_FLAG_VOLATILE : 0);
    return route;
}

void refuse_unicast_words(const route_words &words, const char *table) {
    refuse(!words.domains.empty(), "--domain", table);
    refuse(!words.cost.empty(), "--cost", table);
    refuse(words.direct, "--direct", table);
    refuse(words.is_volatile, "--volatile", table);
}

route_of_table<multicast_table> multicast_of(const route_words &words) {
    refuse_unicast_words(words, "multicast");
    refuse(!words.matches.empty(), "--match", "multicast");
    refuse(!words.sources.empty(), "--source", "multicast");
    need(!words.where.empty(), "a group's FC ID, or 0 for the distribution tree,");
    return {{vsan_of(words), destination_in(words.where)}, {interfaces_of(words.vias)}};
}

/// Adds a hop as take_label_hop has it: "fc1/1+0x64100".
void add_label_hop(std::vector<uint32_t> &hops, const std::string &text) {
    const size_t plus = text.find('+');
    std::vector<uint32_t> labels;
    for (size_t at = plus; at != std::string::npos;) {
        const size_t next = text.find('+', at + 1);
        labels.push_back(number_in(text.substr(at + 1, next - at - 1), "label"));
        at = next;
    }
    constexpr size_t most = UINT8_MAX;
    if (labels.size() > most) {
        throw base::input_error("--via: at most 255 labels are pushed");
    }
    hops.push_back(static_cast<uint32_t>(labels.size()) << 16);
    hops.push_back(interface_in(text.substr(0, plus)));
    hops.insert(hops.end(), labels.begin(), labels.end());
}

model::label_key label_key_of(const route_words &words) {
    model::label_key key{.vsan = vsan_of(words)};
    if (words.matches.size() > model::most_match_labels) {
        throw base::input_error("--match: at most two labels are matched");
    }
    for (const std::string &label : words.matches) {
        key.match[key.match_count++] = number_in(label, "label");
    }
    if (!words.where.empty()) {
        refuse(!words.sources.empty(), "--source", "destination's label");
        key.type = RIB_ROUTE_FC_LABEL;
        key.to = destination_in(words.where);
    } else if (!words.sources.empty()) {
        key.type = RIB_ROUTE_SRC_LABEL;
        key.source = interface_in(words.sources.front());
    } else {
        need(key.match_count != 0, "a destination, --source or --match");
        key.type = RIB_ROUTE_LABEL;
    }
    return key;
}

route_of_table<label_table> label_of(const route_words &words) {
    refuse_unicast_words(words, "label");
    if (words.sources.size() > model::most_sources) {
        throw base::input_error(base::joined("--source: at most ", model::most_sources, " interfaces are matched"));
    }
    route_of_table<label_table> route{label_key_of(words), {interfaces_of(words.sources), {}}};
    for (const std::string &via : words.vias) {
        add_label_hop(route.what.hops, via);
    }
    return route;
}

} // namespace

std::string where_text(const model::route_key &key) {
    return base::joined("route ", destination_text(key.to), " of VSAN ", key.vsan);
}

std::string where_text(const model::label_key &key) {
    std::string text = "route";
    if (key.type == RIB_ROUTE_FC_LABEL) {
        text.append(1, ' ').append(destination_text(key.to));
    } else if (key.type == RIB_ROUTE_SRC_LABEL) {
        text.append(" from ").append(interface_text(key.source));
    }
    for (uint32_t i = 0; i < key.match_count; i++) {
        text += base::joined(i == 0 ? " of label" : " and", " 0x", std::hex, key.match[i]);
    }
    return base::joined(text, key.match_count != 0 ? " in VSAN " : " of VSAN ", key.vsan);
}

route_request request_of(const route_words &words) {
    if (words.multicast && words.label) {
        throw base::input_error("--mcast and --label: a route is in one of the tables");
    }
    route_request request;
    request.deletes = words.action == "del";
    request.has_mask = words.where.find('/') != std::string::npos;
    if (words.action == "add") {
        need(!words.vias.empty(), "--via");
    } else {
        refuse(!words.vias.empty(), "--via", "removed or wanted");
    }
    if (words.multicast) {
        request.route = multicast_of(words);
    } else if (words.label) {
        request.route = label_of(words);
    } else {
        request.route = unicast_of(words);
    }
    return request;
}

std::string text_of(const route_request &request) {
    return std::visit(
        [](const auto &one) {
            return base::joined(std::decay_t<decltype(one)>::table::name, ' ', where_text(one.key));
        },
        request.route);
}

std::vector<uint8_t> update_of(const route_request &request, uint32_t client) {
    const uint32_t action = request.deletes ? RIB_ACTION_DELETE : RIB_ACTION_ADD;
    return std::visit(
        [&](const auto &one) {
            using values = typename std::decay_t<decltype(one)>::table::values;
            return clients::update_with(client, action, one.key, values(one.what));
        },
        request.route);
}

uint32_t opcode_of(const route_request &request) {
    return std::visit([](const auto &one) { return std::decay_t<decltype(one)>::table::update; }, request.route);
}

} // namespace ribkit::cli
