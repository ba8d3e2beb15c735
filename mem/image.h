// Saved images are runs of 32-bit words at any address.
#pragma once

#include <cstdint>
#include <cstring>

namespace ribkit::mem {

inline constexpr uint32_t word_bytes = 4;

inline uint32_t load_word(const void *image, size_t number) {
    uint32_t word;
    std::memcpy(&word, static_cast<const uint8_t *>(image) + number * word_bytes, word_bytes);
    return word;
}

inline void store_word(void *image, size_t number, uint32_t word) {
    std::memcpy(static_cast<uint8_t *>(image) + number * word_bytes, &word, word_bytes);
}

} // namespace ribkit::mem
