// JSON as it comes, piece by piece: whoever reads it asks for what should stand next. Nothing is kept but the piece in
// hand, so that a document may be longer than memory.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::decode {

/// What is wrong; whoever reads knows where.
struct json_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class json_reader {
  public:
    /// Fills `to` with at most `size` characters. @return how many; 0 at the end
    using source = std::function<size_t(char *to, size_t size)>;

    explicit json_reader(source more) : more_(std::move(more)), piece_(65536) { take_none(); }
    /// A text that outlives the reader.
    explicit json_reader(std::string_view whole) : next_(whole.data()), end_(whole.data() + whole.size()) {}
    json_reader(const json_reader &) = delete;
    json_reader &operator=(const json_reader &) = delete;

    // All of these pass over white space first, and throw json_error where something else stands there.

    /// The next character, which stays; 0 at the end.
    char peek() {
        while (next_ != end_ && is_blank(*next_)) {
            ++next_;
        }
        return next_ != end_ && *next_ != '\0' ? *next_ : peek_further();
    }
    /// Takes a character where it stands there.
    bool take(char c) {
        const bool there = peek() == c;
        next_ += there ? 1 : 0;
        return there;
    }
    void expect(char c);
    /// A string, until the reader is asked again.
    std::string_view string();
    /// Takes a string where it is this one, for whoever knows what to expect. False may also say that it has escapes,
    /// or does not lie in one piece: then `string` tells.
    bool take_string(std::string_view text);
    /// A whole number in digits.
    uint32_t number(uint32_t most);
    /// A string of hexadecimal digits of whole bytes, each handed on. Stops where `byte` returns false.
    void digits(const std::function<bool(uint8_t)> &byte);
    /// A whole value as it stands, to be read later.
    std::string value();

  private:
    static bool is_blank(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }
    char peek_further();
    void take_none() { next_ = end_ = piece_.data(); }
    bool refill();
    [[nodiscard]] bool at_end() { return next_ == end_ && !refill(); }
    char character(); ///< inside of a value, where the end is a mistake
    std::string_view long_string();
    void escape();
    uint32_t four_digits();
    void append_code_point(uint32_t code);
    std::string token();
    void copy_string(std::string &to);

    source more_;
    std::vector<char> piece_;
    const char *next_ = nullptr;
    const char *end_ = nullptr;
    std::string text_; ///< of a string that does not lie in one piece as it is
};

} // namespace ribkit::decode
