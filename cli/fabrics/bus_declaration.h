// The options of a command that comes to a bus.
#pragma once

#include "cli/fabrics/bus_options.h"
#include "cli/options.h"

namespace ribkit::cli {

/// The bus where not another one is said: a server on this machine.
inline constexpr const char *server_here = "nats://127.0.0.1:4222";

/// What runs by itself has its partners in other processes.
inline const CLI::Validator shared_bus(
    [](const std::string &url) {
        return url.starts_with("local:") ? url + " stays in this process, where nobody could reach it" : "";
    },
    "");

/// @param url where none is said
inline CLI::Option *add_bus(CLI::App &app, bus_options &bus, const char *url) {
    bus.url = url;
    CLI::Option *added = app.add_option("--bus", bus.url,
                                        "local:[NAME] in this process, unix:DIRECTORY on this machine, "
                                        "nats://HOST[:PORT][/FABRIC] or tls://... over a server")
                             ->type_name("URL")
                             ->capture_default_str();
    app.add_option("--faults", bus.faults_file, "script of what goes wrong on the bus")
        ->type_name("FILE")
        ->check(file_name, fault_files);
    add_number(app, "--wait", bus.wait, 0, 86400, "how long a server, the RIB and its answers are waited for, together")
        ->type_name("SECONDS")
        ->capture_default_str();
    return added;
}

inline void add_envelopes(CLI::App &app, bool &envelopes) {
    app.add_flag("--envelopes", envelopes, "send every request in a CMI envelope");
}

} // namespace ribkit::cli
