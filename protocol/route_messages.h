// Unicast route messages by the names of their layouts: updates as a client writes them and the RIB reads them, and
// their answers.
#pragma once

#include "codec/messages/route.h"
#include "codec/writer.h"
#include "model/routes.h"
#include "ribkit_rib.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::protocol {

// What the C header says in numbers.
static_assert(RIBKIT_FCURT_UPDATE_SIZE == wire::fcurt_update.size && RIBKIT_FCURT_SIZE == wire::fcurt.size);
static_assert(RIBKIT_FCURT_HOP_SIZE == wire::fcurt_hop.size && RIBKIT_FCURT_RSP_SIZE == wire::route_rsp.size);

constexpr size_t fcurt_record_size(size_t hops) { return wire::fcurt.size + wire::fcurt_hop.size * hops; }

/// Room for one route with all the hops that a path can have.
inline constexpr size_t smallest_message_limit = wire::fcurt_update.size + fcurt_record_size(RIBKIT_MOST_HOPS);

using update_view = codec::view<wire::fcurt_update>;
using update_writer = codec::writer<wire::fcurt_update>;
using record_view = codec::view<wire::fcurt>;

/// Adds the route whole, or nothing of it. @return whether there was room
bool add_route(const update_writer &update, uint32_t action, const model::destination &to,
               const model::route_values &what);

/// Bits of the address outside of its mask are no part of it.
model::destination destination_in(record_view record);
/// What the record carries behind its mask.
inline model::carried_bytes carried_by(record_view record) {
    model::carried_bytes carried{record.get<"rctl">(), record.get<"rctl_mask">(), record.get<"byte_10">()};
    const auto more = record.area<"bytes_11">();
    std::copy(more.begin(), more.end(), carried.end() - more.size());
    return carried;
}
model::route route_of(record_view record);

/// What the RIB answers to an update.
struct fcurt_response {
    uint32_t result, oper, vsan, accepted, held; ///< as the uses of wire::route_rsp

    bool operator==(const fcurt_response &) const = default;
};

std::array<uint8_t, wire::route_rsp.size> encode(const fcurt_response &response);
fcurt_response decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size> bytes);

} // namespace ribkit::protocol
