// The engine's steps in plain C++: every processor, one row after another.
#pragma once

#include "codec/engine.h"

namespace ribkit::codec {

struct scalar {
    template <const layout &> static constexpr bool has_shortcut() { return false; }
    template <const layout &, size_t> static constexpr bool has_grid() { return false; }

    /// Converts a run of words.
    template <bool Swaps> [[gnu::always_inline]] static void run(const uint8_t *src, uint8_t *dst, size_t n) {
        if constexpr (Swaps) {
            for (size_t i = 0; i < n; ++i) {
                store32<std::endian::native>(dst + 4 * i, __builtin_bswap32(load32<std::endian::native>(src + 4 * i)));
            }
        } else {
            std::memmove(dst, src, 4 * n);
        }
    }

    /// Converts a bounded list of words and zero-fills what it leaves unused.
    template <uint32_t Bound, bool Swaps>
    [[gnu::always_inline]] static void bounded(const uint8_t *src, uint8_t *dst, uint32_t n) {
        run<Swaps>(src, dst, n);
        if (n < Bound) {
            std::memset(dst + size_t{4} * n, 0, size_t{4} * (Bound - n));
        }
    }

    /// Converts a segment of fixed rows.
    template <const layout &L, size_t Segment, bool Swaps>
    [[gnu::always_inline]] static void fixed(const uint8_t *src, uint8_t *dst) {
        constexpr segment s = segment_of(L, Segment);
        each<L, s.first, Swaps>(src, dst, std::make_index_sequence<s.last - s.first>{});
    }

    /// Converts one fixed row.
    template <const layout &L, size_t Row, bool Swaps>
    [[gnu::always_inline]] static void one(const uint8_t *message, uint8_t *converted) {
        constexpr const row &r = L[Row];
        const uint8_t *src = message + r.offset;
        uint8_t *dst = converted + r.offset;
        if constexpr (r.kind == row_kind::words) {
            for (size_t i = 0; i < r.size; i += 4) {
                const uint32_t word = load32<std::endian::native>(src + i);
                store32<std::endian::native>(dst + i, Swaps ? __builtin_bswap32(word) : word);
            }
        } else if constexpr (r.kind == row_kind::half) {
            const std::array<uint8_t, 2> half{src[0], src[1]};
            dst[0] = half[Swaps ? 1 : 0];
            dst[1] = half[Swaps ? 0 : 1];
        } else if constexpr (r.kind == row_kind::bytes) {
            std::array<uint8_t, r.size> carried;
            std::memcpy(carried.data(), src, r.size);
            std::memcpy(dst, carried.data(), r.size);
        } else if constexpr (r.kind == row_kind::masked) {
            dst[0] = static_cast<uint8_t>(src[0] & r.mask);
        } else if constexpr (r.kind == row_kind::zero) {
            std::memset(dst, 0, r.size);
        } else if constexpr (r.kind == row_kind::name) {
            cut<r.mask, r.size>(src, dst);
        }
    }

    /// A string of at most `Longest` characters; the rest of its area is cleared, so that it always ends.
    template <size_t Longest, size_t Area> static void cut(const uint8_t *src, uint8_t *dst) {
        std::array<uint8_t, Area> text{};
        for (size_t i = 0; i < Longest && src[i] != 0; ++i) {
            text[i] = src[i];
        }
        std::memcpy(dst, text.data(), Area);
    }

  private:
    template <const layout &L, size_t First, bool Swaps, size_t... I>
    [[gnu::always_inline]] static void each(const uint8_t *src, uint8_t *dst, std::index_sequence<I...> /*rows*/) {
        (one<L, First + I, Swaps>(src, dst), ...);
    }
};

} // namespace ribkit::codec
