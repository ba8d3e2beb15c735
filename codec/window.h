// A layout's bytes as windows of a register's width: which byte goes where is a constant of each window, so that a
// window is one load, one shuffle and one store, whatever mixture of words, bytes and forced zeros it holds. Windows
// may overlap: all are loaded before the first is stored, which also makes conversion in place safe.
#pragma once

#include "codec/lane.h"
#include "codec/layout.h"

#include <array>
#include <utility>

namespace ribkit::codec {

/// Where a byte of a converted message comes from.
struct byte_plan {
    uint32_t from;
    uint8_t carried; // these of its bits
    bool kept;       // the destination's own byte stays
};

/// A byte's index for the shuffle: which of the 16 bytes around it to take (a shuffle crosses no border of 16, and
/// neither does a word), or 0x80 for none.
constexpr uint8_t shuffle_index(byte_plan plan, uint32_t window) {
    return plan.carried != 0 ? static_cast<uint8_t>((plan.from - window) % 16) : uint8_t{0x80};
}

/// The plan of one byte; lists, and what lies behind the layout, are words.
constexpr byte_plan plan_of(const layout &l, uint32_t at, bool swaps) {
    for (const row &r : l) {
        if (at < r.offset || at >= r.end()) {
            continue;
        }
        switch (r.kind) {
        case row_kind::bytes:
            return {at, 0xff, false};
        case row_kind::half:
            return {swaps ? at ^ 1 : at, 0xff, false};
        case row_kind::masked:
            return {at, static_cast<uint8_t>(r.mask), false};
        case row_kind::zero:
            return {at, 0, false};
        case row_kind::gap:
            return {at, 0, true};
        default:
            break;
        }
    }
    return {swaps ? at ^ 3 : at, 0xff, false};
}

/// A layout of no rows: what is not described is words.
inline constexpr layout all_words{"words", 0, {}};

template <const layout &L, uint32_t At, size_t Width, bool Swaps> struct window {
    static_assert(At % 4 == 0);
    static constexpr size_t constant = Width < 16 ? 16 : Width;

    /// What each byte needs: its index for the shuffle, the bits that are carried, those of the destination that stay.
    struct constants {
        std::array<uint8_t, constant> indices{}, carried{}, kept{};
        bool shuffles = false, masks = false, keeps = false;
        consteval constants() {
            for (uint32_t i = 0; i < Width; ++i) {
                const byte_plan plan = plan_of(L, At + i, Swaps);
                indices[i] = shuffle_index(plan, At);
                carried[i] = plan.carried;
                kept[i] = plan.kept ? 0xff : 0;
                shuffles |= indices[i] != i % 16;
                masks |= plan.carried != 0 && plan.carried != 0xff;
                keeps |= plan.kept;
            }
        }
    };
    alignas(32) static constexpr constants bytes{};

    using vector = typename lane<Width>::vector;

    [[gnu::always_inline]] static vector load(const uint8_t *src, const uint8_t *dst) {
        vector v = lane<Width>::load(src + At);
        if constexpr (bytes.shuffles) {
            v = lane<Width>::shuffle(v, lane<constant>::load(bytes.indices.data()));
        }
        if constexpr (bytes.masks) {
            v = lane<Width>::and_(v, lane<constant>::load(bytes.carried.data()));
        }
        if constexpr (bytes.keeps) {
            const vector old = lane<Width>::and_(lane<Width>::load(dst + At), lane<constant>::load(bytes.kept.data()));
            v = lane<Width>::or_(v, old);
        }
        return v;
    }
};

/// Bytes [Begin, End) as the fewest windows of one width; the last two may overlap.
template <uint32_t Begin, uint32_t End> struct windows_over {
    static constexpr size_t width = lane_width(End - Begin);
    static constexpr size_t n = (End - Begin + width - 1) / width;
    static constexpr uint32_t at(size_t i) {
        return static_cast<uint32_t>(i + 1 < n ? Begin + i * width : End - width);
    }
};

/// Bytes [Begin, End) of a layout in registers.
template <const layout &L, uint32_t Begin, uint32_t End, bool Swaps> struct image : windows_over<Begin, End> {
    using over = windows_over<Begin, End>;
    using over::at, over::n, over::width;

    typename lane<width>::vector windows[n];

    [[gnu::always_inline]] image(const uint8_t *src, const uint8_t *dst)
        : image(src, dst, std::make_index_sequence<n>{}) {}

    /// Keeps the bytes under ones and clears those under zeros; `ones` points at Begin's.
    [[gnu::always_inline]] void mask(const uint8_t *ones) {
        for (size_t i = 0; i < n; ++i) {
            windows[i] = lane<width>::and_(windows[i], lane<width>::load(ones + (at(i) - Begin)));
        }
    }

    [[gnu::always_inline]] void store(uint8_t *dst) const {
        for (size_t i = 0; i < n; ++i) {
            lane<width>::store(dst + at(i), windows[i]);
        }
    }

  private:
    template <size_t... I>
    [[gnu::always_inline]] image(const uint8_t *src, const uint8_t *dst, std::index_sequence<I...> /*windows*/)
        : windows{window<L, at(I), width, Swaps>::load(src, dst)...} {}
};

/// A short entry that ends in its one bounded list of words: for each count a shuffle of its own, which also clears the
/// words that are not used.
template <const layout &L, bool Swaps> struct capped_image : windows_over<0, L.size> {
    using over = windows_over<0, L.size>;
    using over::at, over::n, over::width;
    static constexpr const row &list = L.last();
    static constexpr uint32_t counts = list.bound + 1U;

    /// The indices of the shuffles, a row for every count.
    struct shuffles {
        std::array<std::array<std::array<uint8_t, width>, n>, counts> of_count{};
        consteval shuffles() {
            for (uint32_t count = 0; count < counts; ++count) {
                for (size_t i = 0; i < n * width; ++i) {
                    const uint32_t window = at(i / width);
                    const uint32_t byte = window + i % width;
                    const bool used = byte < list.offset + count * list.stride;
                    of_count[count][i / width][i % width] =
                        used ? shuffle_index(plan_of(L, byte, Swaps), window) : 0x80;
                }
            }
        }
    };
    alignas(32) static constexpr shuffles indices{};

    [[gnu::always_inline]] static void convert(const uint8_t *src, uint8_t *dst, uint32_t count) {
        const auto &wanted = indices.of_count[count];
        typename lane<width>::vector windows[n];
        for (size_t i = 0; i < n; ++i) {
            windows[i] = lane<width>::shuffle(lane<width>::load(src + at(i)), lane<width>::load(wanted[i].data()));
        }
        for (size_t i = 0; i < n; ++i) {
            lane<width>::store(dst + at(i), windows[i]);
        }
    }
};

} // namespace ribkit::codec
