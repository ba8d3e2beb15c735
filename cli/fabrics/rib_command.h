// The RIB by itself, for clients elsewhere on the bus.
#pragma once

#include "cli/command_output.h"
#include "cli/fabrics/bus_options.h"

#include <cstdint>
#include <string>

namespace ribkit::cli {

struct rib_command_options {
    bus_options bus;
    std::string fabric_file;    ///< gives the tables their sizes; empty: 64 VSANs
    std::string tables{"auto"}; ///< as table_choice
    std::string who_file;       ///< takes the place of what the fabric file says of clients; empty: none
    output_options output;
    uint32_t hold = 3000; ///< milliseconds: so long modules keep at most what they have when it starts
    bool memory = false;  ///< display what the tables are made of, at the end
};

/// Answers until SIGINT or SIGTERM, then displays its tables. @return the command's exit code. Throws an input_error
/// where the options or a file are wrong.
int run_rib(const rib_command_options &options);

} // namespace ribkit::cli
