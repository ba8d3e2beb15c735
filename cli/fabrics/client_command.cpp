// Client, run and output are put together and played to the end, or until a signal comes.
#include "cli/fabrics/client_command.h"

#include "base/stop_signals.h"
#include "cli/command_output.h"
#include "cli/fabrics/run_json.h"
#include "lab/fabric_run.h"
#include "lab/run_text.h"

namespace ribkit::cli {

int run_client(const client_command_options &options) {
    lab::fabric f = chosen_fabric(options);
    f.forget_modules(); // they are elsewhere
    load_faults(options.bus);
    command_output out(options.output, options.inputs());
    base::progress_line progress;
    const base::stop_signals signals;
    lab::route_roles clients =
        lab::make_roles(lab::roles_of(f, options.roles), f, options.bus.url, options.client(progress));
    const base::stop_call stopping(signals, [&clients] {
        for (const auto &client : clients) {
            client->close();
        }
    });
    for (const auto &client : clients) {
        client->start_over();
    }
    lab::fabric_run run(f, clients, progress, options.real_time,
                        [&out](const std::string &line) { out.print_line(line); });
    run.announce_routes();
    out.print_line(lab::head_text(f) + '\n');
    bool played = false;
    unless_stopped([&] {
        clients.front()->find_rib();
        run.play();
        played = true;
        if (options.stay) {
            run.stay();
        }
    });
    out.print_line('\n' + lab::summary_text(run.record(), nullptr));
    print_client_json(out, run);
    out.finish();
    return played && run.record().total.refused == 0 ? 0 : 1;
}

} // namespace ribkit::cli
