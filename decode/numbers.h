// Numbers at places that only the layout in hand knows: where views, which know theirs when they are compiled, cannot
// help.
#pragma once

#include "codec/bytes.h"

namespace ribkit::decode {

inline uint32_t load_word(const uint8_t *at) { return codec::be32(at); }
inline void store_word(uint8_t *at, uint32_t word) { codec::store32<std::endian::big>(at, word); }

/// A word, a half or a byte.
inline uint32_t load_number(const uint8_t *at, size_t size) {
    return size == 4 ? load_word(at) : size == 2 ? codec::be16(at) : *at;
}
inline void store_number(uint8_t *at, size_t size, uint32_t number) {
    if (size == 4) {
        store_word(at, number);
    } else if (size == 2) {
        codec::store16<std::endian::big>(at, static_cast<uint16_t>(number));
    } else {
        *at = static_cast<uint8_t>(number);
    }
}

} // namespace ribkit::decode
