// The engine's steps as byte shuffles, for any instruction set that has lanes. Every function is inlined or a template
// of the set, so that none can be linked into a path that runs on a processor without it.
#pragma once

#include "codec/grid.h"
#include "codec/isa_scalar.h"

#include <algorithm>

namespace ribkit::codec {

/// `Size` bytes of ones, then as many of zeros. Loaded from n bytes behind its start, it is a mask that keeps all but
/// the last n bytes.
template <size_t Size> struct sliding_mask {
    struct ones_then_zeros {
        std::array<uint8_t, 2 * Size> bytes{};
        consteval ones_then_zeros() { std::fill_n(bytes.begin(), Size, uint8_t{0xff}); }
    };
    alignas(32) static constexpr ones_then_zeros mask{};
};

/// @tparam Set names the instruction set
template <class Set> struct byte_shuffles {
    /// A layout that the vector steps beat as a whole: a record, or a small entry with a bounded list at its end.
    template <const layout &L> static constexpr bool has_shortcut() { return is_record(L) || is_capped(L); }

    template <const layout &L, std::endian Order, bool Swaps>
    [[gnu::always_inline]] static uint32_t shortcut(const uint8_t *src, uint8_t *dst,
                                                    uint32_t (*rows)(const uint8_t *, uint8_t *)) {
        constexpr const row &r = L.last();
        const uint32_t count = read_count<Order>(r.count, src);
        if constexpr (is_record(L)) {
            return record<L, r.stride, Swaps>(src, dst, count);
        } else if (count > r.bound) [[unlikely]] {
            return rows(src, dst);
        } else {
            capped_image<L, Swaps>::convert(src, dst, count);
            return L.size;
        }
    }

    /// A bounded list that is converted in blocks, where the set has lanes that compare words.
    template <const layout &L, size_t Row> static constexpr bool has_grid() {
        constexpr const row &r = L[Row];
        if constexpr (Set::compares_words && r.bound != 0 && r.bound % 8 == 0 && is_gridded(r)) {
            return grid_plan<merged<*r.entry>>().possible;
        } else {
            return false;
        }
    }
    template <const layout &L, size_t Row, std::endian Order, bool Swaps>
    [[gnu::always_inline]] static uint32_t grid_of(const uint8_t *src, uint8_t *dst, uint32_t count) {
        constexpr const row &r = L[Row];
        return grid<merged<*r.entry>, Order, Swaps>::template convert<r.bound>(src, dst, count);
    }

    template <bool Swaps> [[gnu::always_inline]] static void run(const uint8_t *src, uint8_t *dst, size_t n) {
        const size_t size = 4 * n;
        if (size >= 32) {
            const auto last = swapped<32, Swaps>(src + size - 32);
            middle<32, Swaps>(src, dst, 0, size - 32);
            put<32>(dst + size - 32, last);
        } else if (size >= 16) {
            ends<16, Swaps>(src, dst, size);
        } else if (size >= 8) {
            ends<8, Swaps>(src, dst, size);
        } else {
            scalar::run<Swaps>(src, dst, n);
        }
    }

    template <uint32_t Bound, bool Swaps>
    [[gnu::always_inline]] static void bounded(const uint8_t *src, uint8_t *dst, uint32_t n) {
        constexpr uint32_t size = 4 * Bound;
        if constexpr (size < 8 || size > 128) {
            run<Swaps>(src, dst, n);
            if (n < Bound) {
                std::memset(dst + size_t{4} * n, 0, size_t{4} * (Bound - n));
            }
        } else if (n > Bound) {
            run<Swaps>(src, dst, n);
        } else {
            image<all_words, 0, size, Swaps> list(src, dst);
            list.mask(sliding_mask<size>::mask.bytes.data() + 4 * (Bound - n));
            list.store(dst);
        }
    }

    template <const layout &L, size_t Segment, bool Swaps>
    [[gnu::always_inline]] static void fixed(const uint8_t *src, uint8_t *dst) {
        constexpr segment s = segment_of(L, Segment);
        if constexpr (is_windowed(L, s)) {
            image<L, s.begin, s.end, Swaps>(src, dst).store(dst);
        } else {
            scalar::fixed<L, Segment, Swaps>(src, dst);
        }
    }

  private:
    static constexpr bool is_word_list(const row &r) {
        return r.kind == row_kind::list && is_words_only(*r.entry) && is_fixed(*r.entry) && r.stride == r.entry->size;
    }
    static constexpr size_t count_lists(const layout &l) {
        size_t n = 0;
        for (const row &r : l) {
            n += is_list(r);
        }
        return n;
    }
    /// A fixed part and one open list of words.
    static constexpr bool is_record(const layout &l) {
        const row &last = l.last();
        return count_lists(l) == 1 && is_word_list(last) && last.bound == 0 && l.size >= 16 && l.size <= 128;
    }
    /// A short entry that ends in its one bounded list of words.
    static constexpr bool is_capped(const layout &l) {
        const row &last = l.last();
        return count_lists(l) == 1 && is_word_list(last) && last.stride == 4 && last.bound != 0 &&
               last.count.where != count_in::constant && l.size >= 16 && l.size <= 128;
    }
    /// Of entries that are nothing but words, each of which ends in a list that one of its bytes counts.
    static constexpr bool is_gridded(const row &r) {
        const layout &entry = *r.entry;
        for (const row &before : entry) {
            if (before.kind != row_kind::words && !is_list(before)) {
                return false;
            }
        }
        return is_capped(entry) && entry.last().count.where == count_in::second_byte && r.stride == entry.size;
    }
    static constexpr bool is_windowed(const layout &l, segment s) {
        for (size_t i = s.first; i < s.last; ++i) {
            if (l[i].kind == row_kind::name) {
                return false;
            }
        }
        return s.end - s.begin >= 8 && s.end - s.begin <= 128;
    }

    template <size_t Width, bool Swaps> [[gnu::always_inline]] static auto swapped(const uint8_t *src) {
        return window<all_words, 0, Width, Swaps>::load(src, src);
    }

    /// Lanes are the set's, which this file is read before.
    template <size_t Width, class Vector> [[gnu::always_inline]] static void put(uint8_t *dst, Vector v) {
        lane<Width>::store(dst, v);
    }

    /// Whole lanes of words from `at` until they reach `end`; the last may pass it.
    template <size_t Width, bool Swaps>
    [[gnu::always_inline]] static void middle(const uint8_t *src, uint8_t *dst, size_t at, size_t end) {
        for (; at < end; at += Width) {
            lane<Width>::store(dst + at, swapped<Width, Swaps>(src + at));
        }
    }

    /// Words that two lanes cover.
    template <size_t Width, bool Swaps>
    [[gnu::always_inline]] static void ends(const uint8_t *src, uint8_t *dst, size_t size) {
        const auto first = swapped<Width, Swaps>(src);
        const auto last = swapped<Width, Swaps>(src + size - Width);
        lane<Width>::store(dst, first);
        lane<Width>::store(dst + size - Width, last);
    }

    /// The record's last lane is words wherever it starts, but for what the fixed part then stores over it: so one with
    /// few entries needs no branch, and nothing past its end is touched.
    template <const layout &L, uint32_t Stride, bool Swaps>
    [[gnu::always_inline]] static uint32_t record(const uint8_t *src, uint8_t *dst, uint32_t count) {
        using head = image<L, 0, L.size, Swaps>;
        constexpr size_t width = head::width;
        const size_t last = L.size - width + size_t{Stride} * count;
        const head fixed_part(src, dst);
        const auto tail = swapped<width, Swaps>(src + last);
        if (count > width / Stride) [[unlikely]] {
            middle<width, Swaps>(src, dst, L.size, last);
        }
        lane<width>::store(dst + last, tail);
        fixed_part.store(dst);
        return L.size + Stride * count;
    }
};

} // namespace ribkit::codec
