// The tables of modules on standard output, as the switch displays the routes that they come from.
#pragma once

#include "cli/fabrics/route_display.h"
#include "lab/modules.h"

namespace ribkit::cli {

/// Each module's entries below its title; of one that has the same as another before it, that it has.
/// @param which is displayed
void display_modules(const lab::running_modules &modules, const table_choice &which);

} // namespace ribkit::cli
