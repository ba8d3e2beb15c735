// The lab: a fabric in one process. FSPF computes the routes of the local switch and keeps the RIB up to date over the
// message bus while links go down and come up.
#pragma once

#include "tools/fabric.h"
#include "tools/fspf_client.h"
#include "tools/rib_tables.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace ribkit {

struct lab_options {
    std::string fabric_file;    ///< "-" is standard input
    std::string tables{"auto"}; ///< "auto" (all where there are few), "all", "none", or the number of a VSAN
    std::string json_file;      ///< empty: none; "-" is standard output, on which nothing else is printed then
    size_t message_limit = client_options{}.message_limit;
    bool trace = false;
    bool memory = false;    ///< display what the RIB's tables are made of, at the end
    bool real_time = false; ///< wait until an event is due
};

/// One moment of a run: its events (none at the start), and the traffic that they caused.
struct lab_step {
    std::chrono::milliseconds at;
    std::vector<fabric_event> events;
    client_traffic traffic;
};

struct lab_run {
    std::vector<lab_step> steps;
    client_traffic total;
    held_routes routes; ///< of the RIB at the end
    rib_memory memory;  ///< likewise

    [[nodiscard]] double seconds() const { return (total.computing + total.exchanging).count(); }
    [[nodiscard]] double routes_per_second() const;
};

/// Runs the lab and prints. @return the command's exit code: 0, or 1 where the RIB refused something. Throws an
/// input_error, with nothing printed, where the options or the fabric file are wrong.
int run_lab(const lab_options &options);

/// The run for a program.
std::string lab_json(const fabric &f, const lab_run &run);

} // namespace ribkit
