// Routes as the records that displays take.
#pragma once

#include "cli/rib/record_list.h"
#include "model/label.h"
#include "model/multicast.h"
#include "model/routes.h"

#include <cstdint>

namespace ribkit::cli {

/// Adds a rib_ucast_route, a rib_mcast_route or a rib_lbl_route.
void add_record(record_list &to, uint32_t owner, const model::route_key &key, const model::route_values &what);
void add_record(record_list &to, uint32_t owner, const model::multicast_key &key, const model::multicast_values &what);
void add_record(record_list &to, uint32_t owner, const model::label_key &key, const model::label_values &what);

/// Adds a row of the management table for each next hop of a unicast route.
void add_snmp_rows(record_list &to, uint32_t owner, const model::route_key &key, const model::route_values &what);

} // namespace ribkit::cli
