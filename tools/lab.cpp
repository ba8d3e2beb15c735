// RIB and client of one run, and what is printed of it.
#include "tools/lab.h"

#include "tools/base_text.h"
#include "tools/command_output.h"
#include "tools/fabric_run.h"
#include "tools/input_error.h"
#include "tools/rib_state.h"
#include "tools/route_display.h"
#include "tools/run_json.h"
#include "tools/run_text.h"
#include "tools/stop_signals.h"

namespace ribkit::tools {

int run_lab(const lab_options &options) {
    const fabric f = chosen_fabric(options);
    const table_choice tables(options.tables);
    if (tables.vsan() && !f.has_vsan(*tables.vsan())) {
        throw input_error(joined("--tables ", *tables.vsan(), ": the fabric has no VSAN ", *tables.vsan()));
    }
    load_faults(options.bus);
    command_output out(options.output, options.inputs());
    if (options.check) {
        out.print_line(head_text(f));
        out.finish();
        return 0;
    }
    progress_line progress;
    const stop_signals signals;
    patience waiting(options.bus.patience());
    refuse_second_rib(options.bus.url, waiting);
    rib_service rib(options.bus.url, {f.spaces(),
                                      options.output.traces,
                                      waiting.left(),
                                      options.memory,
                                      f.policy,
                                      {},
                                      !options.bus.faults_file.empty()});
    fspf_client client(options.bus.url, options.client(progress));
    const stop_call stopping(signals, [&client] { client.close(); });
    fabric_run run(f, client, progress, options.real_time, [&out](const std::string &line) { out.print_line(line); });
    out.print_line(head_text(f) + '\n');
    const bool played = unless_stopped([&] { run.play(); });
    rib.stop();
    const rib_state state(rib);
    out.display([&] { tables.display(rib, options.memory); });
    out.print_line('\n' + summary_text(run.record(), &state));
    if (out.wants_json()) {
        out.print_json(lab_json(run, state));
    }
    out.finish();
    return played && run.record().total.refused == 0 ? 0 : 1;
}

} // namespace ribkit::tools
