// Most strings lie in one piece without an escape, and are not copied.
#include "decode/json_reader.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace ribkit::decode {

namespace {

constexpr size_t longest_string = size_t{1} << 20;
constexpr size_t longest_number = 80;
constexpr size_t longest_kept = size_t{32} << 20;
constexpr size_t deepest = 64;

bool is_control(char c) { return static_cast<unsigned char>(c) < 0x20; }
bool ends_string(char c) { return c == '"' || c == '\\' || is_control(c); }
bool is_number_character(char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

int digit(char c) {
    const auto letter = static_cast<char>(c | 0x20);
    return c >= '0' && c <= '9' ? c - '0' : letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

std::string named(char c) {
    switch (c) {
    case '\0':
        return "the end";
    case '"':
        return "a string";
    case '[':
        return "an array";
    case '{':
        return "an object";
    default:
        return std::string("'") + c + "'";
    }
}

} // namespace

bool json_reader::refill() {
    const size_t size = more_ ? more_(piece_.data(), piece_.size()) : 0;
    if (size != 0) {
        next_ = piece_.data();
        end_ = next_ + size;
    }
    return size != 0;
}

/// At the end of a piece, or at what is no JSON.
char json_reader::peek_further() {
    while (!at_end()) {
        if (*next_ == '\0') {
            throw json_error("a byte of 0 is no JSON");
        }
        if (!is_blank(*next_)) {
            return *next_;
        }
        ++next_;
    }
    return '\0';
}

void json_reader::expect(char c) {
    if (!take(c)) {
        throw json_error("is no JSON: '" + std::string(1, c) + "' should stand where " + named(peek()) + " stands");
    }
}

char json_reader::character() {
    if (at_end()) {
        throw json_error("is no JSON: it ends in the middle");
    }
    return *next_++;
}

std::string_view json_reader::string() {
    if (!take('"')) {
        throw json_error("takes a string, not " + named(peek()));
    }
    const char *const stop = std::find_if(next_, end_, ends_string);
    if (stop == end_ || *stop != '"') {
        return long_string();
    }
    const std::string_view text(next_, static_cast<size_t>(stop - next_));
    next_ = stop + 1;
    return text;
}

bool json_reader::take_string(std::string_view text) {
    const size_t size = text.size();
    if (peek() != '"' || static_cast<size_t>(end_ - next_) < size + 2 || next_[size + 1] != '"' ||
        std::memcmp(next_ + 1, text.data(), size) != 0 ||
        std::any_of(text.begin(), text.end(), [](char c) { return ends_string(c); })) {
        return false;
    }
    next_ += size + 2;
    return true;
}

std::string_view json_reader::long_string() {
    text_.clear();
    for (char c = character(); c != '"'; c = character()) {
        if (is_control(c)) {
            throw json_error("is no JSON: a control character stands in a string");
        }
        if (c == '\\') {
            escape();
        } else {
            text_ += c;
        }
        if (text_.size() > longest_string) {
            throw json_error("is too long a string");
        }
    }
    return text_;
}

void json_reader::escape() {
    constexpr std::string_view names = "\"\\/bfnrt";
    constexpr std::string_view meant = "\"\\/\b\f\n\r\t";
    const char c = character();
    if (const size_t which = names.find(c); which != std::string_view::npos) {
        text_ += meant[which];
        return;
    }
    if (c != 'u') {
        throw json_error("is no JSON: no character is escaped like this");
    }
    uint32_t code = four_digits();
    if (code >= 0xd800 && code < 0xdc00) {
        const bool pair = character() == '\\' && character() == 'u';
        const uint32_t low = pair ? four_digits() : 0;
        if (low < 0xdc00 || low >= 0xe000) {
            throw json_error("is no JSON: half a character is escaped");
        }
        code = 0x10000 + ((code - 0xd800) << 10 | (low - 0xdc00));
    } else if (code >= 0xdc00 && code < 0xe000) {
        throw json_error("is no JSON: half a character is escaped");
    }
    append_code_point(code);
}

uint32_t json_reader::four_digits() {
    uint32_t code = 0;
    for (int i = 0; i < 4; ++i) {
        const int value = digit(character());
        if (value < 0) {
            throw json_error("is no JSON: four hexadecimal digits are missing");
        }
        code = code << 4 | static_cast<uint32_t>(value);
    }
    return code;
}

void json_reader::append_code_point(uint32_t code) {
    if (code < 0x80) {
        text_ += static_cast<char>(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr uint8_t leads[] = {0, 0xc0, 0xe0, 0xf0};
    text_ += static_cast<char>(leads[more] | code >> 6 * more);
    for (int i = more; i-- > 0;) {
        text_ += static_cast<char>(0x80 | (code >> 6 * i & 0x3f));
    }
}

std::string json_reader::token() {
    std::string found;
    while (!at_end() && is_number_character(*next_) && found.size() < longest_number) {
        found += *next_++;
    }
    return found;
}

uint32_t json_reader::number(uint32_t most) {
    const char first = peek();
    uint32_t value = 0;
    if (end_ - next_ > 16) { // lies in one piece
        const auto [stop, error] = std::from_chars(next_, end_, value);
        if (error == std::errc() && value <= most && stop != end_ && !is_number_character(*stop) &&
            (first != '0' || stop == next_ + 1)) {
            next_ = stop;
            return value;
        }
    }
    const std::string text = token();
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = error == std::errc() && stop == text.data() + text.size();
    if (!whole || value > most || (text.size() > 1 && text[0] == '0')) {
        throw json_error("takes a whole number from 0 to " + std::to_string(most) + ", not " +
                         (text.empty() ? named(first) : text));
    }
    return value;
}

void json_reader::digits(const std::function<bool(uint8_t)> &byte) {
    if (!take('"')) {
        throw json_error("takes a string of hexadecimal digits, not " + named(peek()));
    }
    for (char c = character(); c != '"'; c = character()) {
        const int high = digit(c);
        const int low = high < 0 ? -1 : digit(character());
        if (low < 0) {
            throw json_error("takes hexadecimal digits of whole bytes");
        }
        if (!byte(static_cast<uint8_t>(high << 4 | low))) {
            return;
        }
    }
}

void json_reader::copy_string(std::string &to) {
    to += character();
    for (char c = '\0'; c != '"';) {
        c = character();
        to += c;
        if (c == '\\') {
            to += character();
        }
        if (to.size() > longest_kept) {
            throw json_error("is too long to be kept until what it depends on is known");
        }
    }
}

std::string json_reader::value() {
    std::string kept;
    size_t depth = 0;
    do {
        const char c = peek();
        if (c == '"') {
            copy_string(kept);
        } else if (c == '\0' || (depth == 0 && (c == ',' || c == ']' || c == '}' || c == ':'))) {
            throw json_error("is no JSON: a value is missing where " + named(c) + " stands");
        } else {
            depth += c == '[' || c == '{' ? 1 : 0;
            depth -= c == ']' || c == '}' ? 1 : 0;
            kept += character();
            // Words and numbers end where something else begins.
            const auto in_word = [&](char next) { return is_number_character(next) || (next >= 'a' && next <= 'z'); };
            while (in_word(c) && !at_end() && in_word(*next_)) {
                kept += character();
            }
        }
        if (depth > deepest || kept.size() > longest_kept) {
            throw json_error("is too deep or too long to be kept until what it depends on is known");
        }
    } while (depth != 0);
    return kept;
}

} // namespace ribkit::decode
