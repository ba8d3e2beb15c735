// Unicast route updates and their answers as network bytes: written for the client, read for the RIB.
#pragma once

#include "ribkit_rib.h"
#include "tools/routes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::tools {

constexpr size_t fcurt_record_size(size_t hops) { return RIBKIT_FCURT_SIZE + RIBKIT_FCURT_HOP_SIZE * hops; }

/// Room for one route with all the hops that a path can have.
inline constexpr size_t smallest_message_limit = RIBKIT_FCURT_UPDATE_SIZE + fcurt_record_size(RIBKIT_MOST_HOPS);

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

std::array<uint8_t, RIBKIT_FCURT_RSP_SIZE> encode(const fcurt_response &response);
fcurt_response decode_fcurt_response(std::span<const uint8_t, RIBKIT_FCURT_RSP_SIZE> bytes);

} // namespace ribkit::tools
