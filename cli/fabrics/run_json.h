// Runs and tables for a program. Each is written where JSON is wanted, and not otherwise.
#pragma once

#include "cli/command_output.h"
#include "lab/fabric_run.h"
#include "rib/service/rib_state.h"

#include <vector>

namespace ribkit::cli {

/// The fabric, the steps, the RIB's routes, what the modules have, and the totals.
/// @param modules_at_end what they had and did when all was done
void print_lab_json(command_output &out, const lab::fabric_run &run, const rib::rib_state &rib,
                    const lab::running_modules &modules, const std::vector<lab::module_now> &modules_at_end);

/// The fabric, the steps and the totals of a client.
void print_client_json(command_output &out, const lab::fabric_run &run);

/// The routes of a RIB that has ended, and its totals.
void print_rib_json(command_output &out, const rib::rib_state &rib);

} // namespace ribkit::cli
