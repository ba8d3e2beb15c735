// A module knows of no owner but the RIB. Few entries are displayed; of more it is said how many.
#include "cli/fabrics/module_display.h"

#include "base/text.h"
#include "cli/messages/displays.h"
#include "cli/rib/record_list.h"
#include "cli/rib/route_records.h"
#include "rib_codes.h"

#include <algorithm>
#include <cstdio>

namespace ribkit::cli {

namespace {

constexpr uint32_t owner = RIB_CLIENT_RIB;
constexpr uint32_t few_entries = 64;
constexpr size_t spare = 64; ///< behind the last hop, which is displayed as long as it is

record_list unicast_of(const fib::state &has) {
    record_list all;
    for (const auto &[key, entry] : has.entries<fib::unicast>().all()) {
        const auto what = fib::table<fib::unicast>::read(entry);
        std::vector<model::next_hop> hops;
        for (auto ways = what.ways; !ways.empty();) {
            const auto way = model::take_label_hop(ways);
            hops.push_back({way[1], model::domain_of_ctrl(way[0])});
        }
        model::carried_bytes carried{};
        std::copy(what.carried.begin(), what.carried.end(), carried.begin());
        add_record(all, owner, key, model::route_values{what.metric, what.flag, hops, carried});
    }
    return all;
}

record_list multicast_of(const fib::state &has) {
    record_list all;
    for (const auto &[key, entry] : has.entries<fib::multicast>().all()) {
        add_record(all, owner, key, fib::table<fib::multicast>::read(entry));
    }
    return all;
}

record_list labels_of(const fib::state &has) {
    record_list all;
    for (const auto &[key, entry] : has.entries<fib::label>().all()) {
        add_record(all, owner, key, model::label_values{{}, fib::table<fib::label>::read(entry).ways});
    }
    return all;
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

void display_modules(const lab::running_modules &modules) {
    for (size_t i = 0; i < modules.size(); i++) {
        modules[i].read([&](const fib::module &of) {
            std::printf("\nThe tables of %s: %u entries\n", lab::module_title(modules.about(i)).c_str(),
                        of.fib.count());
            if (of.fib.count() <= few_entries) {
                display_records("fcu", unicast_of(of.fib));
                display_records("fcm", multicast_of(of.fib));
                display_records("fcl", labels_of(of.fib));
            }
        });
    }
}

} // namespace ribkit::cli
