// A head as bytes and back; one that no process of ours sends is refused.
#include "platform/unix/unix_packet.h"

#include "codec/bytes.h"

#include <algorithm>
#include <utility>

using namespace ribkit::codec;

namespace ribkit::platform {

head_bytes bytes_of(const packet_head &head) {
    head_bytes bytes;
    store32<std::endian::big>(bytes.data(), static_cast<uint32_t>(head.kind) << 24 | head.room);
    store32<std::endian::big>(bytes.data() + 4, head.token);
    store32<std::endian::big>(bytes.data() + 8, head.opcode);
    store32<std::endian::big>(bytes.data() + 12, head.size);
    return bytes;
}

bool parse_head(std::span<const uint8_t> packet, packet_head &head) {
    if (packet.size() < packet_head_size) {
        return false;
    }
    const uint32_t kind = packet[0];
    head = {static_cast<packet_kind>(kind), be32(packet.data()) & most_room, be32(packet.data() + 4),
            be32(packet.data() + 8), be32(packet.data() + 12)};
    return kind >= static_cast<uint32_t>(packet_kind::message) && kind <= static_cast<uint32_t>(packet_kind::gap);
}

bool message_builder::add(const packet_head &head, std::span<const uint8_t> piece) {
    const bool follows = head.kind == packet_kind::piece;
    if (follows != begun_ || (follows && head.size != arrived_)) {
        return false;
    }
    const uint32_t size = follows ? first_.size : head.size;
    if (size > largest_message || piece.size() != std::min<size_t>(piece_size, size - arrived_)) {
        return false;
    }
    append(piece);
    if (!follows) {
        first_ = head;
        begun_ = true;
    }
    return true;
}

void message_builder::append(std::span<const uint8_t> piece) {
    const auto needed = static_cast<uint32_t>(arrived_ + piece.size());
    if (letter_.bytes == nullptr || needed > capacity_) {
        const uint32_t larger = std::max(needed, std::min(2 * capacity_, first_.size));
        auto bytes = std::make_unique_for_overwrite<uint8_t[]>(message::room_in_front + larger);
        std::copy_n(letter_.payload(), arrived_, bytes.get() + message::room_in_front);
        letter_.bytes = std::move(bytes);
        capacity_ = larger;
    }
    std::copy(piece.begin(), piece.end(), letter_.payload() + arrived_);
    arrived_ = needed;
}

message message_builder::take() {
    letter_.opcode = first_.opcode;
    letter_.token = first_.token;
    letter_.size = first_.size;
    message whole = std::move(letter_);
    *this = {};
    return whole;
}

} // namespace ribkit::platform
