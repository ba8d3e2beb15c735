// The show command where it asks a RIB that runs, or a module.
#pragma once

#include "cli/command_output.h"
#include "cli/fabrics/bus_options.h"
#include "cli/messages/displays.h"
#include "cli/rib/record_list.h"

#include <cstdint>
#include <string>

namespace ribkit::cli {

/// As an operator writes them; empty: does not matter.
struct filter_options {
    std::string vsan, fcid, via, owner;
};

struct show_running_options {
    bus_options bus;
    filter_options filter;
    bool envelopes = false;
    uint32_t module = 0; ///< whom to ask instead of the RIB; 0: nobody
};

/// The display of each record.
void print_records(command_output &out, const display &kind, const record_list &records);
/// Each record as `ribkit decode` prints it, where JSON is wanted: an array.
/// @param message as `ribkit decode` calls a record
void print_records_json(command_output &out, std::string_view message, const record_list &records);

/// Asks the RIB, or a module, for the records of a display and shows them. @return the command's exit code. Throws an
/// input_error where the options are wrong, and where the RIB does not answer in time, or with a refusal.
int run_show_running(const display &kind, const show_running_options &options, const output_options &output);

} // namespace ribkit::cli
