// Prints what changes in a RIB that runs, as it changes.
#pragma once

#include "cli/command_output.h"
#include "cli/fabrics/bus_options.h"

namespace ribkit::cli {

struct monitor_options {
    bus_options bus;
    output_options output;
    bool envelopes = false;
};

/// Until a signal comes. @return the command's exit code. Throws an input_error, and where the RIB does not answer in
/// time.
int run_monitor(const monitor_options &options);

} // namespace ribkit::cli
