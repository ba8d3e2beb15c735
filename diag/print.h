// What rows are made of: texts, lists that are gathered before they are printed, and headings.
#pragma once

#include "diag/text/row.h"
#include "rib_codes.h"
#include "rib_text.h"

#include <cstdio>
#include <ctime>

namespace ribkit::diag {

/// A converter's text as a value of a row: as it is, or cut and padded to a column's width. It is written in its place.
template <typename Converter, typename Value> class text {
  public:
    text(Converter *convert, Value value, int width = as_it_is) : convert_(convert), value_(value), width_(width) {}

    char *put(char *to) const {
        convert_(value_, to);
        if (width_ == as_it_is) {
            return to + std::strlen(to);
        }
        rib_str_len_set(to, width_);
        return to + width_;
    }

  private:
    static constexpr int as_it_is = -1;

    Converter *convert_;
    Value value_;
    int width_;
};

/// The time stamp of a trace line.
struct stamp {
    static char *put(char *to) { return to + rib_time_stamp_str(to); }
};

/// These two clients show what they get to a person: short sentences instead of reports, and no traces.
inline bool faces_operator(uint32_t uuid) { return uuid == RIB_CLIENT_CONFIG || uuid == RIB_CLIENT_OPERATOR; }

/// The time in a word of a record, for `text`.
inline void time_word_to_str(uint32_t word, char *str) {
    const auto time = static_cast<time_t>(word);
    rib_time_to_str(&time, str);
}

struct truth {
    bool holds;
    char *put(char *to) const { return put_truth(to, holds); }
};

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

/// One line of a list's entries, each as `put(to, entry, position)` writes it.
template <typename List, typename Put> void print_words(const List &list, Put put) {
    gathered line;
    for (uint32_t i = 0; i < list.size(); ++i) {
        line.add_up_to(put(line.next(), list[i], i));
    }
    line.add_up_to(put_char(line.next(), '\n'));
}

/// A line for the interface of each of a list's entries: a margin of blanks and the name, " %s\n".
template <size_t Size, typename List> void print_interfaces(const char (&margin)[Size], const List &list) {
    gathered lines;
    for (const auto entry : list) {
        char *end = put_interface(put(lines.next(), margin), entry.template get<"intf">());
        lines.add_up_to(put_char(end, '\n'));
    }
}

template <typename... Lines> void print_lines(Lines... lines) { (std::puts(lines), ...); }

} // namespace ribkit::diag
