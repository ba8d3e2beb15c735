// The options of the show command where it asks a RIB that runs.
#pragma once

#include "cli/fabrics/bus_declaration.h"
#include "cli/rib/show_running.h"
#include "ribkit_rib.h"

namespace ribkit::cli {

/// @return those that ask a RIB, to stand against those that read a file
inline std::vector<CLI::Option *> add_show_running(CLI::App &app, show_running_options &options) {
    CLI::Option *bus = add_bus(app, options.bus, "")->check(shared_bus);
    const auto add_filter = [&](const char *name, std::string &value, const char *type, const char *what) {
        return app.add_option(name, value, what)->type_name(type)->needs(bus);
    };
    CLI::Option *fcid = add_filter("--fcid", options.filter.fcid, "FCID[/MASK]",
                                   "of a RIB's routes those that this FC ID is in, or with a mask those to there");
    CLI::Option *envelopes = app.add_flag("--envelopes", options.envelopes, "send every request in a CMI envelope");
    CLI::Option *module = add_number(app, "--module", options.module, 1, RIBKIT_MOST_MODULES,
                                     "what this module has, and not what the RIB has")
                              ->type_name("NUMBER")
                              ->needs(bus)
                              ->excludes(envelopes);
    return {bus,
            module,
            add_filter("--vsan", options.filter.vsan, "VSAN", "of this VSAN only"),
            fcid,
            add_filter("--via", options.filter.via, "INTERFACE", "by this interface only"),
            add_filter("--owner", options.filter.owner, "CLIENT", "of this client only, by name or identity"),
            envelopes->needs(bus)};
}

} // namespace ribkit::cli
