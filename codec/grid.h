// A bounded list of short entries, each of which ends in a bounded list of words of its own, eight entries at a time.
// Which entry a word of such a block belongs to, and which of the entry's words it is, are constants of the word: what
// its entry's count leaves unused is cleared by a comparison, and so is what lies behind the last entry. No branch
// depends on what the counts are, unless one is above its bound.
#pragma once

#include "codec/window.h"

#include <algorithm>
#include <bit>

namespace ribkit::codec {

/// The constants of a block: eight entries of some words are as many windows of eight words.
template <const layout &Entry> struct grid_plan {
    static constexpr uint32_t words = 8; // of a window
    static constexpr uint32_t entries = 8;
    static constexpr uint32_t stride = Entry.size / 4;
    static constexpr const row &list = Entry.last();
    using of_words = std::array<int32_t, words>;

    struct window {
        alignas(32) of_words count{}; // where its entry's count stands among the words that are loaded for them
        of_words entry{};
        of_words index{}; // in its entry's list; -1 for a word in front of it
        uint32_t counts_from = 0;
    };
    std::array<window, stride> windows{};
    bool possible = true; // the counts that a window needs are never farther apart than a window

    consteval grid_plan() {
        for (uint32_t w = 0; w < stride; ++w) {
            plan(windows[w], w * words);
        }
    }

  private:
    static constexpr uint32_t count_word(uint32_t word) { return word / stride * stride + list.count.at / 4; }
    static constexpr bool is_listed(uint32_t word) { return word % stride >= list.offset / 4; }

    constexpr void plan(window &made, uint32_t first) {
        uint32_t lowest = stride * entries;
        for (uint32_t word = first; word < first + words; ++word) {
            lowest = is_listed(word) ? std::min(lowest, count_word(word)) : lowest;
        }
        const uint32_t from = std::min(lowest, stride * entries - words);
        made.counts_from = 4 * from;
        for (uint32_t i = 0; i < words; ++i) {
            const uint32_t word = first + i;
            const uint32_t count = is_listed(word) ? count_word(word) : lowest; // where none is needed, an earlier one
            possible = possible && count - from < words;
            made.count[i] = static_cast<int32_t>(count - from);
            made.entry[i] = static_cast<int32_t>(word / stride);
            made.index[i] = is_listed(word) ? static_cast<int32_t>(word % stride - list.offset / 4) : -1;
        }
    }
};

/// @tparam Order the source's
template <const layout &Entry, std::endian Order, bool Swaps> struct grid {
    using plan = grid_plan<Entry>;
    static constexpr size_t width = 4 * plan::words;

    static constexpr plan constants{};

    /// Which byte of a word is the count.
    struct count_byte {
        alignas(32) std::array<uint8_t, width> indices{};
        consteval count_byte() {
            for (uint32_t i = 0; i < width; ++i) {
                indices[i] = i % 4 != 0 ? 0x80 : static_cast<uint8_t>(i % 16 + (Order == std::endian::big ? 1 : 2));
            }
        }
    };
    static constexpr count_byte the_count{};

    /// Converts a list of `Bound` entries, of which `count` are used. @return how many are done: a block with an entry
    /// whose own count is above its bound is left as it was, and what is behind it
    template <uint32_t Bound>
    [[gnu::always_inline]] static uint32_t convert(const uint8_t *src, uint8_t *dst, uint32_t count) {
        for (uint32_t done = 0; done < Bound; done += plan::entries) {
            const size_t at = size_t{done} * Entry.size;
            if (done >= count) {
                clear(dst + at, std::make_index_sequence<plan::stride>{});
            } else if (!block(src + at, dst + at, static_cast<int32_t>(count - done),
                              std::make_index_sequence<plan::stride>{})) [[unlikely]] {
                return done;
            }
        }
        return Bound;
    }

  private:
    using words = lane<width>;
    using vector = typename words::vector;

    static const uint8_t *bytes_of(const typename plan::of_words &constant) {
        return reinterpret_cast<const uint8_t *>(constant.data());
    }

    /// For each word its entry's count, or -1 where there is no such entry.
    template <size_t W> [[gnu::always_inline]] static vector counts_of(const uint8_t *src, vector last) {
        constexpr const typename plan::window &w = constants.windows[W];
        const vector near = words::pick_words(words::load(src + w.counts_from), words::load(bytes_of(w.count)));
        const vector counts = words::shuffle(near, words::load(the_count.indices.data()));
        return words::or_(counts, words::words_above(words::load(bytes_of(w.entry)), last));
    }

    template <size_t W> [[gnu::always_inline]] static vector one(const uint8_t *src, vector counts) {
        const vector used = words::words_above(counts, words::load(bytes_of(constants.windows[W].index)));
        return words::and_(codec::window<all_words, 0, width, Swaps>::load(src + W * width, src), used);
    }

    template <size_t... W>
    [[gnu::always_inline]] static vector largest(const vector (&counts)[plan::stride],
                                                 std::index_sequence<W...> /*windows*/) {
        vector all = counts[0];
        ((all = words::larger_words(all, counts[W])), ...);
        return all;
    }

    template <size_t... W>
    [[gnu::always_inline]] static void clear(uint8_t *dst, std::index_sequence<W...> /*windows*/) {
        (words::store(dst + W * width, words::every_word(0)), ...);
    }

    /// @param left how many entries are used from here on
    template <size_t... W>
    [[gnu::always_inline]] static bool block(const uint8_t *src, uint8_t *dst, int32_t left,
                                             std::index_sequence<W...> windows) {
        const vector last = words::every_word(left - 1);
        const vector counts[] = {counts_of<W>(src, last)...};
        const vector above_bound = words::words_above(largest(counts, windows), words::every_word(plan::list.bound));
        if (words::any_word(above_bound)) [[unlikely]] {
            return false;
        }
        // Every count has been read: in place, a window may be written before the next one is loaded.
        (words::store(dst + W * width, one<W>(src, counts[W])), ...);
        return true;
    }
};

} // namespace ribkit::codec
