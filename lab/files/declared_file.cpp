// Which keys there are, and which of them go together; the rules of what is declared are those of the declarations.
#include "lab/files/declared_file.h"

#include "base/input_error.h"
#include "base/text.h"
#include "lab/files/policy_file.h"
#include "lab/files/table_reader.h"
#include "lab/route_role.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ribkit::lab {

namespace {

declared_route read_head(const table_reader &table) {
    return {table.text("name", ""), table.optional_number("vsan").value_or(1), table.state("state").value_or(true),
            table.line()};
}

void read_static(fabric &result, const table_reader &table) {
    result.declared.add(result,
                        static_text{read_head(table), table.number("fcid"), table.optional_number("mask"),
                                    table.optional_number("domain"), table.optional_number("cost"), table.text("via")});
}

void read_group(fabric &result, const table_reader &table) {
    result.declared.add(result, group_text{read_head(table), table.number("fcid"), table.texts("members")});
}

tunnel_text read_tunnel(const table_reader &table) {
    table.refuse_beside("tunnel", {"from", "match", "fcid", "mask", "push", "via"});
    tunnel_text text{table.texts("tunnel"), table.number("label")};
    if (text.ends.size() != 2) {
        throw base::line_error(table.line("tunnel"), "a tunnel has two ends: [\"edge-1 fc1/9\", \"edge-3 fc1/9\"]");
    }
    return text;
}

rule_text read_rule(const table_reader &table) {
    table.refuse_beside("via", {"label"});
    return {table.text("from", ""),        table.optional_numbers("match"), table.optional_numbers("push"),
            table.optional_number("fcid"), table.optional_number("mask"),   table.text("via")};
}

void read_label(fabric &result, const table_reader &table) {
    label_text text{read_head(table), {}};
    if (table.has("tunnel")) {
        text.what = read_tunnel(table);
    } else {
        text.what = read_rule(table);
    }
    result.declared.add(result, text);
}

std::optional<fabric_port> read_port(const fabric &f, const table_reader &table, const char *key) {
    return table.has(key) ? std::optional(f.parse_port(table.text(key), key, table.line(key))) : std::nullopt;
}

} // namespace

void read_declarations(fabric &result, const table_reader &top) {
    top.each("static", {"name", "vsan", "state", "fcid", "mask", "via", "domain", "cost"},
             [&](const table_reader &table) { read_static(result, table); });
    top.each("group", {"name", "vsan", "state", "fcid", "members"},
             [&](const table_reader &table) { read_group(result, table); });
    top.each("label", {"name", "vsan", "state", "tunnel", "label", "from", "match", "fcid", "mask", "push", "via"},
             [&](const table_reader &table) { read_label(result, table); });
    top.each("distance", {"client", "distance"}, [&](const table_reader &table) {
        result.declared.set_distance(read_client(table, "client"), table.number("distance"), table.line("distance"));
    });
}

void read_roles(fabric &result, const table_reader &top) {
    if (!top.has("roles")) {
        return;
    }
    for (const std::string &name : top.texts("roles")) {
        if (std::find(role_names.begin(), role_names.end(), name) == role_names.end()) {
            throw base::line_error(
                top.line("roles"),
                base::joined("there is no role \"", name, "\": fspf, static, mcast, label and domain are roles"));
        }
        if (std::find(result.roles.begin(), result.roles.end(), name) != result.roles.end()) {
            throw base::line_error(top.line("roles"), base::joined("role \"", name, "\" is there twice"));
        }
        result.roles.push_back(name);
    }
}

bool names_declaration(const table_reader &event) {
    constexpr std::array<std::string_view, 6> subjects{"link", "static", "group", "label", "client", "module"};
    std::string_view first;
    for (const std::string_view one : subjects) {
        if (event.has(one) && !first.empty()) {
            throw base::line_error(event.line(one), base::joined("an event has one subject, ", first, " or ", one));
        }
        first = event.has(one) ? one : first;
    }
    if (!first.empty() && first != "module") {
        event.refuse_beside(first, {"room"});
    }
    return !first.empty() && first != "link" && first != "module";
}

void read_declared_event(fabric &result, std::chrono::milliseconds at, const table_reader &event) {
    fabric_event read{at, 0, event.state("state"), {}};
    const declarations &declared = result.declared;
    if (event.has("static")) {
        event.refuse_beside("static", {"join", "leave", "to", "distance"});
        read.subject = event_subject::static_route;
        read.index = declared.static_named(event.text("static"), event.line("static"));
        read.cost = event.optional_number("cost");
    } else if (event.has("group")) {
        event.refuse_beside("group", {"cost", "to", "distance"});
        read.subject = event_subject::group;
        read.index = declared.group_named(event.text("group"), event.line("group"));
        read.joins = read_port(result, event, "join");
        read.leaves = read_port(result, event, "leave");
    } else if (event.has("label")) {
        event.refuse_beside("label", {"cost", "join", "leave", "distance"});
        read.subject = event_subject::label;
        read.index = declared.label_named(event.text("label"), event.line("label"));
        read.to = read_port(result, event, "to");
    } else {
        event.refuse_beside("client", {"state", "cost", "join", "leave", "to"});
        read.subject = event_subject::distance;
        read.index = read_client(event, "client");
        read.cost = event.number("distance");
    }
    result.add_event(read, event.line());
}

} // namespace ribkit::lab
