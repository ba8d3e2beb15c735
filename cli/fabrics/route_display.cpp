// Few routes are displayed at once, many only where they are asked for.
#include "cli/fabrics/route_display.h"

#include "base/input_error.h"
#include "base/text.h"
#include "protocol/table_messages.h"
#include "rib/service/answers.h"
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

void table_choice::display(const model::held_routes &routes) const {
    const bool many = routes.size() > few_routes;
    const bool all = text_ == "all" || (text_ == "auto" && !many);
    uint32_t header = 1;
    for (const auto &[key, held] : routes) {
        if (all || key.vsan == vsan_) {
            rib_show_fcu(header, protocol::ucast_entry(key, held).data());
            header = 0;
        }
    }
    if (text_ == "auto" && many) {
        std::puts("\nThe tables are long: --tables all displays them, --tables VSAN those of one VSAN.");
    }
}

void table_choice::display(const rib::rib_service &stopped, bool memory) const {
    display(rib::active_routes(stopped.tables()));
    if (memory) {
        stopped.tables().show();
    }
}

} // namespace ribkit::cli
