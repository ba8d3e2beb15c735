// Unicast route updates and their answers as network bytes: written for the client, read for the RIB.
#pragma once

#include "tools/routes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit {

/// The lab's opcode of a unicast route update.
inline constexpr uint32_t fcurt_update_opcode = 0x101;

inline constexpr size_t fcurt_update_header_size = 980;

constexpr size_t fcurt_record_size(size_t hops) { return 32 + 8 * hops; }

/// Room for one route with all the hops that a path can have.
inline constexpr size_t smallest_message_limit = fcurt_update_header_size + fcurt_record_size(16);

struct fcurt_update {
    uint32_t uuid = 0;
    uint32_t vsan = 0;
    uint32_t oper = 0;
    std::vector<route_change> changes;
};

struct fcurt_update_message {
    std::vector<uint8_t> bytes;
    size_t changes; ///< how many of the update's are in here
};

/// The update as one message.
std::vector<uint8_t> encode_whole(const fcurt_update &update);

/// The update as messages of at most `limit` bytes each (or one route); none where nothing changes.
std::vector<fcurt_update_message> encode(const fcurt_update &update, size_t limit);

/// Reads an update that has passed rib_check_fcurt_update.
fcurt_update decode_fcurt_update(std::span<const uint8_t> message);

/// The five words of the RIB's answer to an update.
struct fcurt_response {
    uint32_t result;   ///< result code
    uint32_t oper;     ///< of the update; 0 where it was too short to tell
    uint32_t vsan;     ///< of the update; 0 likewise
    uint32_t accepted; ///< records of the update that took effect
    uint32_t held;     ///< routes that the RIB now holds for this VSAN

    bool operator==(const fcurt_response &) const = default;
};

inline constexpr size_t fcurt_response_size = 20;
std::array<uint8_t, fcurt_response_size> encode(const fcurt_response &response);
fcurt_response decode_fcurt_response(std::span<const uint8_t, fcurt_response_size> bytes);

} // namespace ribkit
