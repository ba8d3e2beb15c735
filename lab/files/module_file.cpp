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

fabric_module read_module(const table_reader &table) {
    fabric_module module{table.number("number")};
    if (module.number < 1 || module.number > RIBKIT_MOST_MODULES) {
        throw base::line_error(table.line("number"),
                               base::joined("module ", module.number, " is outside 1 to ", RIBKIT_MOST_MODULES));
    }
    module.name = table.text("name", "");
    module.sizes.unicast = number_up_to(table, "unicast", module.sizes.unicast, most_entries);
    module.sizes.multicast = number_up_to(table, "multicast", module.sizes.multicast, most_entries);
    module.sizes.label = number_up_to(table, "label", module.sizes.label, most_entries);
    module.sizes.per_vsan = number_up_to(table, "per_vsan", module.sizes.per_vsan, most_entries);
    module.ports = number_up_to(table, "ports", usual_ports, most_ports);
    module.slow = slowness(table);
    return module;
}

} // namespace

std::vector<fabric_module> read_modules(const table_reader &top) {
    std::vector<fabric_module> all;
    top.each(
        "module", {"number", "name", "unicast", "multicast", "label", "per_vsan", "ports", "slow"},
        [&](const table_reader &table) {
            const fabric_module module = read_module(table);
            if (std::any_of(all.begin(), all.end(), [&](const auto &one) { return one.number == module.number; })) {
                throw base::line_error(table.line("number"),
                                       base::joined("module ", module.number, " is already there"));
            }
            all.push_back(module);
        });
    return all;
}

} // namespace ribkit::lab
