// Few routes are displayed at once, many only where they are asked for.
#include "cli/fabrics/route_display.h"

#include "base/input_error.h"
#include "base/text.h"
#include "cli/rib/route_records.h"
#include "rib_show.h"

#include <charconv>
#include <cstdio>

namespace ribkit::cli {

static constexpr size_t few_routes = 64;

table_choice::table_choice(const std::string &text) : text_(text) {
    if (text == "auto" || text == "all" || text == "none") {
        return;
    }
    uint32_t id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw base::input_error(
            base::joined("--tables ", text, ": \"auto\", \"all\", \"none\" or the number of a VSAN"));
    }
    vsan_ = id;
}

bool table_choice::shows(uint32_t vsan, size_t routes) const {
    return text_ == "all" || (text_ == "auto" && routes <= few_routes) || vsan == vsan_;
}

template <class Kind, class Show>
void table_choice::display(const rib::state &tables, size_t routes, const Show &show) const {
    uint32_t header = 1;
    const auto &table = tables.routes<Kind>();
    for (const auto &[key, active] : table.all()) {
        if (shows(key.vsan, routes)) {
            record_list one;
            add_record(one, active->of->uuid, key, table.read(*active));
            show(header, one[0].data());
            header = 0;
        }
    }
}

void table_choice::display(const rib::state &tables) const {
    const size_t routes = tables.routes<rib::unicast>().all().size() + tables.routes<rib::multicast>().all().size() +
                          tables.routes<rib::label>().all().size();
    display<rib::unicast>(tables, routes, rib_show_fcu);
    display<rib::multicast>(tables, routes, rib_show_fcm);
    display<rib::label>(tables, routes, [](uint32_t header, const void *record) { rib_show_fcl(header, 0, record); });
    if (text_ == "auto" && routes > few_routes) {
        std::puts("\nThe tables are long: --tables all displays them, --tables VSAN those of one VSAN.");
    }
}

void table_choice::display(const rib::rib_service &stopped, bool memory) const {
    display(stopped.tables());
    if (memory) {
        stopped.tables().show();
    }
}

} // namespace ribkit::cli
