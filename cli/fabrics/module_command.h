// A module by itself, for a RIB elsewhere on the bus.
#pragma once

#include "cli/command_output.h"
#include "cli/fabrics/bus_options.h"
#include "fib/space.h"

#include <cstdint>
#include <string>

namespace ribkit::cli {

struct module_command_options {
    std::string name;
    bus_options bus;
    uint32_t number = 1;
    uint32_t ports = 16;
    uint32_t slow = 0; ///< milliseconds
    fib::fib_sizes sizes{};
    output_options output;
};

/// Answers until SIGINT or SIGTERM, then says what it has. @return the command's exit code. Throws as fib_service does.
int run_module(const module_command_options &options);

} // namespace ribkit::cli
