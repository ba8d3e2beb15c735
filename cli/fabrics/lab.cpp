// RIB and client of one run, and what is printed of it.
#include "cli/fabrics/lab.h"

#include "base/input_error.h"
#include "base/stop_signals.h"
#include "base/text.h"
#include "cli/command_output.h"
#include "cli/fabrics/module_display.h"
#include "cli/fabrics/route_display.h"
#include "cli/fabrics/run_json.h"
#include "lab/fabric_run.h"
#include "lab/run_text.h"
#include "rib/service/rib_state.h"

namespace ribkit::cli {

int run_lab(const lab_options &options) {
    const lab::fabric f = chosen_fabric(options);
    const table_choice tables(options.tables);
    if (tables.vsan() && !f.has_vsan(*tables.vsan())) {
        throw base::input_error(base::joined("--tables ", *tables.vsan(), ": the fabric has no VSAN ", *tables.vsan()));
    }
    load_faults(options.bus);
    command_output out(options.output, options.inputs());
    if (options.check) {
        out.print_line(lab::head_text(f));
        out.finish();
        return 0;
    }
    base::progress_line progress;
    const base::stop_signals signals;
    bus::patience waiting(options.bus.patience());
    bus::refuse_second_rib(options.bus.url, waiting);
    rib::rib_service rib(options.bus.url, {f.spaces(),
                                           options.output.traces,
                                           waiting.left(),
                                           options.memory,
                                           f.policy,
                                           {},
                                           !options.bus.faults_file.empty(),
                                           STDERR_FILENO,
                                           f.vsan_records()});
    lab::route_roles clients =
        lab::make_roles(lab::roles_of(f, options.roles), f, options.bus.url, options.client(progress));
    const base::stop_call stopping(signals, [&clients] {
        for (const auto &client : clients) {
            client->close();
        }
    });
    lab::fabric_run run(f, clients, progress, options.real_time,
                        [&out](const std::string &line) { out.print_line(line); });
    out.print_line(lab::head_text(f) + '\n');
    lab::running_modules modules(f.modules, rib, options.bus.url, waiting.left(), options.output.traces);
    run.take_module_events([&modules](const lab::fabric_module &about, const lab::fabric_event &event) {
        return modules.happen(about, event);
    });
    if (options.output.traces) { // so that it tells the same every time
        run.let_settle([&modules] { modules.settle(); });
    }
    const bool played = unless_stopped([&] { run.play(); });
    modules.settle();
    const auto modules_at_end = modules.now(); // before they miss their RIB
    rib.stop();
    out.display([&] {
        tables.display(rib, options.memory);
        display_modules(modules, tables);
    });
    const rib::rib_state state(rib);
    out.print_line('\n' + lab::summary_text(run.record(), &state));
    if (modules.size() != 0) {
        out.print_line(modules.hardware_text(rib.tables()));
    }
    print_lab_json(out, run, state, modules, modules_at_end);
    out.finish();
    return played && run.record().total.refused == 0 ? 0 : 1;
}

} // namespace ribkit::cli
