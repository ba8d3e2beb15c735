// Numbers to text: one row type for every table, the fallback beside the rows, and the one function that holds the
// whole convention of the converters. A table finds its row with one multiplication: the compiler searches the
// multiplier that sends no two of the table's values to the same slot, so a lookup costs the same however many rows
// there are.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ribkit {

struct text_row {
    uint32_t value;
    const char *text;
};

constexpr size_t text_room = 32; // bytes that hold any row's text and its terminator

// Never defined: a table that reaches one of these does not compile, and the message names what is wrong.
void two_rows_have_the_same_value();
void a_text_is_empty_or_longer_than_the_room();
void no_multiplier_was_found();

template <size_t Count> class text_table {
  public:
    /// `fallback` is the printf format of every value without a row.
    consteval text_table(const char *fallback, const text_row (&rows)[Count]) : fallback_(fallback) {
        for (size_t row = 0; row < Count; ++row) {
            rows_[row] = rows[row];
            sizes_[row] = size_of(rows[row].text);
        }
        require_distinct_values();
        while (!slots_filled()) {
            multiplier_ += 0x9e3779b2; // keeps it odd
        }
    }

    [[nodiscard]] constexpr const char *fallback() const { return fallback_; }
    [[nodiscard]] constexpr const text_row *begin() const { return rows_; }
    [[nodiscard]] constexpr const text_row *end() const { return rows_ + Count; }

    /// The only row that may hold `value`; its own value tells whether it does.
    [[nodiscard]] constexpr size_t candidate(uint32_t value) const { return slots_[slot(value)]; }
    [[nodiscard]] constexpr const text_row &row(size_t index) const { return rows_[index]; }
    [[nodiscard]] constexpr bool holds(uint32_t value) const { return rows_[candidate(value)].value == value; }
    /// Bytes of the row's text, terminator included.
    [[nodiscard]] constexpr size_t size(size_t index) const { return sizes_[index]; }

  private:
    static_assert(Count >= 1 && Count < 256);
    static constexpr int bits = std::bit_width(4 * Count - 1);

    [[nodiscard]] constexpr size_t slot(uint32_t value) const { return value * multiplier_ >> (32 - bits); }

    static consteval uint8_t size_of(const char *text) {
        size_t size = 1;
        while (text[size - 1] != '\0') {
            ++size;
        }
        if (size == 1 || size > text_room) {
            a_text_is_empty_or_longer_than_the_room();
        }
        return static_cast<uint8_t>(size);
    }

    consteval void require_distinct_values() const {
        for (size_t row = 0; row < Count; ++row) {
            for (size_t other = 0; other < row; ++other) {
                if (rows_[row].value == rows_[other].value) {
                    two_rows_have_the_same_value();
                }
            }
        }
    }

    consteval bool slots_filled() {
        bool taken[size_t{1} << bits] = {};
        for (size_t row = 0; row < Count; ++row) {
            const size_t at = slot(rows_[row].value);
            if (taken[at]) {
                return false;
            }
            taken[at] = true;
            slots_[at] = static_cast<uint8_t>(row);
        }
        return true;
    }

    const char *fallback_;
    text_row rows_[Count] = {};
    uint32_t multiplier_ = 0x9e3779b1;
    uint8_t sizes_[Count] = {};
    uint8_t slots_[size_t{1} << bits] = {};
};

/// The first and the last `Width` bytes, which may overlap.
template <size_t Width> void copy_ends(char *to, const char *text, size_t size) {
    std::memcpy(to, text, Width);
    std::memcpy(to + size - Width, text + size - Width, Width);
}

/// Copies 2 to 32 bytes, and touches no other.
inline void copy_text(char *to, const char *text, size_t size) {
    if (size >= 16) {
        copy_ends<16>(to, text, size);
    } else if (size >= 8) {
        copy_ends<8>(to, text, size);
    } else if (size >= 4) {
        copy_ends<4>(to, text, size);
    } else {
        copy_ends<2>(to, text, size);
    }
}

/// Prints a value that has no row; the printed count is the result.
uintptr_t put_unknown(const char *fallback, uint32_t value, char *str);

/// The convention: a value with a row is copied whole and the buffer is the result; any other is printed by the
/// fallback and the printed count is the result.
template <size_t Count>
[[gnu::always_inline]] inline uintptr_t put_text(const text_table<Count> &table, uint32_t value, char *str) {
    if (!table.holds(value)) {
        return put_unknown(table.fallback(), value, str);
    }
    const size_t row = table.candidate(value);
    copy_text(str, table.row(row).text, table.size(row));
    return reinterpret_cast<uintptr_t>(str);
}

} // namespace ribkit
