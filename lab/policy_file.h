// What [[quota]] and [[who]] tables say of the clients of the RIB.
#pragma once

#include "rib/service/rib_policy.h"

namespace ribkit::lab {

class table_reader;

/// From a document. Throws a line_error.
rib::rib_policy read_policy(const table_reader &top);

} // namespace ribkit::lab
