// Which characters a text may hold as they are.
#include "decode/escape.h"

#include "decode/output.h"

#include <cstddef>
#include <cstdint>

namespace ribkit::decode {

namespace {

constexpr std::string_view hex = "0123456789abcdef";

uint8_t byte_of(char c) { return static_cast<uint8_t>(c); }

/// How many bytes the UTF-8 character in front has; 0 where it is none.
size_t character_size(std::string_view text) {
    const uint8_t first = byte_of(text[0]);
    const size_t size = first < 0x80   ? 1
                        : first < 0xc2 ? 0
                        : first < 0xe0 ? 2
                        : first < 0xf0 ? 3
                        : first < 0xf5 ? 4
                                       : 0;
    if (size == 0 || size > text.size()) {
        return 0;
    }
    for (size_t i = 1; i < size; ++i) {
        if ((byte_of(text[i]) & 0xc0) != 0x80) {
            return 0;
        }
    }
    const uint8_t second = size > 1 ? byte_of(text[1]) : 0;
    const bool overlong = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
    const bool none = (first == 0xed && second >= 0xa0) || (first == 0xf4 && second >= 0x90);
    return overlong || none ? 0 : size;
}

bool is_control(char c) { return byte_of(c) < 0x20 || c == 0x7f; }

char *put_hex(char *to, uint8_t byte) {
    *to++ = hex[byte >> 4];
    *to++ = hex[byte & 0xf];
    return to;
}

char *put_ascii(char *to, char c) {
    if (is_control(c)) {
        return put_hex(put(to, "\\u00"), byte_of(c));
    }
    if (c == '"' || c == '\\') {
        *to++ = '\\';
    }
    *to++ = c;
    return to;
}

} // namespace

char *put_escaped(char *to, std::string_view text) {
    while (!text.empty()) {
        const size_t size = character_size(text);
        to = size == 1 ? put_ascii(to, text[0]) : size == 0 ? put(to, "\xef\xbf\xbd") : put(to, text.substr(0, size));
        text.remove_prefix(size == 0 ? 1 : size);
    }
    return to;
}

std::string as_utf8(std::string_view text) {
    std::string all;
    while (!text.empty()) {
        const size_t size = character_size(text);
        all += size == 0 ? std::string_view("\xef\xbf\xbd") : text.substr(0, size);
        text.remove_prefix(size == 0 ? 1 : size);
    }
    return all;
}

char *put_printable(char *to, std::string_view text) {
    while (!text.empty()) {
        const size_t size = character_size(text);
        const bool plain = size > 1 || (size == 1 && !is_control(text[0]));
        to = plain ? put(to, text.substr(0, size)) : put_hex(put(to, "\\x"), byte_of(text[0]));
        text.remove_prefix(size == 0 ? 1 : size);
    }
    return to;
}

} // namespace ribkit::decode
