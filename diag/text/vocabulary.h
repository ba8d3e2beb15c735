// Numbers to text: one row type for every table, and the fallback beside the rows. A table finds its row with one
// multiplication: the compiler searches the multiplier that sends no two of the table's values to the same slot, so a
// lookup costs the same however many rows there are.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ribkit::diag {

// Never defined: a table that reaches this does not compile, and the message names what is wrong.
void two_rows_have_the_same_value();

/// A value and its text. The text lies in the row itself: a lookup follows no pointer, and a shared library has no
/// addresses to fill in when it is loaded.
struct text_row {
    static constexpr size_t room = 31; // bytes that hold any row's text and its terminator

    template <size_t Size>
    consteval text_row(uint32_t number, const char (&literal)[Size]) : value(number), size(Size) {
        static_assert(Size > 1 && Size <= room, "a text is empty or longer than its room");
        std::copy(literal, literal + Size, text);
    }
    consteval text_row() = default;

    uint32_t value = 0;
    char text[room] = {};
    uint8_t size = 0; ///< bytes of the text, terminator included
};

template <size_t Count> class text_table {
  public:
    /// `fallback` is the printf format of every value without a row.
    template <size_t Size> consteval text_table(const char (&fallback)[Size], const text_row (&rows)[Count]) {
        std::copy(fallback, fallback + Size, fallback_);
        for (size_t row = 0; row < Count; ++row) {
            rows_[row] = rows[row];
        }
        require_distinct_values();
        while (!slots_filled()) {
            multiplier_ += 0x9e3779b2; // keeps it odd
        }
    }

    [[nodiscard]] constexpr const char *fallback() const { return fallback_; }
    [[nodiscard]] constexpr const text_row *begin() const { return rows_; }
    [[nodiscard]] constexpr const text_row *end() const { return rows_ + Count; }

    /// The only row that may hold `value`; its own value tells whether it does. Slots hold the distance of a row in
    /// bytes, which saves a multiplication.
    [[nodiscard]] const text_row &candidate(uint32_t value) const {
        return *reinterpret_cast<const text_row *>(reinterpret_cast<const char *>(rows_) + slots_[slot(value)]);
    }

  private:
    static_assert(Count >= 1 && Count < 256);
    static constexpr int bits = std::bit_width(4 * Count - 1);

    [[nodiscard]] constexpr size_t slot(uint32_t value) const { return value * multiplier_ >> (32 - bits); }

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
            slots_[at] = static_cast<uint16_t>(row * sizeof(text_row));
        }
        return true;
    }

    char fallback_[16] = {};
    text_row rows_[Count] = {};
    uint32_t multiplier_ = 0x9e3779b1;
    uint16_t slots_[size_t{1} << bits] = {};
};

/// The values that have a row, in the order of the rows.
template <const auto &Table>
inline constexpr auto values_of = [] {
    std::array<uint32_t, static_cast<size_t>(Table.end() - Table.begin())> values{};
    std::transform(Table.begin(), Table.end(), values.begin(), [](const text_row &row) { return row.value; });
    return values;
}();

/// The first and the last bytes of a text, as one number each; they may overlap.
template <typename Number> void copy_ends(char *to, const char *text, size_t size) {
    Number first;
    Number last;
    std::memcpy(&first, text, sizeof first);
    std::memcpy(&last, text + size - sizeof last, sizeof last);
    std::memcpy(to, &first, sizeof first);
    std::memcpy(to + size - sizeof last, &last, sizeof last);
}

struct sixteen_bytes {
    uint64_t half[2];
};

/// Copies a row's text, and touches no byte behind it. Most have three to seven characters.
inline void copy_text(char *to, const text_row &row) {
    const size_t size = row.size;
    if (size <= 8) {
        if (size >= 4) {
            copy_ends<uint32_t>(to, row.text, size);
        } else {
            copy_ends<uint16_t>(to, row.text, size);
        }
    } else if (size > 16) {
        copy_ends<sixteen_bytes>(to, row.text, size);
    } else {
        copy_ends<uint64_t>(to, row.text, size);
    }
}

/// Prints a value that has no row; the printed count is the result.
uintptr_t put_unknown(const char *fallback, uint32_t value, char *str);

/// The text of the value's row, or else its number.
template <size_t Count>
[[gnu::always_inline]] inline uintptr_t put_row_of(const text_table<Count> &table, uint32_t value, char *str) {
    const text_row &row = table.candidate(value);
    if (row.value != value) {
        return put_unknown(table.fallback(), value, str);
    }
    copy_text(str, row);
    return reinterpret_cast<uintptr_t>(str);
}

} // namespace ribkit::diag
