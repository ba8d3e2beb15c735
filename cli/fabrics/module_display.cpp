// A module knows of no owner but the RIB.
#include "cli/fabrics/module_display.h"

#include "base/text.h"
#include "cli/messages/displays.h"
#include "cli/rib/record_list.h"
#include "cli/rib/route_records.h"
#include "lab/run_text.h"
#include "rib_codes.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace ribkit::cli {

namespace {

constexpr uint32_t owner = RIB_CLIENT_RIB;
constexpr size_t spare = 64; ///< behind the last hop, which is displayed as long as it is

/// Entries of a module that are displayed, as records of the three tables.
struct shown_tables {
    record_list unicast, multicast, label;

    bool operator==(const shown_tables &) const = default;
};

template <class Kind, class Add>
record_list records_of(const fib::state &has, const table_choice &which, const Add &add) {
    record_list all;
    for (const auto &[key, entry] : has.entries<Kind>().all()) {
        if (which.shows(key.vsan, has.count())) {
            add(all, key, fib::table<Kind>::read(entry));
        }
    }
    return all;
}

void add_unicast(record_list &all, const model::route_key &key, const model::fib_unicast &what) {
    std::vector<model::next_hop> hops;
    for (auto ways = what.ways; !ways.empty();) {
        const auto way = model::take_label_hop(ways);
        hops.push_back({way[1], model::domain_of_ctrl(way[0])});
    }
    model::carried_bytes carried{};
    std::copy(what.carried.begin(), what.carried.end(), carried.begin());
    add_record(all, owner, key, model::route_values{what.metric, what.flag, hops, carried});
}

shown_tables tables_of(const fib::state &has, const table_choice &which) {
    return {
        records_of<fib::unicast>(has, which, add_unicast),
        records_of<fib::multicast>(
            has, which, [](record_list &all, const auto &key, const auto &what) { add_record(all, owner, key, what); }),
        records_of<fib::label>(has, which, [](record_list &all, const auto &key, const auto &what) {
            add_record(all, owner, key, model::label_values{{}, what.ways});
        })};
}

void display_records(const char *name, const record_list &all) {
    const display &kind = *find_display(name);
    uint32_t header = 1;
    for (size_t i = 0; i < all.size(); i++) {
        std::vector<uint8_t> record(all[i].begin(), all[i].end());
        record.resize(record.size() + spare);
        kind.show(&header, record.data());
    }
}

} // namespace

void display_modules(const lab::running_modules &modules, const table_choice &which) {
    std::vector<std::pair<size_t, shown_tables>> before;
    for (size_t i = 0; i < modules.size(); i++) {
        modules.read(i, [&](const fib::state &has) {
            shown_tables tables = tables_of(has, which);
            if (tables == shown_tables{}) {
                return;
            }
            const std::string title = lab::module_title(modules.about(i));
            const auto same =
                std::find_if(before.begin(), before.end(), [&](const auto &one) { return one.second == tables; });
            if (same != before.end()) {
                std::printf("\nThe tables of %s: the same as of module %u\n", title.c_str(),
                            modules.about(same->first).number);
                return;
            }
            std::printf("\nThe tables of %s\n", title.c_str());
            display_records("fcu", tables.unicast);
            display_records("fcm", tables.multicast);
            display_records("fcl", tables.label);
            before.emplace_back(i, std::move(tables));
        });
    }
}

} // namespace ribkit::cli
