// What is said on the command line about a client that follows a fabric.
#pragma once

#include "base/progress.h"
#include "cli/command_output.h"
#include "cli/fabrics/bus_options.h"
#include "lab/fabric.h"
#include "lab/route_role.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ribkit::cli {

struct run_options {
    bus_options bus;
    std::string fabric_file; ///< "-" is standard input
    output_options output;
    size_t message_limit = clients::client_options{}.message_limit;
    std::string local;           ///< switch whose routes are computed; empty: the file's
    std::vector<uint32_t> vsans; ///< that it serves; none: all
    bool envelopes = false;
    bool real_time = false;         ///< wait until an event is due
    std::vector<std::string> roles; ///< of lab::role_names; none: those of the fabric

    [[nodiscard]] std::vector<std::string> inputs() const { return {fabric_file, bus.faults_file}; }

    [[nodiscard]] clients::client_options client(base::progress_line &progress) const {
        return {output.traces,
                message_limit,
                {envelopes, bus.patience()},
                [&progress](const char *what, size_t done, size_t total) { progress.show(what, done, total); },
                {},
                {}};
    }
};

/// Does something that a signal may stop by closing the link. @return false, said on standard error, where it did
bool unless_stopped(const std::function<void()> &action);

/// The fabric of the file, with the VSANs and the local switch that were chosen. Throws an input_error.
lab::fabric chosen_fabric(const run_options &options);

} // namespace ribkit::cli
