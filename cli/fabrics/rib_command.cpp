// A RIB's tables and policy come from a fabric's file, or are usual ones; it serves until a signal comes.
#include "cli/fabrics/rib_command.h"

#include "base/patient_output.h"
#include "base/stop_signals.h"
#include "bus/rib_link.h"
#include "cli/command_output.h"
#include "cli/fabrics/route_display.h"
#include "cli/fabrics/run_json.h"
#include "lab/files/fabric_file.h"
#include "lab/run_text.h"
#include "rib/service/rib_state.h"

#include <optional>
#include <stdexcept>
#include <unistd.h>

namespace ribkit::cli {

namespace {

constexpr uint32_t usual_vsans = 64;

rib::rib_options service_options(const rib_command_options &options) {
    rib::rib_options service{rib::rib_spaces::for_vsans(usual_vsans), options.output.traces, options.bus.patience(),
                             options.memory};
    service.hold = std::chrono::milliseconds(options.hold);
    if (!options.fabric_file.empty()) {
        const lab::fabric f = lab::read_fabric_file(options.fabric_file);
        service.spaces = f.spaces();
        service.policy = f.policy;
        service.vsans = f.vsan_records();
    }
    if (!options.who_file.empty()) {
        service.policy = lab::read_policy_file(options.who_file);
    }
    return service;
}

} // namespace

int run_rib(const rib_command_options &options) {
    const table_choice tables(options.tables);
    rib::rib_options service = service_options(options);
    load_faults(options.bus);
    const base::stop_signals signals;
    command_output out(options.output, {options.fabric_file, options.who_file, options.bus.faults_file});
    bus::patience waiting(options.bus.patience());
    bus::refuse_second_rib(options.bus.url, waiting);
    service.patience = waiting.left();
    service.gave_way = [&signals] { signals.end_wait(); };
    std::optional<base::patient_output> printing(STDOUT_FILENO);
    rib::rib_service rib(options.bus.url, service);
    out.print_line("the RIB answers at " + bus::shown_url(options.bus.url));
    signals.wait();
    rib.stop();
    printing.reset();
    if (rib.has_given_way()) {
        throw std::runtime_error("another RIB answers at " + bus::shown_url(options.bus.url));
    }
    const rib::rib_state state(rib);
    out.display([&] { tables.display(rib, options.memory); });
    out.print_line('\n' + lab::summary_text(state));
    print_rib_json(out, state);
    out.finish();
    return 0;
}

} // namespace ribkit::cli
