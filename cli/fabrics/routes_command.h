// The routes of a RIB that runs elsewhere on the bus.
#pragma once

#include "cli/command_output.h"
#include "cli/fabrics/bus_options.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace ribkit::cli {

struct routes_command_options {
    bus_options bus;
    size_t least = 0;             ///< routes that are waited for
    std::optional<uint32_t> vsan; ///< none: all
    output_options output;
    bool envelopes = false;
};

/// Reads the routes and displays them. @return the command's exit code. Throws an input_error where the options are
/// wrong, and where the RIB does not answer, or does not hold enough routes, in time.
int run_routes(const routes_command_options &options);

} // namespace ribkit::cli
