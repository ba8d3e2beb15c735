#include "tools/rib_command.h"

#include "tools/fabric_file.h"
#include "tools/json_output.h"
#include "tools/rib_link.h"
#include "tools/rib_state.h"
#include "tools/route_display.h"
#include "tools/run_json.h"
#include "tools/run_text.h"
#include "tools/stop_signals.h"

#include <cstdio>

namespace ribkit {

static constexpr uint32_t usual_vsans = 64;

int run_rib(const rib_command_options &options) {
    const table_choice tables(options.tables);
    const rib_spaces spaces = options.fabric_file.empty() ? rib_spaces::for_vsans(usual_vsans)
                                                          : read_fabric_file(options.fabric_file).spaces();
    load_faults(options.bus);
    const json_output json(options.json_file);
    const stop_signals signals;
    refuse_second_rib(options.bus.url, options.bus.patience());
    rib_service rib(options.bus.url, {spaces, options.trace, options.bus.patience()});
    std::printf("the RIB answers at %s\n", shown_url(options.bus.url).c_str());
    std::fflush(stdout);
    signals.wait();
    rib.stop();
    const rib_state state(rib);
    if (!json.alone()) {
        tables.display(rib, options.memory);
        std::puts(('\n' + summary_text(state)).c_str());
    }
    if (json.wanted()) {
        json.write(rib_json(state));
    }
    return 0;
}

} // namespace ribkit
