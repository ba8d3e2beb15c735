// Unaligned words and halves in either byte order: the only place that knows how a number lies in memory.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ribkit::codec {

template <std::endian Order> [[gnu::always_inline]] inline uint32_t load32(const uint8_t *at) {
    uint32_t word;
    std::memcpy(&word, at, sizeof word);
    return Order == std::endian::native ? word : __builtin_bswap32(word);
}

template <std::endian Order> [[gnu::always_inline]] inline void store32(uint8_t *at, uint32_t word) {
    const uint32_t stored = Order == std::endian::native ? word : __builtin_bswap32(word);
    std::memcpy(at, &stored, sizeof stored);
}

template <std::endian Order> [[gnu::always_inline]] inline uint16_t load16(const uint8_t *at) {
    uint16_t half;
    std::memcpy(&half, at, sizeof half);
    return Order == std::endian::native ? half : __builtin_bswap16(half);
}

template <std::endian Order> [[gnu::always_inline]] inline void store16(uint8_t *at, uint16_t half) {
    const uint16_t stored = Order == std::endian::native ? half : __builtin_bswap16(half);
    std::memcpy(at, &stored, sizeof stored);
}

[[gnu::always_inline]] inline uint32_t be32(const uint8_t *at) { return load32<std::endian::big>(at); }
[[gnu::always_inline]] inline uint32_t be16(const uint8_t *at) { return static_cast<uint32_t>(at[0] << 8 | at[1]); }

} // namespace ribkit::codec
