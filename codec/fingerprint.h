// Digests of layouts: a change of a table that nobody meant is seen in a test.
#pragma once

#include "codec/layout.h"

namespace ribkit::codec {

constexpr uint32_t wire_fingerprint(const layout &l);

/// FNV-1a.
struct digest {
    uint32_t value = 2166136261U;
    constexpr void byte(uint8_t b) { value = (value ^ b) * 16777619U; }
    constexpr void number(uint32_t n) {
        for (int shift = 0; shift < 32; shift += 8) {
            byte(static_cast<uint8_t>(n >> shift));
        }
    }
    constexpr void text(const char *t) {
        for (; *t != '\0'; ++t) {
            byte(static_cast<uint8_t>(*t));
        }
        byte(0);
    }
};

/// What a row does to the message, one word, half or byte after another: how the rows are split does not matter.
constexpr void add_wire(digest &d, const row &r) {
    if (is_list(r)) {
        for (const unsigned n : {static_cast<unsigned>(r.kind), static_cast<unsigned>(r.count.where), r.count.at + 0U,
                                 r.offset + 0U, r.stride + 0U, r.bound + 0U, wire_fingerprint(*r.entry)}) {
            d.number(n);
        }
        return;
    }
    const uint32_t unit = r.kind == row_kind::words  ? 4
                          : r.kind == row_kind::half ? 2
                          : r.kind == row_kind::name ? r.size
                                                     : 1;
    for (uint32_t at = r.offset; at < r.end(); at += unit) {
        for (const uint32_t n : {static_cast<uint32_t>(r.kind), at, unit, uint32_t{r.mask}}) {
            d.number(n);
        }
    }
}

/// A digest of what a layout does to bytes, entries included: it changes with every offset, size, kind, mask, count,
/// stride and bound, and with no name.
constexpr uint32_t wire_fingerprint(const layout &l) {
    digest d;
    d.number(l.size);
    for (const row &r : l) {
        add_wire(d, r);
    }
    return d.value;
}

/// A digest of what a layout says to a reader, its bytes included: it changes with every name, too.
constexpr uint32_t description_fingerprint(const layout &l) {
    digest d;
    d.number(wire_fingerprint(l));
    d.text(l.name);
    for (const row &r : l) {
        for (const char *text : {r.name, r.vocabulary, r.unit}) {
            d.text(text);
        }
        d.byte(static_cast<uint8_t>(r.means));
        d.byte(r.shown_more);
        for (const row_part &p : r.parts) {
            d.text(p.name);
            d.text(p.vocabulary);
            d.byte(p.shift);
            d.byte(p.bits);
        }
        d.number(is_list(r) ? description_fingerprint(*r.entry) : 0);
    }
    return d.value;
}

} // namespace ribkit::codec
