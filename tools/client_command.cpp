// Client, run and output are put together and played to the end, or until a signal comes.
#include "tools/client_command.h"

#include "tools/command_output.h"
#include "tools/fabric_run.h"
#include "tools/run_json.h"
#include "tools/run_text.h"
#include "tools/stop_signals.h"

namespace ribkit::tools {

int run_client(const client_command_options &options) {
    const fabric f = chosen_fabric(options);
    load_faults(options.bus);
    command_output out(options.output, options.inputs());
    progress_line progress;
    const stop_signals signals;
    fspf_client client(options.bus.url, options.client(progress));
    const stop_call stopping(signals, [&client] { client.close(); });
    client.start_over();
    fabric_run run(f, client, progress, options.real_time, [&out](const std::string &line) { out.print_line(line); });
    run.announce_routes();
    out.print_line(head_text(f) + '\n');
    bool played = false;
    unless_stopped([&] {
        client.find_rib();
        run.play();
        played = true;
        if (options.stay) {
            run.stay();
        }
    });
    out.print_line('\n' + summary_text(run.record(), nullptr));
    if (out.wants_json()) {
        out.print_json(client_json(run));
    }
    out.finish();
    return played && run.record().total.refused == 0 ? 0 : 1;
}

} // namespace ribkit::tools
