// The [[module]] tables of a fabric file. Only the readers of TOML files include this.
#pragma once

#include "lab/fabric_module.h"
#include "lab/files/table_reader.h"

#include <vector>

namespace ribkit::lab {

/// Throws a line_error that says what is wrong with one.
std::vector<fabric_module> read_modules(const table_reader &top);

} // namespace ribkit::lab
