// What is digested of a row: what it does to bytes, and what it says.
#include "codec/fingerprint.h"

namespace ribkit::codec {

namespace {

/// FNV-1a.
struct digest {
    uint32_t value = 2166136261U;
    void byte(uint8_t b) { value = (value ^ b) * 16777619U; }
    void number(uint32_t n) {
        for (int shift = 0; shift < 32; shift += 8) {
            byte(static_cast<uint8_t>(n >> shift));
        }
    }
    void text(const char *t) {
        for (; *t != '\0'; ++t) {
            byte(static_cast<uint8_t>(*t));
        }
        byte(0);
    }
};

/// What a row does to the message, one word, half or byte after another: how the rows are split does not matter.
void add_wire(digest &d, const row &r) {
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

} // namespace

uint32_t wire_fingerprint(const layout &l) {
    digest d;
    d.number(l.size);
    for (const row &r : l) {
        add_wire(d, r);
    }
    return d.value;
}

uint32_t description_fingerprint(const layout &l) {
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
        d.number(r.entry != nullptr ? description_fingerprint(*r.entry) : 0);
    }
    return d.value;
}

} // namespace ribkit::codec
