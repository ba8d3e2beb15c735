#include "tools/rib_command.h"

#include "tools/command_output.h"
#include "tools/fabric_file.h"
#include "tools/rib_link.h"
#include "tools/rib_state.h"
#include "tools/route_display.h"
#include "tools/run_json.h"
#include "tools/run_text.h"
#include "tools/stop_signals.h"

namespace ribkit {

static constexpr uint32_t usual_vsans = 64;

int run_rib(const rib_command_options &options) {
    const table_choice tables(options.tables);
    const rib_spaces spaces = options.fabric_file.empty() ? rib_spaces::for_vsans(usual_vsans)
                                                          : read_fabric_file(options.fabric_file).spaces();
    load_faults(options.bus);
    command_output out(options.output, {options.fabric_file, options.bus.faults_file});
    const stop_signals signals;
    refuse_second_rib(options.bus.url, options.bus.patience());
    rib_service rib(options.bus.url, {spaces, options.output.traces, options.bus.patience()});
    out.print_line("the RIB answers at " + shown_url(options.bus.url));
    signals.wait();
    rib.stop();
    const rib_state state(rib);
    out.display([&] { tables.display(rib, options.memory); });
    out.print_line('\n' + summary_text(state));
    if (out.wants_json()) {
        out.print_json(rib_json(state));
    }
    out.finish();
    return 0;
}

} // namespace ribkit
