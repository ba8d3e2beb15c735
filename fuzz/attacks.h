// What a hostile peer of the RIB does.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace ribkit::fuzz {

/// One that speaks the service's language. Nothing that it sends concerns VSAN 1. Every attack opens its own handles,
/// sends so many messages, or all that there are, and leaves; it never looks at an answer.
class attacker {
  public:
    attacker(std::string url, uint32_t seed) : url_(std::move(url)), random_(seed) {}

    /// Any opcode with valid messages, mutated ones and noise.
    void send_anything(size_t messages);
    /// Valid updates, queries and envelopes, each cut after every byte.
    void truncate();
    /// Updates and envelopes that announce more than they hold.
    void announce_too_much();
    /// Requests as fast as they go.
    void flood(size_t messages);
    /// Asks and is gone.
    void come_and_go(size_t times);
    /// Many at once, each of which asks.
    void open_many(size_t handles);

  private:
    using byte_vector = std::vector<uint8_t>;

    void send(uint32_t handle, uint32_t opcode, const byte_vector &bytes);
    byte_vector anything();

    std::string url_;
    std::mt19937 random_;
};

} // namespace ribkit::fuzz
