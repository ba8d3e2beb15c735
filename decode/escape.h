// Characters of unknown origin inside a text.
#pragma once

#include <string>
#include <string_view>

namespace ribkit::decode {

/// Writes the characters as a JSON string holds them, between quotes that are not written; what is no UTF-8 becomes the
/// replacement character. Takes at most 6 bytes a character. @return behind them
char *put_escaped(char *to, std::string_view text);

/// What a reader of that string finds.
std::string as_utf8(std::string_view text);

/// Writes them as a line of text may show them: control characters and bytes that are no UTF-8 as "\xNN". Takes at most
/// 4 bytes a character. @return behind them
char *put_printable(char *to, std::string_view text);

} // namespace ribkit::decode
