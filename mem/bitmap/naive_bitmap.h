// The bitmap as one would write it from its description: a byte and a bit at a time. The tests' model and the
// benchmarks' peer; shares nothing with the library.
#pragma once

#include <cstdint>

namespace ribkit::mem::naive {

inline bool next(const uint8_t *map, uint32_t length, uint32_t start, bool wanted, uint32_t *position) {
    uint32_t first = start & 7;
    for (uint32_t byte = start >> 3; byte < length; byte++, first = 0) {
        if (map[byte] == (wanted ? 0x00 : 0xff)) {
            continue;
        }
        for (uint32_t bit = first; bit < 8; bit++) {
            if (((map[byte] >> bit & 1) != 0) == wanted) {
                *position = byte * 8 + bit;
                return true;
            }
        }
    }
    *position = 0;
    return false;
}

inline uint32_t count(const uint8_t *map, uint32_t length) {
    uint32_t ones = 0;
    for (uint32_t byte = 0; byte < length; byte++) {
        for (uint32_t bit = 0; bit < 8; bit++) {
            ones += map[byte] >> bit & 1U;
        }
    }
    return ones;
}

inline bool same(const uint8_t *a, const uint8_t *b, uint32_t length) {
    for (uint32_t byte = 0; byte < length; byte++) {
        if (a[byte] != b[byte]) {
            return false;
        }
    }
    return true;
}

} // namespace ribkit::mem::naive
