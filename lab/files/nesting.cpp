// A walk over the text that knows just enough of its grammar: where strings and comments begin and end.
#include "lab/files/nesting.h"

#include "base/input_error.h"
#include "base/text.h"

#include <algorithm>
#include <cstdint>

namespace ribkit::lab {

namespace {

class walk {
  public:
    explicit walk(std::string_view text) : text_(text) {}

    void to_the_end() {
        while (at_ < text_.size()) {
            step();
        }
    }

  private:
    void step() {
        switch (const char c = text_[at_]) {
        case '#':
            at_ = std::min(text_.find('\n', at_), text_.size());
            break;
        case '"':
        case '\'':
            pass_string(c);
            break;
        default:
            count(c);
            at_++;
        }
    }

    void count(char c) {
        if (c == '\n') {
            line_++;
            dots_ = brackets_ == 0 ? 0 : dots_;
        } else if (c == '[' || c == '{') {
            require(++brackets_ <= most_brackets, most_brackets, "brackets inside each other");
        } else if (c == ']' || c == '}') {
            brackets_ -= brackets_ == 0 ? 0 : 1;
        } else if (c == '.') {
            require(++dots_ <= most_dots, most_dots, "dots in one statement");
        }
    }

    void require(bool met, unsigned limit, const char *what) const {
        if (!met) {
            throw base::line_error(line_, base::joined("more than ", limit, ' ', what));
        }
    }

    /// From its first quotation mark to behind its last one.
    void pass_string(char mark) {
        const size_t marks = run_of(mark, 3);
        at_ += marks;
        if (marks == 2) {
            return; // empty
        }
        while (at_ < text_.size() && !(marks == 3 ? ends_long(mark) : ends_short(mark))) {
            pass_character(mark);
        }
    }

    /// With its line at the latest.
    bool ends_short(char mark) {
        const char c = text_[at_];
        at_ += c == mark ? 1 : 0;
        return c == mark || c == '\n';
    }

    /// Two marks more may stand in front of its end.
    bool ends_long(char mark) {
        const size_t marks = run_of(mark, 5);
        at_ += marks >= 3 ? marks : 0;
        return marks >= 3;
    }

    void pass_character(char mark) {
        const bool escape = mark == '"' && text_[at_] == '\\' && at_ + 1 < text_.size();
        at_ += escape ? 1 : 0;
        line_ += text_[at_] == '\n' ? 1 : 0;
        at_++;
    }

    [[nodiscard]] size_t run_of(char mark, size_t most) const {
        const size_t end = std::min(text_.find_first_not_of(mark, at_), text_.size());
        return std::min(end - at_, most);
    }

    std::string_view text_;
    size_t at_ = 0;
    uint32_t line_ = 1;
    unsigned brackets_ = 0;
    unsigned dots_ = 0;
};

} // namespace

void refuse_deep_nesting(std::string_view text) { walk(text).to_the_end(); }

} // namespace ribkit::lab
