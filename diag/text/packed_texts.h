// A vocabulary without a byte to spare, for a library that is built for size: values in the order of their rows, and
// their texts one behind the other. A lookup goes through them all, so it costs more the more rows there are.
#pragma once

#include "diag/text/vocabulary.h"

#include <string>

namespace ribkit::diag {

constexpr size_t size_with_terminator(const char *text) { return std::char_traits<char>::length(text) + 1; }

/// The bytes of a table's fallback and of all its texts.
template <typename Table> constexpr size_t packed_size(const Table &table) {
    size_t size = size_with_terminator(table.fallback());
    for (const text_row &row : table) {
        size += row.size;
    }
    return size;
}

/// What is kept of a table: its values; the fallback and the texts follow, each with its terminator.
template <const auto &Table> struct packed_rows {
    consteval packed_rows() {
        char *to = std::copy_n(Table.fallback(), size_with_terminator(Table.fallback()), texts);
        for (const text_row &row : Table) {
            to = std::copy_n(row.text, row.size, to);
        }
    }

    decltype(values_of<Table>) values = values_of<Table>;
    char texts[packed_size(Table)] = {};
};

template <const auto &Table> inline constexpr packed_rows<Table> packed;

/// As `put_text`: of `count` packed rows, whose values begin there.
uintptr_t put_packed(uint32_t value, char *str, const uint32_t *values, size_t count);

#ifdef __OPTIMIZE_SIZE__
inline constexpr bool texts_are_packed = true;
#else
inline constexpr bool texts_are_packed = false;
#endif

/// The convention of the converters: a value with a row is copied whole and the buffer is the result; any other is
/// printed by the fallback and the printed count is the result.
template <const auto &Table, bool Packed = texts_are_packed>
[[gnu::always_inline]] inline uintptr_t put_text(uint32_t value, char *str) {
    if constexpr (Packed) {
        return put_packed(value, str, packed<Table>.values.data(), packed<Table>.values.size());
    } else {
        return put_row_of(Table, value, str);
    }
}

} // namespace ribkit::diag
