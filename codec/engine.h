// One short engine turns every layout into its converters, at compile time: direction, host byte order and instruction
// set are template parameters, so that each combination is compiled and tested on every machine.
//
// Counts are read from the source, before the words that hold them are written: a sender's in host order, a receiver's
// in network order. Fixed rows go first, lists follow by offset. Counts are trusted: one above its bound converts that
// many entries and suppresses the zero-filling. Source and destination may be one buffer.
#pragma once

#include "codec/bytes.h"
#include "codec/layout.h"
#include "codec/size.h"

#include <array>
#include <utility>

namespace ribkit::codec {

enum class direction : uint8_t { to_network, to_host };

constexpr std::endian source_order(direction d, std::endian host) {
    return d == direction::to_network ? host : std::endian::big;
}

/// A layout of nothing but words, which may end in a list of words: any run of such entries is one run of words.
constexpr bool is_words_only(const layout &l) {
    for (const row &r : l) {
        const bool words_of_words =
            r.kind == row_kind::list && r.bound == 0 && r.stride == 4 && is_words_only(*r.entry);
        if (r.kind != row_kind::words && !words_of_words) {
            return false;
        }
    }
    return true;
}

constexpr bool is_fixed(const layout &l) {
    for (const row &r : l) {
        if (r.kind == row_kind::list) {
            return false;
        }
    }
    return true;
}

/// A maximal run of fixed rows, between the list rows that cut them apart; a gap at its end is not part of it.
struct segment {
    size_t first, last;  // rows, last excluded
    uint32_t begin, end; // bytes
};

constexpr bool is_fixed_row(const row &r) { return !is_list(r); }

constexpr size_t count_segments(const layout &l) {
    size_t n = 0;
    for (size_t i = 0; i < l.rows.size(); ++i) {
        n += is_fixed_row(l[i]) && (i == 0 || !is_fixed_row(l[i - 1]));
    }
    return n;
}

constexpr segment segment_of(const layout &l, size_t wanted) {
    size_t first = 0;
    for (size_t n = 0;; ++first) {
        if (is_fixed_row(l[first]) && (first == 0 || !is_fixed_row(l[first - 1])) && n++ == wanted) {
            break;
        }
    }
    size_t last = first;
    while (last < l.rows.size() && is_fixed_row(l[last])) {
        ++last;
    }
    while (last > first + 1 && l[last - 1].kind == row_kind::gap) {
        --last;
    }
    return {first, last, l[first].offset, l[last - 1].end()};
}

template <direction D, std::endian Host, class Isa> struct engine {
    static constexpr std::endian order = source_order(D, Host);
    static constexpr bool swaps = Host != std::endian::big;

    /// Converts one message; returns its size in bytes.
    template <const layout &L> static uint32_t convert(const uint8_t *src, uint8_t *dst) {
        if constexpr (Isa::template has_shortcut<merged<L>>()) {
            return Isa::template shortcut<merged<L>, order, swaps>(src, dst, &rows_apart<merged<L>>);
        } else {
            return rows<merged<L>>(src, dst);
        }
    }

    /// What a shortcut leaves to the rows: seldom, and out of its way.
    template <const layout &L> [[gnu::noinline]] static uint32_t rows_apart(const uint8_t *src, uint8_t *dst) {
        return rows<L>(src, dst);
    }

    template <const layout &L> static uint32_t rows(const uint8_t *src, uint8_t *dst) {
        return rows<L>(src, dst, std::make_index_sequence<L.rows.size()>{},
                       std::make_index_sequence<count_segments(L)>{});
    }

  private:
    template <const layout &L, size_t... Row, size_t... Segment>
    [[gnu::always_inline]] static uint32_t rows(const uint8_t *src, uint8_t *dst, std::index_sequence<Row...>,
                                                std::index_sequence<Segment...>) {
        const std::array<uint32_t, L.rows.size()> counts{read_count<order>(L[Row].count, src)...};
        (Isa::template fixed<L, Segment, swaps>(src, dst), ...);
        uint32_t size = L.size;
        ((size += list_row<L, Row>(src, dst, counts[Row])), ...);
        return size;
    }

    /// Converts a list; returns its bytes behind the fixed part.
    template <const layout &L, size_t Row>
    [[gnu::always_inline]] static uint32_t list_row(const uint8_t *src, uint8_t *dst, uint32_t count) {
        constexpr const row &r = L[Row];
        if constexpr (r.kind != row_kind::list) {
            return 0;
        } else if constexpr (r.bound == 0) {
            return entries<L, Row>(src + r.offset, dst + r.offset, count);
        } else if constexpr (is_words_only(*r.entry) && is_fixed(*r.entry) && r.stride == 4) {
            Isa::template bounded<r.bound, swaps>(src + r.offset, dst + r.offset, count);
            return 0;
        } else {
            const uint8_t *from = src + r.offset;
            uint8_t *to = dst + r.offset;
            if constexpr (Isa::template has_grid<L, Row>()) {
                const uint32_t done =
                    count <= r.bound ? Isa::template grid_of<L, Row, order, swaps>(from, to, count) : 0;
                if (done != r.bound) [[unlikely]] {
                    rest_apart<L, Row>(from + done * r.stride, to + done * r.stride, count, done);
                }
            } else {
                rest<L, Row>(from, to, count, 0);
            }
            return 0;
        }
    }

    /// Converts a bounded list from the entry `done` on, where `src` and `dst` are.
    template <const layout &L, size_t Row>
    [[gnu::always_inline]] static void rest(const uint8_t *src, uint8_t *dst, uint32_t count, uint32_t done) {
        constexpr const row &r = L[Row];
        entries<L, Row>(src, dst, count - done);
        if (count < r.bound) {
            std::memset(dst + size_t{count - done} * r.stride, 0, size_t{r.bound - count} * r.stride);
        }
    }

    template <const layout &L, size_t Row>
    [[gnu::noinline]] static void rest_apart(const uint8_t *src, uint8_t *dst, uint32_t count, uint32_t done) {
        rest<L, Row>(src, dst, count, done);
    }

    /// Converts the entries of a list one after another; returns how far they step.
    template <const layout &L, size_t Row>
    [[gnu::always_inline]] static uint32_t entries(const uint8_t *src, uint8_t *dst, uint32_t count) {
        constexpr const row &r = L[Row];
        constexpr const layout &entry = *r.entry;
        if constexpr (is_words_only(entry) && r.stride == 0) {
            const size_t size = wire_size_of_run<entry, order>(src, count);
            Isa::template run<swaps>(src, dst, size / 4);
            return static_cast<uint32_t>(size);
        } else if constexpr (is_words_only(entry) && is_fixed(entry) && r.stride == entry.size) {
            Isa::template run<swaps>(src, dst, size_t{count} * (entry.size / 4));
            return count * entry.size;
        } else {
            size_t at = 0;
            const auto one = [&] {
                const uint32_t size = convert<entry>(src + at, dst + at);
                at += r.stride != 0 ? r.stride : size;
            };
            for (; count != 0; --count) {
                one();
            }
            return static_cast<uint32_t>(at);
        }
    }
};

} // namespace ribkit::codec
