#include "tools/routes_command.h"

#include "rib_codes.h"
#include "tools/command_output.h"
#include "tools/input_error.h"
#include "tools/pauses.h"
#include "tools/route_display.h"
#include "tools/route_reader.h"
#include "tools/run_json.h"

#include <cstdio>
#include <thread>

namespace ribkit {

namespace {

held_routes read_patiently(rib_link &link, const route_reading &wanted, std::chrono::milliseconds patience) {
    pauses trying(patience);
    if (patience.count() > 0 && !link.is_answered()) {
        std::fputs("ribkit: waiting for a RIB\n", stderr);
        link.await(trying);
    }
    for (;;) {
        try {
            return read_routes(link, wanted);
        } catch (const no_answer &why) {
            if (!link.await(trying)) {
                throw;
            }
            std::fprintf(stderr, "ribkit: %s; asking again\n", why.what());
        }
    }
}

} // namespace

int run_routes(const routes_command_options &options) {
    load_faults(options.bus);
    command_output out(options.output, {options.bus.faults_file});
    rib_link link(options.bus.url, RIB_CLIENT_OPERATOR, {options.envelopes, options.bus.patience()});
    const auto routes = read_patiently(link, {RIB_CLIENT_OPERATOR, options.vsan}, options.bus.patience());
    out.display([&] { table_choice("all").display(routes); });
    out.print_line(joined('\n', routes.size(), routes.size() == 1 ? " route" : " routes"));
    if (out.wants_json()) {
        out.print_json(routes_json(routes));
    }
    out.finish();
    return 0;
}

} // namespace ribkit
