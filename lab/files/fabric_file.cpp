// From TOML to a fabric: which tables and keys there are. The rules of the fabric itself are those of the model.
#include "lab/files/fabric_file.h"

#include "base/duration.h"
#include "base/input_error.h"
#include "base/input_file.h"
#include "base/text.h"
#include "lab/files/declared_file.h"
#include "lab/files/module_file.h"
#include "lab/files/nesting.h"
#include "lab/files/policy_file.h"
#include "lab/files/table_reader.h"

namespace ribkit::lab {

namespace {

void read_link(fabric &result, const table_reader &table) {
    const std::vector<std::string> ends = table.texts("ends");
    if (ends.size() != 2) {
        throw base::line_error(table.line("ends"), "a link has two ends: [\"edge-1 fc1/1\", \"core-1 fc1/1\"]");
    }
    link_text link;
    link.ends = {ends[0], ends[1]};
    link.cost = table.optional_number("cost").value_or(default_cost);
    link.up = table.state("state").value_or(true);
    link.vsans = table.optional_numbers("vsans");
    result.add_link(link, table.line());
}

/// What a RIB knows of a VSAN beside its routes.
model::vsan_attributes vsan_attributes_in(const table_reader &table) {
    model::vsan_attributes is;
    if (table.either_of("state", "active", "suspended", "active") == "suspended") {
        is.state = model::vsan_state::suspended;
    }
    if (table.either_of("balance", "SID/DID", "SID/DID/OXID", "SID/DID/OXID") == "SID/DID") {
        is.balance = model::flow_balance::source_and_destination;
    }
    is.in_order = table.flag("in_order");
    is.latency = table.optional_number("latency").value_or(is.latency);
    return is;
}

void read_event(fabric &result, const table_reader &table) {
    const std::string at = table.text("at");
    const auto moment = base::parse_duration(at);
    if (!moment) {
        throw base::line_error(table.line("at"),
                               base::joined('"', at, "\" is no time: \"3s\", \"250ms\" and \"1.5m\" are, up to 1440m"));
    }
    if (names_declaration(table)) {
        return read_declared_event(result, *moment, table);
    }
    if (table.has("module")) {
        return read_module_event(result, *moment, table);
    }
    table.refuse_beside("link", {"join", "leave", "to", "distance"});
    result.add_event(*moment, table.text("link"), table.state("state"), table.optional_number("cost"), table.line());
}

fabric read_fabric(const toml::table &document, const std::string &file) {
    const table_reader top(document, "the file",
                           {"name", "local", "roles", "vsan", "switch", "link", "static", "group", "label", "distance",
                            "event", "rib", "module", "quota", "who"});
    fabric result;
    result.name = top.text("name", file);
    top.each("vsan", {"id", "name", "state", "balance", "in_order", "latency"}, [&](const table_reader &table) {
        result.add_vsan({table.number("id"), table.text("name", ""), vsan_attributes_in(table)}, table.line("id"));
    });
    top.one("rib", {"positions", "units"}, [&](const table_reader &table) {
        result.set_spaces(table.optional_number("positions"), table.optional_number("units"), table.line());
    });
    top.each("switch", {"name", "domain"}, [&](const table_reader &table) {
        result.add_switch(table.text("name"), table.number("domain"), table.line());
    });
    if (result.vsans().empty() || result.switches().empty()) {
        throw base::line_error(1, "a fabric needs a [[vsan]] and a [[switch]] at least");
    }
    top.each("link", {"ends", "cost", "state", "vsans"}, [&](const table_reader &table) { read_link(result, table); });
    result.set_local(top.text("local"), top.line("local"));
    read_declarations(result, top);
    read_roles(result, top);
    result.modules = read_modules(top);
    top.each("event",
             {"at", "link", "static", "group", "label", "client", "module", "state", "cost", "join", "leave", "to",
              "distance", "room"},
             [&](const table_reader &table) { read_event(result, table); });
    result.policy = read_policy(top);
    return result;
}

// Calls `read` with the document.
template <typename Read> auto read_document(std::string_view text, const std::string &file, const Read &read) {
    try {
        refuse_deep_nesting(text);
        return read(toml::parse(text));
    } catch (const toml::parse_error &error) {
        throw base::input_error(
            base::joined(file, ':', table_reader::line_of(error.source()), ": ", error.description()));
    } catch (const base::line_error &error) {
        throw base::input_error(base::joined(file, ':', error.line, ": ", error.what()));
    }
}

} // namespace

fabric parse_fabric(std::string_view text, const std::string &file) {
    return read_document(text, file, [&](const toml::table &document) { return read_fabric(document, file); });
}

fabric read_fabric_file(const std::string &path) {
    return parse_fabric(base::read_input(path), base::input_title(path));
}

rib::rib_policy parse_policy(std::string_view text, const std::string &file) {
    return read_document(text, file, [](const toml::table &document) {
        return read_policy(table_reader(document, "the file", {"quota", "who"}));
    });
}

rib::rib_policy read_policy_file(const std::string &path) {
    return parse_policy(base::read_input(path), base::input_title(path));
}

} // namespace ribkit::lab
