// Runs and tables for a program.
#pragma once

#include "lab/fabric_run.h"
#include "rib/service/rib_state.h"

#include <string>

namespace ribkit::cli {

/// The fabric, the steps, the RIB's routes and the totals.
std::string lab_json(const lab::fabric_run &run, const rib::rib_state &rib);

/// The fabric, the steps and the totals of a client.
std::string client_json(const lab::fabric_run &run);

/// The routes of a RIB that has ended, and its totals.
std::string rib_json(const rib::rib_state &rib);

/// An array of routes.
std::string routes_json(const model::held_routes &routes);

} // namespace ribkit::cli
