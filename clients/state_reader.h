// Reads what the RIB tells of itself and of the switch, as the messages that it answers with.
#pragma once

#include "bus/rib_link.h"
#include "protocol/system_messages.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace ribkit::clients {

/// Who asks, and for which VSAN; none: all.
struct state_reading {
    uint32_t uuid;
    std::optional<uint32_t> vsan{};
    size_t most_lists = size_t{1} << 16; ///< of topology versions; a RIB that has more is left
};

using protocol::bytes;

// All of them throw no_answer, refused_question and link_closed. What is answered has passed its check.

/// Route counts, domains, states of VSANs: as many messages as it takes.
std::vector<bytes> read_databases(bus::rib_link &link, const state_reading &wanted);
std::vector<bytes> read_domains(bus::rib_link &link, const state_reading &wanted);
std::vector<bytes> read_vsans(bus::rib_link &link, const state_reading &wanted);

/// Each client's topology versions for a VSAN, a rib_topo each.
std::vector<bytes> read_versions(bus::rib_link &link, const state_reading &wanted);

/// A rib_reg_info.
bytes read_registrations(bus::rib_link &link, uint32_t uuid);
/// A rib_sys_info.
bytes read_modules(bus::rib_link &link, uint32_t uuid);

/// A rib_in_info.
/// @param structure as rib_in_to_str has it
bytes read_structure(bus::rib_link &link, uint32_t uuid, uint32_t structure);

/// How often the RIB has refused something with a result code since it started.
/// @param client to whom; 0: to anybody
uint32_t read_refusals(bus::rib_link &link, uint32_t uuid, uint32_t result, uint32_t client);

/// A rib_verf_info; none where nothing was compared.
/// @param type as rib_verf_to_str has it
/// @param from the first key that is wanted
std::optional<bytes> read_verification(bus::rib_link &link, uint32_t uuid, uint32_t type,
                                       const model::label_key &from = {});

/// The logs of changes by their numbers, as rib_sync_to_str has them.
inline constexpr uint32_t label_log = 0;
inline constexpr uint32_t multicast_log = 1;
inline constexpr uint32_t unicast_log = 2;

/// The records of a log, one behind the other, the marker last; empty where nothing was changed.
bytes read_log(bus::rib_link &link, uint32_t uuid, uint32_t log);

} // namespace ribkit::clients
