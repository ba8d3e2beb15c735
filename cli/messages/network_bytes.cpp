// Hexadecimal text is what dumps look like: offsets in front, characters behind, comments, repeated lines.
#include "cli/messages/network_bytes.h"

#include "base/input_error.h"
#include "base/text.h"

#include <algorithm>
#include <charconv>

namespace ribkit::cli {

namespace {

constexpr std::string_view blanks = " \t\v\f\r";
constexpr uint32_t most_copies = 1 << 20;
constexpr size_t most_bytes = size_t{64} << 20;

bool is_binary(char c) {
    const auto code = static_cast<unsigned char>(c);
    return (code < ' ' && (code < '\t' || code > '\r')) || code == 0x7f;
}

int digit(char c) {
    const auto letter = static_cast<char>(c | 0x20);
    return c >= '0' && c <= '9' ? c - '0' : letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

bool all_digits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return digit(c) >= 0; });
}

/// What holds bytes in a line: neither its comment, nor what a dump prints before and behind them.
std::string_view bytes_part(std::string_view line) {
    const size_t colon = line.find(':');
    if (colon != std::string_view::npos && all_digits(line.substr(0, colon))) {
        line = line.substr(colon + 1);
        line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
        return line.substr(0, line.find("  "));
    }
    return line.substr(0, line.find('#'));
}

/// Takes the first piece of `text` that ends before a character of `separators`.
std::string_view take(std::string_view &text, std::string_view separators) {
    const size_t end = std::min(text.find_first_of(separators), text.size());
    const std::string_view piece = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return piece;
}

uint32_t copies(std::string_view text) {
    uint32_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    return error == std::errc() && end == text.data() + text.size() && count <= most_copies ? count : 0;
}

/// One number, `0x0102` or `01*24`.
void add_number(std::vector<uint8_t> &bytes, std::string_view number, uint32_t line) {
    std::string_view rest = number;
    std::string_view digits = take(rest, "*");
    digits.remove_prefix(digits.starts_with("0x") || digits.starts_with("0X") ? 2 : 0);
    const uint32_t count = digits.data() + digits.size() == number.data() + number.size() ? 1 : copies(rest);
    if (!all_digits(digits) || count == 0) {
        throw base::line_error(line, base::joined('"', number, "\" is no hexadecimal number"));
    }
    if (digits.size() % 2 != 0) {
        throw base::line_error(line, base::joined('"', number, "\" has an odd number of digits"));
    }
    if (digits.size() / 2 > (most_bytes - bytes.size()) / count) {
        throw base::line_error(line, base::joined("more than ", most_bytes, " bytes"));
    }
    for (uint32_t i = 0; i < count; i++) {
        for (size_t at = 0; at < digits.size(); at += 2) {
            bytes.push_back(static_cast<uint8_t>(digit(digits[at]) << 4 | digit(digits[at + 1])));
        }
    }
}

} // namespace

byte_form form_of(std::string_view beginning) {
    return std::any_of(beginning.begin(), beginning.end(), is_binary) ? byte_form::raw : byte_form::hex;
}

std::vector<uint8_t> network_bytes(std::string_view content, byte_form form, uint32_t first_line) {
    if ((form == byte_form::detected ? form_of(content) : form) == byte_form::raw) {
        return {content.begin(), content.end()};
    }
    std::vector<uint8_t> bytes;
    for (uint32_t line = first_line; !content.empty(); line++) {
        std::string_view numbers = bytes_part(take(content, "\n"));
        while (!numbers.empty()) {
            if (const std::string_view number = take(numbers, blanks); !number.empty()) {
                add_number(bytes, number, line);
            }
        }
    }
    return bytes;
}

} // namespace ribkit::cli
