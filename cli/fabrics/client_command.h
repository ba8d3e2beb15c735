// The route clients of a fabric by themselves, for a RIB elsewhere on the bus.
#pragma once

#include "cli/fabrics/run_options.h"

namespace ribkit::cli {

struct client_command_options : run_options {
    bool stay = false; ///< when all events are done, until a signal
};

/// Runs the client and prints. @return the command's exit code: 0, or 1 where the RIB refused something or the client
/// was stopped before its end. Throws as run_lab does.
int run_client(const client_command_options &options);

} // namespace ribkit::cli
