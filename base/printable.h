// Text of unknown origin, made harmless: nothing in it moves a cursor, changes the order of letters or a terminal's
// state. Letters of every language pass.
#pragma once

#include <string>
#include <string_view>

namespace ribkit::base {

/// The same with control characters and bytes that are no UTF-8 as "\xNN", and characters that turn the direction of
/// writing or belong to the second set of controls as "\uNNNN". It is one line.
std::string printable(std::string_view text);

/// The same, and no longer than a few lines of a terminal: of a long word, and of a long text, the first and the last
/// part is left.
std::string one_line(std::string_view text);

/// The same for text of several lines: line ends and tabs stay.
std::string printable_lines(std::string_view text);

/// Whether the byte is an ASCII control character.
constexpr bool is_control(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

} // namespace ribkit::base
