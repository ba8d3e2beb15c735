// RIB and client of one run, and what is printed of it.
#include "tools/lab.h"

#include "tools/fabric_file.h"
#include "tools/fabric_run.h"
#include "tools/input_error.h"
#include "tools/json_output.h"
#include "tools/rib_state.h"
#include "tools/route_display.h"
#include "tools/run_json.h"
#include "tools/run_text.h"

#include <cstdio>

namespace ribkit {

int run_lab(const lab_options &options) {
    const fabric f = read_fabric_file(options.fabric_file);
    const table_choice tables(options.tables);
    if (tables.vsan() && !f.has_vsan(*tables.vsan())) {
        throw input_error(joined("--tables ", *tables.vsan(), ": the fabric has no VSAN ", *tables.vsan()));
    }
    load_faults(options.bus);
    const json_output json(options.json_file);
    progress_line progress;
    refuse_second_rib(options.bus.url, options.bus.patience());
    rib_service rib(options.bus.url, {f.spaces(), options.trace, options.bus.patience()});
    fspf_client client(options.bus.url, options.client(progress));
    fabric_run run(f, client, progress, options.real_time, json.alone());
    if (!json.alone()) {
        std::puts((head_text(f) + '\n').c_str());
    }
    run.play();
    rib.stop();
    const rib_state state(rib);
    if (!json.alone()) {
        tables.display(rib, options.memory);
        std::puts(('\n' + summary_text(run.record(), &state)).c_str());
    }
    if (json.wanted()) {
        json.write(lab_json(run, state));
    }
    return run.record().total.refused == 0 ? 0 : 1;
}

} // namespace ribkit
