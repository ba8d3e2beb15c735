// A set of small numbers that answers "which is the lowest?" in the same few steps however many it holds: a bitmap, and
// above it, level by level, a bit for every word that is not empty. The words belong to whoever keeps the set.
#pragma once

#include <bit>
#include <climits>
#include <cstddef>
#include <cstdint>

namespace ribkit::mem {

using tree_word = uintptr_t;
inline constexpr uint32_t tree_word_bits = sizeof(tree_word) * CHAR_BIT;
inline constexpr uint32_t tree_word_shift = std::countr_zero(tree_word_bits);

/// Where the levels of a set of a given capacity stand; shared by all sets of that capacity.
struct tree_shape {
    static constexpr uint32_t most_levels = (32 + tree_word_shift - 1) / tree_word_shift;

    uint32_t levels = 0;
    uint32_t words = 0;               ///< in all levels together
    uint32_t level[most_levels] = {}; ///< the first word of each, the numbers themselves first

    constexpr explicit tree_shape(uint32_t capacity) {
        uint32_t count = capacity;
        do {
            level[levels++] = words;
            count = count / tree_word_bits + (count % tree_word_bits != 0 ? 1 : 0);
            words += count;
        } while (count > 1);
    }
};

inline bool tree_holds(const tree_word *words, uint32_t number) {
    return (words[number >> tree_word_shift] >> (number % tree_word_bits) & 1) != 0;
}

inline void tree_insert(tree_word *words, const tree_shape &shape, uint32_t number) {
    for (uint32_t l = 0; l < shape.levels; l++, number >>= tree_word_shift) {
        tree_word &word = words[shape.level[l] + (number >> tree_word_shift)];
        const tree_word before = word;
        word |= tree_word{1} << (number % tree_word_bits);
        if (before != 0) {
            return;
        }
    }
}

inline void tree_erase(tree_word *words, const tree_shape &shape, uint32_t number) {
    for (uint32_t l = 0; l < shape.levels; l++, number >>= tree_word_shift) {
        tree_word &word = words[shape.level[l] + (number >> tree_word_shift)];
        word &= ~(tree_word{1} << (number % tree_word_bits));
        if (word != 0) {
            return;
        }
    }
}

inline bool tree_empty(const tree_word *words, const tree_shape &shape) {
    return words[shape.level[shape.levels - 1]] == 0;
}

/// The lowest number of a set that is not empty.
inline uint32_t tree_lowest(const tree_word *words, const tree_shape &shape) {
    uint32_t number = 0;
    for (uint32_t l = shape.levels; l-- > 0;) {
        const tree_word word = words[shape.level[l] + number];
        number = (number << tree_word_shift) + static_cast<uint32_t>(std::countr_zero(word));
    }
    return number;
}

} // namespace ribkit::mem
