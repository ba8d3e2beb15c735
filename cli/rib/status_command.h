// How a RIB that runs is: its role, what it holds, who has registered, what waits.
#pragma once

#include "cli/command_output.h"
#include "cli/fabrics/bus_options.h"

namespace ribkit::cli {

struct status_options {
    bus_options bus;
    output_options output;
    bool envelopes = false;
};

/// @return the command's exit code. Throws an input_error, and where the RIB does not answer in time.
int run_status(const status_options &options);

} // namespace ribkit::cli
