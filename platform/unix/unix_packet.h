// What passes between two processes: packets of a head, five numbers, most significant byte first, and a piece of a
// message's payload. The first packet of a message announces its size; the others follow until it is whole.
#pragma once

#include "platform/message.h"
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ribkit::platform {

inline constexpr size_t packet_head_size = 16;
inline constexpr size_t piece_size = 65536 - packet_head_size; // of all pieces but a message's last
inline constexpr size_t packet_size = packet_head_size + piece_size;
inline constexpr uint32_t largest_message = 64 << 20;

enum class packet_kind : uint8_t {
    message = 1, ///< from whoever connected
    answer,      ///< to a message with this token
    piece,       ///< of the message or answer before it; the size says how much came before
    room,        ///< no payload: only the room says something
    refusal,     ///< no payload: the errno is where the opcode is elsewhere; the connection ends
    gap,         ///< no payload: messages for the listener's group were left out here, since it had no room
};

struct packet_head {
    packet_kind kind = packet_kind::room;
    uint32_t room = 0; ///< messages that may be sent beyond those of before; 24 bits
    uint32_t token = 0;
    uint32_t opcode = 0;
    uint32_t size = 0; ///< of the whole payload
};

inline constexpr uint32_t most_room = 0xffffff;

using head_bytes = std::array<uint8_t, packet_head_size>;

head_bytes bytes_of(const packet_head &head);

/// False where no such packet exists.
bool parse_head(std::span<const uint8_t> packet, packet_head &head);

/// Puts a message together. It takes no more memory than twice what has arrived.
class message_builder {
  public:
    /// False where the packet cannot follow those before.
    bool add(const packet_head &head, std::span<const uint8_t> piece);

    [[nodiscard]] bool is_begun() const { return begun_; }
    [[nodiscard]] bool is_whole() const { return arrived_ == first_.size; } ///< once it is begun
    [[nodiscard]] uint32_t arrived() const { return arrived_; }
    [[nodiscard]] packet_kind kind() const { return first_.kind; }

    /// The whole message; then the next one may begin.
    message take();

  private:
    void append(std::span<const uint8_t> piece);

    packet_head first_;
    message letter_;
    uint32_t arrived_ = 0;
    uint32_t capacity_ = 0;
    bool begun_ = false;
};

} // namespace ribkit::platform
