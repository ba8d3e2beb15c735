// The loops as anybody writes them. Clearing is volatile, or the compiler would call memset.
#include "mem/byte_loops.h"

#include "mem/bitmap/naive_bitmap.h"

namespace ribkit::mem {

void loop_init(uint8_t *map, uint32_t length) {
    for (uint32_t i = 0; i < length; i++) {
        static_cast<volatile uint8_t *>(map)[i] = 0; // or the compiler calls memset
    }
}

uint32_t loop_set(uint8_t *map, uint32_t length, uint32_t position) {
    if (position >> 3 > length) {
        return 1;
    }
    map[position >> 3] |= static_cast<uint8_t>(1U << (position & 7));
    return 0;
}

uint32_t loop_clr(uint8_t *map, uint32_t length, uint32_t position) {
    if (position >> 3 > length) {
        return 1;
    }
    map[position >> 3] &= static_cast<uint8_t>(~(1U << (position & 7)));
    return 0;
}

uint32_t loop_is_set(const uint8_t *map, uint32_t length, uint32_t position) {
    return position >> 3 <= length ? map[position >> 3] >> (position & 7) & 1U : 0;
}

uint32_t loop_next_set(const uint8_t *map, uint32_t length, uint32_t start, uint32_t *position) {
    return naive::next(map, length, start, true, position) ? 0 : 1;
}

uint32_t loop_next_clr(uint8_t *map, uint32_t length, uint32_t start, uint32_t *position) {
    const bool found = naive::next(map, length, start, false, position);
    if (found) {
        loop_set(map, length, *position);
    }
    return found ? 0 : 1;
}

uint32_t loop_count(const uint8_t *map, uint32_t length) { return naive::count(map, length); }

uint32_t loop_is_same(const uint8_t *a, const uint8_t *b, uint32_t length) { return naive::same(a, b, length) ? 1 : 0; }

void loop_or(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out) {
    for (uint32_t i = 0; i < length; i++) {
        out[i] = static_cast<uint8_t>(a[i] | b[i]);
    }
}

void loop_to_set(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out) {
    for (uint32_t i = 0; i < length; i++) {
        out[i] = static_cast<uint8_t>(b[i] & ~a[i]);
    }
}

void loop_to_clr(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out) {
    for (uint32_t i = 0; i < length; i++) {
        out[i] = static_cast<uint8_t>(a[i] & ~b[i]);
    }
}

} // namespace ribkit::mem
