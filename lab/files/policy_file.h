// What [[quota]] and [[who]] tables say of the clients of the RIB.
#pragma once

#include "rib/service/rib_policy.h"

#include <cstdint>
#include <string_view>

namespace ribkit::lab {

class table_reader;

/// A client as a key of the table names or numbers it. Throws a line_error.
uint32_t read_client(const table_reader &table, std::string_view key);

/// From a document. Throws a line_error.
rib::rib_policy read_policy(const table_reader &top);

} // namespace ribkit::lab
