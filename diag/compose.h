// Small texts put together by hand where a printf inside a printf would cost more than the row it stands in. Each
// function writes at `to` and returns the place behind what it wrote; no terminator is added.
#pragma once

#include "codec/messages/common.h"
#include "codec/view.h"
#include "rib_text.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ribkit::diag {

using codec::view;

template <size_t Size> char *put(char *to, const char (&literal)[Size]) {
    std::memcpy(to, literal, Size - 1);
    return to + Size - 1;
}

inline char *put_char(char *to, char c) {
    *to = c;
    return to + 1;
}

constexpr size_t hex_digits(uint32_t value) { return static_cast<size_t>(std::bit_width(value | 1) + 3) / 4; }

constexpr size_t decimal_digits(uint32_t value) {
    size_t digits = 1;
    for (uint32_t limit = 10; digits < 10 && value >= limit; limit *= 10) {
        ++digits;
    }
    return digits;
}

/// The lowest `digits` hexadecimal digits, leading zeros included.
inline char *put_hex(char *to, uint32_t value, size_t digits) {
    for (size_t digit = digits; digit-- != 0; value >>= 4) {
        to[digit] = "0123456789abcdef"[value & 0xf];
    }
    return to + digits;
}

/// The lowest `digits` decimal digits, leading zeros included.
inline char *put_decimal(char *to, uint32_t value, size_t digits) {
    for (size_t digit = digits; digit-- != 0; value /= 10) {
        to[digit] = static_cast<char>('0' + value % 10);
    }
    return to + digits;
}

inline char *put_decimal(char *to, uint32_t value) { return put_decimal(to, value, decimal_digits(value)); }

inline char *put_truth(char *to, bool holds) { return put_char(to, holds ? 'T' : 'F'); }

/// A label stack entry, "%05x:%x:%x:%02x'h": label, class bits, bottom-of-stack bit, TTL.
inline char *put_label(char *to, view<wire::label> entry) {
    to = put_char(put_hex(to, entry.get<"label", "label">(), 5), ':');
    to = put_char(put_hex(to, entry.get<"label", "exp">(), 1), ':');
    to = put_char(put_hex(to, entry.get<"label", "bottom">(), 1), ':');
    return put(put_hex(to, entry.get<"label", "ttl">(), 2), "'h");
}

/// A domain, "0x%02x(%d)".
inline char *put_domain(char *to, uint32_t domain) {
    to = put_char(put_hex(put(to, "0x"), domain, 2), '(');
    return put_char(put_decimal(to, domain), ')');
}

inline void domain_to_str(uint32_t domain, char *str) { *put_domain(str, domain) = '\0'; }

/// An interface's name.
inline char *put_interface(char *to, uint32_t if_index) {
    rib_if_index_to_str(if_index, to);
    return to + std::strlen(to);
}

/// A 24-bit address, "0x%02x%02x%02x" of the three low bytes of a word.
inline void fc_id_to_str(uint32_t word, char *str) { *put_hex(put(str, "0x"), word, 6) = '\0'; }

} // namespace ribkit::diag
