// The tables of modules on standard output, as the switch displays the routes that they come from.
#pragma once

#include "lab/modules.h"

namespace ribkit::cli {

/// Each module's entries below its title.
void display_modules(const lab::running_modules &modules);

} // namespace ribkit::cli
