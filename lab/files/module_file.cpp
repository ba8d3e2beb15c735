// What is left out is as large as a module usually is.
#include "lab/files/module_file.h"

#include "base/duration.h"
#include "ribkit_rib.h"

#include <algorithm>

namespace ribkit::lab {

namespace {

constexpr uint32_t most_entries = 1U << 24;
constexpr uint32_t most_ports = 255;

uint32_t number_up_to(const table_reader &table, const char *key, uint32_t usual, uint32_t most) {
    const uint32_t value = table.optional_number(key).value_or(usual);
    if (value > most) {
        throw base::line_error(table.line(key), base::joined(key, ' ', value, " is more than ", most));
    }
    return value;
}

std::chrono::milliseconds slowness(const table_reader &table) {
    const std::string text = table.text("slow", "0ms");
    const auto slow = base::parse_duration(text);
    if (!slow) {
        throw base::line_error(table.line("slow"),
                               base::joined('"', text, "\" is no time: \"3s\", \"250ms\" and \"1.5m\" are"));
    }
    return *slow;
}

std::optional<uint32_t> optional_up_to(const table_reader &table, const char *key, uint32_t most) {
    return table.has(key) ? std::optional(number_up_to(table, key, 0, most)) : std::nullopt;
}

module_room read_room(const table_reader &table) {
    return {.unicast = optional_up_to(table, "unicast", most_entries),
            .multicast = optional_up_to(table, "multicast", most_entries),
            .label = optional_up_to(table, "label", most_entries),
            .per_vsan = optional_up_to(table, "per_vsan", most_entries)};
}

module_turn read_turn(const table_reader &event) {
    const std::string state = event.text("state");
    const auto *const found = std::find(module_turn_names.begin(), module_turn_names.end(), state);
    if (found == module_turn_names.end()) {
        throw base::line_error(event.line("state"), base::joined("state of a module is \"up\", \"down\", \"upgrading\" "
                                                                 "or \"restarting\", not \"",
                                                                 state, '"'));
    }
    return static_cast<module_turn>(found - module_turn_names.begin());
}

void refuse_twice(const std::vector<fabric_module> &all, const fabric_module &module, const table_reader &table) {
    for (const fabric_module &one : all) {
        if (one.number == module.number) {
            throw base::line_error(table.line("number"), base::joined("module ", module.number, " is already there"));
        }
        if (!module.name.empty() && one.name == module.name) {
            throw base::line_error(table.line("name"),
                                   base::joined("module ", one.number, " has the name \"", one.name, "\" already"));
        }
    }
}

fabric_module read_module(const table_reader &table) {
    fabric_module module{table.number("number")};
    if (module.number < 1 || module.number > RIBKIT_MOST_MODULES) {
        throw base::line_error(table.line("number"),
                               base::joined("module ", module.number, " is outside 1 to ", RIBKIT_MOST_MODULES));
    }
    module.name = table.text("name", "");
    read_room(table).give(module.sizes);
    module.ports = number_up_to(table, "ports", usual_ports, most_ports);
    module.slow = slowness(table);
    return module;
}

} // namespace

std::vector<fabric_module> read_modules(const table_reader &top) {
    std::vector<fabric_module> all;
    top.each("module", {"number", "name", "unicast", "multicast", "label", "per_vsan", "ports", "slow"},
             [&](const table_reader &table) {
                 const fabric_module module = read_module(table);
                 refuse_twice(all, module, table);
                 all.push_back(module);
             });
    return all;
}

void read_module_event(fabric &result, std::chrono::milliseconds at, const table_reader &event) {
    const name_or_number of = event.either("module");
    fabric_event read{at, result.module_named(of.name, of.number.value_or(0), event.line("module")), {}, {}};
    read.subject = event_subject::module;
    event.refuse_beside("module", {"cost", "join", "leave", "to", "distance"});
    read.turn = read_turn(event);
    if (read.turn != module_turn::restarts) {
        event.refuse_beside(base::joined("state \"", module_turn_name(read.turn), '"'), {"room"});
    }
    event.inside("room", {"unicast", "multicast", "label", "per_vsan"},
                 [&](const table_reader &room) { read.room = read_room(room); });
    result.add_event(read, event.line());
}

} // namespace ribkit::lab
