// UTF-8 is read by hand, character by character, so that what is none of it is seen.
#include "base/printable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace ribkit::base {

namespace {

struct character {
    uint32_t code;
    size_t length; ///< in bytes; 0: no UTF-8
};

constexpr character no_character{0, 0};

/// How many bytes a character has that begins so; 0: none begins so.
constexpr size_t announced_length(unsigned char first) {
    return first < 0x80 ? 1 : first < 0xc2 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : first < 0xf5 ? 4 : 0;
}

/// Neither written with more bytes than it needs, nor half a pair of another encoding, nor behind the last one.
constexpr bool is_allowed(const character &read) {
    constexpr std::array<uint32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
    return read.code >= least[read.length] && read.code <= 0x10ffff && (read.code < 0xd800 || read.code > 0xdfff);
}

character first_of(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const size_t length = announced_length(first);
    if (length == 0 || length > text.size()) {
        return no_character;
    }
    character read{length == 1 ? first : first & (0xffU >> (length + 1)), length};
    for (size_t i = 1; i < length; i++) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xc0U) != 0x80) {
            return no_character;
        }
        read.code = read.code << 6 | (next & 0x3fU);
    }
    return is_allowed(read) ? read : no_character;
}

/// The second set of controls, and what turns or encloses the direction of writing.
constexpr bool acts_on_terminal(uint32_t code) {
    return (code >= 0x80 && code <= 0x9f) || (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
}

std::string escaped(const char *format, unsigned value) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

/// Takes the first character from `text`. @return how it is printed
std::string take_printable(std::string_view &text, std::string_view kept) {
    const character next = first_of(text);
    const std::string_view bytes = text.substr(0, next.length == 0 ? 1 : next.length);
    text.remove_prefix(bytes.size());
    if (next.length == 0 || (is_control(bytes[0]) && kept.find(bytes[0]) == std::string_view::npos)) {
        return escaped("\\x%02x", static_cast<unsigned char>(bytes[0]));
    }
    return acts_on_terminal(next.code) ? escaped("\\u%04x", next.code) : std::string(bytes);
}

/// How much of the text, from its begin on, anybody can print.
size_t plain_length(std::string_view text) {
    return std::find_if(text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }) - text.begin();
}

std::string all_printable(std::string_view text, std::string_view kept) {
    std::string result;
    while (!text.empty()) {
        const size_t plain = plain_length(text);
        result += text.substr(0, plain);
        text.remove_prefix(plain);
        if (!text.empty()) {
            result += take_printable(text, kept);
        }
    }
    return result;
}

constexpr size_t longest_word = 200;
constexpr size_t longest_line = 1000;

bool continues_character(char c) { return (static_cast<unsigned char>(c) & 0xc0U) == 0x80; }

/// The first third and the last quarter of `most` bytes. No character is cut in two.
std::string shortened(std::string_view text, size_t most) {
    if (text.size() <= most) {
        return std::string(text);
    }
    size_t first = most / 3;
    size_t last = text.size() - most / 4;
    while (first > 0 && continues_character(text[first])) {
        first--;
    }
    while (last < text.size() && continues_character(text[last])) {
        last++;
    }
    return std::string(text.substr(0, first)) + "..." + std::string(text.substr(last));
}

std::string with_short_words(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const size_t end = std::min(text.find(' '), text.size());
        result += shortened(text.substr(0, end), longest_word);
        result += end < text.size() ? " " : "";
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

} // namespace

std::string one_line(std::string_view text) { return printable(shortened(with_short_words(text), longest_line)); }

std::string printable(std::string_view text) { return all_printable(text, ""); }

std::string printable_lines(std::string_view text) { return all_printable(text, "\n\t"); }

} // namespace ribkit::base
