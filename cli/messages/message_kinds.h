// Messages by the names that users give them.
#pragma once

#include "decode/kinds.h"

#include <string>

namespace ribkit::cli {

/// Throws input_error, with what may have been meant, where there is none of that name.
const decode::kind &kind_named(const std::string &name);

} // namespace ribkit::cli
