// A module serves until a signal comes, and keeps what it was given until then.
#include "cli/fabrics/module_command.h"

#include "base/patient_output.h"
#include "base/stop_signals.h"
#include "base/text.h"
#include "cli/json_document.h"
#include "clients/wire_agreement.h"
#include "fib/service/fib_service.h"

#include <optional>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace ribkit::cli {

namespace {

/// What a module has at its end.
struct module_summary {
    uint32_t unicast, multicast, label;
    size_t answered;
};

module_summary summary_of(const fib::fib_service &service) {
    const size_t answered = service.answered();
    return service.read([answered](const fib::module &of) {
        return module_summary{of.fib.entries<fib::unicast>().count(), of.fib.entries<fib::multicast>().count(),
                              of.fib.entries<fib::label>().count(), answered};
    });
}

void print_json(command_output &out, const module_command_options &options, const module_summary &has) {
    if (!out.wants_json()) {
        return;
    }
    json_document document(out);
    decode::json_text &json = document.text();
    json.open('{');
    json.member("name").text(options.name);
    json.member("module").number(options.number);
    json.member("unicast").number(has.unicast);
    json.member("multicast").number(has.multicast);
    json.member("label").number(has.label);
    json.member("answered").number(has.answered);
    json.close('}');
    document.finish();
}

} // namespace

int run_module(const module_command_options &options) {
    load_faults(options.bus);
    const base::stop_signals signals;
    command_output out(options.output, {options.bus.faults_file});
    std::vector<std::string_view> different;
    std::optional<base::patient_output> printing(STDOUT_FILENO);
    fib::fib_service service(options.bus.url, {.number = options.number,
                                               .sizes = options.sizes,
                                               .ports = fib::usual_ports(options.number, options.ports),
                                               .slow = std::chrono::milliseconds(options.slow),
                                               .patience = options.bus.patience(),
                                               .trace = options.output.traces,
                                               .differs = [&](const auto &messages) {
                                                   different = messages;
                                                   signals.end_wait();
                                               }});
    out.print_line(
        base::joined("module ", options.number, ", ", options.name, ", answers at ", bus::shown_url(options.bus.url)));
    signals.wait();
    service.stop();
    printing.reset();
    if (!different.empty()) {
        throw clients::difference(bus::shown_url(options.bus.url), different);
    }
    const module_summary has = summary_of(service);
    out.print_line(base::joined(options.name, " had ", has.unicast, " unicast, ", has.multicast, " multicast and ",
                                has.label, " label entries; it answered ", has.answered, " messages"));
    print_json(out, options, has);
    out.finish();
    return 0;
}

} // namespace ribkit::cli
