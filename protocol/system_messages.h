// What the RIB answers about itself and the switch: values into messages, and back for whoever asked.
#pragma once

#include "codec/messages/forms.h"
#include "codec/view.h"
#include "codec/writer.h"
#include "model/label.h"
#include "model/multicast.h"
#include "model/system.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::protocol {

using bytes = std::vector<uint8_t>;

/// @param created when the RIB began, in seconds since 1970
bytes database_info(uint32_t created, std::span<const model::vsan_summary> vsans);
bytes domain_info(std::span<const model::domain_reach> vsans);
bytes registration_info(std::span<const model::registration> clients);
bytes vsan_info(std::span<const std::pair<uint32_t, model::vsan_attributes>> vsans);

std::vector<model::vsan_summary> summaries_of(codec::view<wire::db_info> info);
std::vector<model::domain_reach> reach_of(codec::view<wire::dm_info> info);
std::vector<model::registration> registrations_of(codec::view<wire::reg_info> info);
std::vector<std::pair<uint32_t, model::vsan_attributes>> vsans_of(codec::view<wire::vsan_update> info);

/// Structures of the RIB's own: its availability, its memory; of any other only how much it holds.
bytes availability_info(const model::availability &now);
bytes memory_info(const std::array<model::memory_pool, model::memory_pools> &pools);
bytes internal_info(uint32_t structure, uint32_t count);
/// Of an info of kind 1, and of kind 2.
model::availability availability_of(codec::view<wire::in_info> info);
std::array<model::memory_pool, model::memory_pools> pools_of(codec::view<wire::in_info> info);

bytes test_info(uint32_t type, bool enabled);
/// With keys that differ, from one on, so many at most.
bytes verification_info(const model::verification &report, const model::label_key &from, size_t most);
bytes flow_info(uint32_t result, uint32_t if_index);

/// How far a log goes, for whoever is further behind than it reaches or misses nothing.
bytes log_position(uint32_t next, uint32_t held);
/// Changes of a table, one record of its log behind the other. The last record is a marker: the number to ask for next,
/// and how many records there are in front of it.
bytes unicast_log(std::span<const model::logged_change<model::route_key>> changes, uint32_t next);
bytes multicast_log(std::span<const model::logged_change<model::multicast_key>> changes, uint32_t next);
bytes label_log(std::span<const model::logged_change<model::label_key>> changes, uint32_t next);

} // namespace ribkit::protocol
