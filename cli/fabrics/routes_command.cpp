// A RIB that is not there yet, or has too few routes, is asked again as long as patience lasts.
#include "cli/fabrics/routes_command.h"

#include "base/duration.h"
#include "base/text.h"
#include "cli/command_output.h"
#include "cli/rib/show_running.h"
#include "cli/rib/shown_kinds.h"
#include "clients/question.h"
#include "clients/wire_agreement.h"
#include "rib_codes.h"

#include <cstdio>
#include <stdexcept>

namespace ribkit::cli {

namespace {

std::string counted(size_t count) { return base::joined(count, count == 1 ? " route" : " routes"); }

record_list read_patiently(bus::rib_link &link, const record_filter &wanted) {
    return clients::patiently(link, [&] { return read_active_routes(link, wanted); });
}

std::runtime_error too_few(const bus::rib_link &link, const record_filter &wanted, size_t held, size_t least) {
    const std::string where = wanted.vsan ? base::joined(" of VSAN ", *wanted.vsan) : "";
    return std::runtime_error(
        base::joined("the RIB at ", link.shown_url(), " holds ", counted(held), where, ", not ", least));
}

// There is no news of routes, so that they are read again and again.
record_list read_enough(bus::rib_link &link, const record_filter &wanted, size_t least) {
    record_list routes = read_patiently(link, wanted);
    if (routes.size() < least) {
        std::fprintf(stderr, "ribkit: waiting for %s of the RIB at %s, for %s at most\n", counted(least).c_str(),
                     link.shown_url().c_str(), base::duration_text(link.seconds_left()).c_str());
    }
    while (routes.size() < least) {
        if (!link.pause()) {
            throw too_few(link, wanted, routes.size(), least);
        }
        try {
            routes = read_patiently(link, wanted);
        } catch (const bus::no_answer &) {
            throw too_few(link, wanted, routes.size(), least);
        }
    }
    return routes;
}

} // namespace

int run_routes(const routes_command_options &options) {
    load_faults(options.bus);
    command_output out(options.output, {options.bus.faults_file});
    bus::rib_link link(options.bus.url, RIB_CLIENT_OPERATOR, {options.envelopes, options.bus.patience()});
    clients::find_rib(link);
    record_filter wanted;
    wanted.vsan = options.vsan;
    const record_list routes = read_enough(link, wanted, options.least);
    const display &kind = *find_display("fcu");
    print_records(out, kind, routes);
    out.print_line('\n' + counted(routes.size()));
    print_records_json(out, "rib_ucast_route", routes);
    out.finish();
    return 0;
}

} // namespace ribkit::cli
