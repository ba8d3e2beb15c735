// Sets of small integers over the caller's bytes. Words at a time wherever more than one byte is looked at; the loops
// over whole maps are plain code that the compiler turns into vectors. It unrolls them only when asked to, without
// which their speed depends on where the linker puts them.
#include "rib_codes.h"
#include "rib_mem.h"
#include "rib_trace.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>

namespace {

constexpr int label_width = 15;
constexpr uint32_t bytes_a_line = 16;
constexpr size_t word_size = sizeof(uint64_t);
constexpr size_t stride = 4 * word_size;
constexpr size_t lane_size = 8 * word_size;
constexpr size_t block_size = 7 * lane_size;

uint64_t load(const uint8_t *from) {
    uint64_t word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

uint8_t bit_of(uint32_t position) { return static_cast<uint8_t>(1U << (position & 7)); }

// The byte just past the length counts as inside.
bool outside(uint32_t length, uint32_t position) { return position >> 3 > length; }

// Eight bytes, the first in the lowest bits on every host.
uint64_t load_in_order(const uint8_t *from) {
    const uint64_t word = load(from);
    return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

// The bits from byte `at` on that differ from the idle word's, of at most eight bytes; none beyond the length.
uint64_t window(const uint8_t *map, uint32_t length, uint32_t at, uint64_t idle) {
    if (length - at >= word_size) {
        return load_in_order(map + at) ^ idle;
    }
    if (length >= word_size) {
        return (load_in_order(map + length - word_size) ^ idle) >> (word_size - (length - at)) * 8;
    }
    uint64_t bits = 0;
    for (uint32_t i = at; i < length; i++) {
        bits |= static_cast<uint64_t>(map[i] ^ static_cast<uint8_t>(idle)) << (i - at) * 8;
    }
    return bits;
}

// Skips idle words, four at a time.
uint32_t skip_idle(const uint8_t *map, uint32_t length, uint32_t at, uint64_t idle) {
    for (; length - at >= stride; at += stride) {
        const uint8_t *next = map + at;
        if (((load(next) ^ idle) | (load(next + word_size) ^ idle) | (load(next + 2 * word_size) ^ idle) |
             (load(next + 3 * word_size) ^ idle)) != 0) {
            break;
        }
    }
    return at;
}

// Finds the lowest bit at or after `start` that differs from `idle`'s. In a dense map that is often the very first one:
// asked by itself, it lets the processor guess and go on.
inline uint32_t find(const uint8_t *map, uint32_t length, uint32_t start, uint64_t idle, uint32_t *position) {
    uint32_t at = start >> 3;
    const uint32_t first = at < length ? static_cast<uint8_t>(map[at] ^ idle) >> (start & 7) : 0U;
    if ((first & 1) != 0) {
        *position = start;
        return RIB_OK;
    }
    if (first != 0) {
        *position = start + static_cast<uint32_t>(std::countr_zero(first));
        return RIB_OK;
    }
    for (at++; at < length; at = skip_idle(map, length, at, idle)) {
        const uint64_t hits = window(map, length, at, idle);
        if (hits != 0) {
            *position = at * 8 + static_cast<uint32_t>(std::countr_zero(hits));
            return RIB_OK;
        }
        at += std::min<uint32_t>(word_size, length - at);
    }
    *position = 0;
    return RIB_FAILED;
}

// The number of set bits of each half byte, in that half.
uint64_t ones_per_half(uint64_t word) {
    word -= word >> 1 & UINT64_C(0x5555555555555555);
    return (word & UINT64_C(0x3333333333333333)) + (word >> 2 & UINT64_C(0x3333333333333333));
}

uint64_t halves_to_bytes(uint64_t word) {
    return (word & UINT64_C(0x0f0f0f0f0f0f0f0f)) + (word >> 4 & UINT64_C(0x0f0f0f0f0f0f0f0f));
}

uint64_t ones_per_byte(uint64_t word) { return halves_to_bytes(ones_per_half(word)); }

uint64_t bytes_to_shorts(uint64_t word) {
    return (word & UINT64_C(0x00ff00ff00ff00ff)) + (word >> 8 & UINT64_C(0x00ff00ff00ff00ff));
}

uint32_t sum_of_shorts(uint64_t word) { return static_cast<uint32_t>(word * UINT64_C(0x0001000100010001) >> 48); }

uint32_t sum_of_bytes(uint64_t word) { return sum_of_shorts(bytes_to_shorts(word)); }

// Three words to two: each bit of `sum`, and twice each bit of `carry`.
struct added {
    uint64_t sum;
    uint64_t carry;

    added(uint64_t a, uint64_t b, uint64_t c) : sum(a ^ b ^ c), carry((a & b) | ((a ^ b) & c)) {}
};

// The ones of seven words, for each byte's place: 56 at most.
uint64_t ones_of_seven(const uint8_t *from) {
    const added low(load(from), load(from + lane_size), load(from + 2 * lane_size));
    const added middle(load(from + 3 * lane_size), load(from + 4 * lane_size), load(from + 5 * lane_size));
    const added ones(low.sum, middle.sum, load(from + 6 * lane_size));
    const added twos(low.carry, middle.carry, ones.carry);
    const uint64_t low_halves = ones_per_half(ones.sum) + 2 * ones_per_half(twos.sum);
    return halves_to_bytes(low_halves) + 4 * ones_per_byte(twos.carry);
}

// A column of seven words stands a lane's width apart, so that neighbouring columns fill vectors; with fewer than eight
// of them the compiler writes them all out instead.
uint32_t ones_of_block(const uint8_t *block) {
    uint64_t sum = 0;
    for (size_t lane = 0; lane < lane_size; lane += word_size) {
        sum += bytes_to_shorts(ones_of_seven(block + lane));
    }
    return sum_of_shorts(sum);
}

template <typename Bits> void combine(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out, Bits bits) {
#pragma GCC unroll 4
    for (size_t i = 0; i < length; i++) {
        out[i] = bits(a[i], b[i]);
    }
}

} // namespace

uint32_t bmap_init(uint8_t *map, uint32_t length) {
    std::memset(map, 0, length);
    return RIB_OK;
}

uint32_t bmap_set(uint8_t *map, uint32_t length, uint32_t position) {
    if (outside(length, position)) {
        rib_printf_time("bmap_set() bad pos %u!\n", position);
        return RIB_BAD_PARAMETERS;
    }
    map[position >> 3] |= bit_of(position);
    return RIB_OK;
}

uint32_t bmap_clr(uint8_t *map, uint32_t length, uint32_t position) {
    if (outside(length, position)) {
        rib_printf_time("bmap_clr() bad pos %u!\n", position);
        return RIB_BAD_PARAMETERS;
    }
    map[position >> 3] &= static_cast<uint8_t>(~bit_of(position));
    return RIB_OK;
}

uint32_t bmap_is_set(const uint8_t *map, uint32_t length, uint32_t position) {
    if (outside(length, position)) {
        rib_printf_time("bmap_is_set() bad pos %u!\n", position);
        return 0;
    }
    return map[position >> 3] >> (position & 7) & 1;
}

uint32_t bmap_is_clr(const uint8_t *map, uint32_t length, uint32_t position) {
    if (outside(length, position)) {
        rib_printf_time("bmap_is_clr() bad pos %u!\n", position);
        return 1;
    }
    return (map[position >> 3] >> (position & 7) & 1) ^ 1;
}

uint32_t bmap_next_set(const uint8_t *map, uint32_t length, uint32_t start, uint32_t *position) {
    return find(map, length, start, 0, position);
}

uint32_t bmap_next_clr(uint8_t *map, uint32_t length, uint32_t start, uint32_t *position) {
    const uint32_t result = find(map, length, start, ~UINT64_C(0), position);
    if (result == RIB_OK) {
        map[*position >> 3] |= bit_of(*position);
    }
    return result;
}

uint32_t bmap_count(const uint8_t *map, uint32_t length) {
    uint32_t ones = 0;
    size_t at = 0;
    for (; length - at >= block_size; at += block_size) {
        ones += ones_of_block(map + at);
    }
    for (; length - at >= word_size; at += word_size) {
        ones += sum_of_bytes(ones_per_byte(load(map + at)));
    }
    uint64_t rest = 0;
    std::memcpy(&rest, map + at, length - at);
    return ones + sum_of_bytes(ones_per_byte(rest));
}

uint32_t bmap_is_same(const uint8_t *a, const uint8_t *b, uint32_t length) {
    return std::memcmp(a, b, length) == 0 ? 1 : 0;
}

uint32_t bmap_or(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out) {
    combine(a, b, length, out, [](uint8_t left, uint8_t right) { return static_cast<uint8_t>(left | right); });
    return RIB_OK;
}

uint32_t bmap_to_set(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out) {
    combine(a, b, length, out, [](uint8_t before, uint8_t after) { return static_cast<uint8_t>(after & ~before); });
    return RIB_OK;
}

uint32_t bmap_to_clr(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out) {
    return bmap_to_set(b, a, length, out);
}

void bmap_show(const uint8_t *map, uint32_t length, const char *label) {
    std::printf("%-*.*s\t", label_width, label_width, label);
    for (uint32_t i = 0; i < length; i++) {
        std::printf("%02x ", map[i]);
        if ((i + 1) % bytes_a_line == 0 && i + 1 < length) {
            std::printf("\n\t\t");
        }
    }
    std::printf("\n");
}
