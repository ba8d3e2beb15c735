// Queries of the RIB's unicast routes, as network bytes. The answer is an update message with the routes from the
// query's key on, all of one VSAN and one client, each as a route to add; without routes where there are no more.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ribkit {

/// The lab's opcode of a unicast route query.
inline constexpr uint32_t fcurt_query_opcode = 0x102;

/// What is asked for: routes of all VSANs, or of the key's.
inline constexpr uint32_t fcurt_query_all = 0x1;
inline constexpr uint32_t fcurt_query_vsan = 0x100;

struct fcurt_query {
    uint32_t uuid; ///< of the client that asks
    uint32_t type;
    uint32_t count; ///< of routes wanted, at most
    uint32_t vsan, fcid, mask;

    bool operator==(const fcurt_query &) const = default;
};

inline constexpr size_t fcurt_query_size = 24;
std::array<uint8_t, fcurt_query_size> encode(const fcurt_query &query);
fcurt_query decode_fcurt_query(std::span<const uint8_t, fcurt_query_size> bytes);

} // namespace ribkit
