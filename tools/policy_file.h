// What [[quota]] and [[who]] tables say of the clients of the RIB.
#pragma once

#include "tools/rib_policy.h"

namespace ribkit::tools {

class table_reader;

/// From a document. Throws a line_error.
rib_policy read_policy(const table_reader &top);

} // namespace ribkit::tools
