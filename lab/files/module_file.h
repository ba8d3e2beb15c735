// The [[module]] tables of a fabric file, and events of modules. Only the readers of TOML files include this.
#pragma once

#include "lab/fabric.h"
#include "lab/files/table_reader.h"

#include <chrono>
#include <vector>

namespace ribkit::lab {

/// Throws a line_error that says what is wrong with one.
std::vector<fabric_module> read_modules(const table_reader &top);

/// An event of a module; after the modules. Throws a line_error.
void read_module_event(fabric &result, std::chrono::milliseconds at, const table_reader &event);

} // namespace ribkit::lab
