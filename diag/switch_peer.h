// What a compiler makes of the client names: the peer that the tables are measured against.
#pragma once

#include <cstdint>

namespace ribkit::diag {

/// As rib_uuid_to_str, by a switch with strcpy.
uintptr_t client_by_switch(uint32_t uuid, char *str);

} // namespace ribkit::diag
