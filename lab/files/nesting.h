// How deep a TOML file goes. Its parser, and the tables that it makes, go one call deeper with every bracket inside
// another and with every part of a dotted key; so both are counted before it sees the text.
#pragma once

#include <string_view>

namespace ribkit::lab {

inline constexpr unsigned most_brackets = 64; ///< inside each other
inline constexpr unsigned most_dots = 1000;   ///< in the keys of one statement

/// Throws a line_error where the text goes deeper. What stands in strings and comments does not count.
void refuse_deep_nesting(std::string_view text);

} // namespace ribkit::lab
