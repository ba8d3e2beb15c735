// Rows of the displays. A row is written as the literal format of a printf, and the compiler takes it apart: at run
// time there is no format to read, and a row costs what its characters cost. A conversion that is not known here, or a
// value that does not suit it, does not compile.
#pragma once

#include "diag/compose.h"

#include <algorithm>
#include <cstdio>
#include <type_traits>

namespace ribkit::diag {

/// A literal as an argument of a template.
template <size_t Size> struct row_format {
    consteval row_format(const char (&literal)[Size]) { std::copy(literal, literal + Size, text); }
    char text[Size];
};

/// How a number stands in its column.
struct column {
    uint8_t width = 0;
    bool left = false;
    char fill = ' ';
    bool hex = false;
};

/// A column as one number, which any processor's calls have a register for.
constexpr uint32_t packed(column in) {
    return in.width | (in.left ? 0x100U : 0U) | (in.hex ? 0x200U : 0U) | (in.fill == '0' ? 0x400U : 0U);
}
constexpr column unpacked(uint32_t in) {
    return {static_cast<uint8_t>(in), (in & 0x100) != 0, (in & 0x400) != 0 ? '0' : ' ', (in & 0x200) != 0};
}

/// Writes a number, as wide as its packed column or wider.
char *put_number(char *to, uint32_t value, uint32_t packed_column);

/// "%s", or "%u" or "%x" with a width: to the left ("-"), with leading zeros ("0") or with blanks. Text goes before it.
struct conversion {
    size_t text_end = 0;
    column number;
    char kind = '\0'; ///< there is no conversion where the format ends
    size_t end = 0;
};

consteval conversion conversion_at(const char *format, size_t begin) {
    conversion found;
    found.text_end = begin;
    while (format[found.text_end] != '%' && format[found.text_end] != '\0') {
        ++found.text_end;
    }
    size_t at = found.text_end;
    if (format[at] == '\0') {
        return found;
    }
    ++at;
    found.number.left = format[at] == '-';
    found.number.fill = format[at] == '0' ? '0' : ' ';
    for (at += found.number.left ? 1 : 0; format[at] >= '0' && format[at] <= '9'; ++at) {
        found.number.width = static_cast<uint8_t>(found.number.width * 10 + format[at] - '0');
    }
    found.kind = format[at];
    found.number.hex = found.kind == 'x';
    found.end = at + 1;
    return found;
}

constexpr size_t text_room = 128;  // bytes that a text may have: the platform's interface names are the longest
constexpr size_t number_room = 40; // and a number, in the widest column

template <typename Value> constexpr size_t room_of = std::is_class_v<Value> ? text_room : number_room;

/// A value that writes itself.
template <conversion Of, typename Text>
requires std::is_class_v<Text>
char *put_value(char *to, const Text &text) {
    static_assert(Of.kind == 's' && Of.text_end + 2 == Of.end, "a text has no width of its own");
    return text.put(to);
}

template <conversion Of> char *put_value(char *to, uint32_t value) {
    static_assert((Of.kind == 'u' || Of.kind == 'x') && Of.number.width <= number_room);
    return put_number(to, value, packed(Of.number));
}

template <row_format Format, size_t At = 0> char *put_row(char *to) {
    constexpr conversion last = conversion_at(Format.text, At);
    static_assert(last.kind == '\0', "a conversion without a value");
    std::memcpy(to, Format.text + At, last.text_end - At);
    return to + last.text_end - At;
}

template <row_format Format, size_t At = 0, typename Value, typename... Values>
char *put_row(char *to, Value first, Values... others) {
    constexpr conversion next = conversion_at(Format.text, At);
    std::memcpy(to, Format.text + At, next.text_end - At);
    return put_row<Format, next.end>(put_value<next>(to + next.text_end - At, first), others...);
}

/// Prints a row, as printf would.
template <row_format Format, typename... Values> void print_row(Values... values) {
    char row[sizeof Format.text + (0 + ... + room_of<Values>)];
    std::fwrite(row, 1, static_cast<size_t>(put_row<Format>(row, values...) - row), stdout);
}

} // namespace ribkit::diag
