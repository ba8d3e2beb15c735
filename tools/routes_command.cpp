// A RIB that is not there yet, or has too few routes, is asked again as long as patience lasts.
#include "tools/routes_command.h"

#include "rib_codes.h"
#include "tools/base_text.h"
#include "tools/command_output.h"
#include "tools/duration.h"
#include "tools/route_display.h"
#include "tools/route_reader.h"
#include "tools/run_json.h"

#include <cstdio>
#include <stdexcept>

namespace ribkit::tools {

namespace {

std::string counted(size_t count) { return joined(count, count == 1 ? " route" : " routes"); }

held_routes read_patiently(rib_link &link, const route_reading &wanted) {
    for (;;) {
        try {
            return read_routes(link, wanted);
        } catch (const no_answer &why) {
            if (!link.await_after(why)) {
                throw;
            }
        }
    }
}

std::runtime_error too_few(const rib_link &link, const route_reading &wanted, size_t held, size_t least) {
    const std::string where = wanted.vsan ? joined(" of VSAN ", *wanted.vsan) : "";
    return std::runtime_error(
        joined("the RIB at ", link.shown_url(), " holds ", counted(held), where, ", not ", least));
}

// There is no news of routes, so that they are read again and again.
held_routes read_enough(rib_link &link, const route_reading &wanted, size_t least) {
    held_routes routes = read_patiently(link, wanted);
    if (routes.size() < least) {
        std::fprintf(stderr, "ribkit: waiting for %s of the RIB at %s, for %s at most\n", counted(least).c_str(),
                     link.shown_url().c_str(), duration_text(link.seconds_left()).c_str());
    }
    while (routes.size() < least) {
        if (!link.pause()) {
            throw too_few(link, wanted, routes.size(), least);
        }
        try {
            routes = read_patiently(link, wanted);
        } catch (const no_answer &) {
            throw too_few(link, wanted, routes.size(), least);
        }
    }
    return routes;
}

} // namespace

int run_routes(const routes_command_options &options) {
    load_faults(options.bus);
    command_output out(options.output, {options.bus.faults_file});
    rib_link link(options.bus.url, RIB_CLIENT_OPERATOR, {options.envelopes, options.bus.patience()});
    link.find();
    const auto routes = read_enough(link, {RIB_CLIENT_OPERATOR, options.vsan}, options.least);
    out.display([&] { table_choice("all").display(routes); });
    out.print_line('\n' + counted(routes.size()));
    if (out.wants_json()) {
        out.print_json(routes_json(routes));
    }
    out.finish();
    return 0;
}

} // namespace ribkit::tools
