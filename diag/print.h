// What an argument list needs: texts that live as long as the expression, and headings.
#pragma once

#include "diag/fields.h"
#include "diag/row.h"
#include "rib_codes.h"
#include "rib_text.h"

#include <cstdio>
#include <ctime>

namespace ribkit {

/// A converter's text, plain or cut and padded to a column's width, that stands in the argument list of a printf.
class text {
  public:
    template <typename Converter, typename Value> text(Converter *convert, Value value) { convert(value, text_); }

    const char *plain() && { return text_; }
    const char *padded(int width) && {
        rib_str_len_set(text_, width);
        return text_;
    }

  private:
    char text_[value_room];
};

/// The time stamp of a trace line.
class stamp {
  public:
    stamp() { rib_time_stamp_str(text_); }
    const char *text() && { return text_; }

  private:
    char text_[16];
};

/// These two clients show what they get to a person: short sentences instead of reports, and no traces.
inline bool faces_operator(uint32_t uuid) { return uuid == RIB_CLIENT_CONFIG || uuid == RIB_CLIENT_OPERATOR; }

/// The time in a word of a record, for `text`.
inline void time_word_to_str(uint32_t word, char *str) {
    const auto time = static_cast<time_t>(word);
    rib_time_to_str(&time, str);
}

inline const char *truth(bool holds) { return holds ? "T" : "F"; }

/// Gathers small pieces of output and prints them many at a time.
class gathered {
  public:
    gathered() = default;
    gathered(const gathered &) = delete;
    gathered &operator=(const gathered &) = delete;
    ~gathered() { flush(); }

    static constexpr size_t room = 256; // bytes that a piece may have: an interface's name and what stands around it

    /// Where the next piece goes.
    char *next() {
        if (end_ > bytes_ + sizeof bytes_ - room) {
            flush();
        }
        return end_;
    }
    void add_up_to(char *end) { end_ = end; }

  private:
    void flush() {
        std::fwrite(bytes_, 1, static_cast<size_t>(end_ - bytes_), stdout);
        end_ = bytes_;
    }

    char bytes_[512];
    char *end_ = bytes_;
};

/// One line of `count` words of a record, each as `put(to, word, position)` writes it.
template <typename Put> void print_words(const fields &record, size_t offset, uint32_t count, Put put) {
    gathered line;
    for (uint32_t i = 0; i < count; ++i) {
        line.add_up_to(put(line.next(), record.word(offset + size_t{4} * i), i));
    }
    line.add_up_to(put_char(line.next(), '\n'));
}

/// A line for each of `count` interfaces in a record, `stride` bytes apart: a margin of blanks and the name, " %s\n".
template <size_t Size>
void print_interfaces(const char (&margin)[Size], const fields &record, size_t offset, size_t stride, uint32_t count) {
    gathered lines;
    for (uint32_t i = 0; i < count; ++i) {
        char *end = put_interface(put(lines.next(), margin), record.word(offset + stride * i));
        lines.add_up_to(put_char(end, '\n'));
    }
}

template <typename... Lines> void print_lines(Lines... lines) { (std::puts(lines), ...); }

} // namespace ribkit
