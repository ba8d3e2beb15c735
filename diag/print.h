// What an argument list needs: texts that live as long as the expression, and headings.
#pragma once

#include "diag/fields.h"
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
    char text_[128]; // the platform's interface names are the longest
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

/// One line of `count` words of a record, each as `put(to, word, position)` writes it, at most 16 characters.
template <typename Put> void print_words(const fields &record, size_t offset, uint32_t count, Put put) {
    char line[256];
    char *end = line;
    for (uint32_t i = 0; i < count; ++i) {
        end = put(end, record.word(offset + size_t{4} * i), i);
        if (end - line > 224) {
            std::fwrite(line, 1, static_cast<size_t>(end - line), stdout);
            end = line;
        }
    }
    *end++ = '\n';
    std::fwrite(line, 1, static_cast<size_t>(end - line), stdout);
}

template <typename... Lines> void print_lines(Lines... lines) { (std::puts(lines), ...); }

} // namespace ribkit
