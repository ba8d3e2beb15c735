// An update message with one route, of any of the three tables.
#pragma once

#include "clients/table_reader.h"

#include <cstdint>
#include <vector>

namespace ribkit::clients {

/// @param action RIB_ACTION_...
std::vector<uint8_t> update_with(uint32_t client, uint32_t action, const model::route_key &key,
                                 const model::route_values &what);
std::vector<uint8_t> update_with(uint32_t client, uint32_t action, const model::multicast_key &key,
                                 const model::multicast_values &what);
std::vector<uint8_t> update_with(uint32_t client, uint32_t action, const model::label_key &key,
                                 const model::label_values &what);

} // namespace ribkit::clients
