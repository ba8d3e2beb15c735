// Bytes as they travel, from a file that holds them raw or as hexadecimal text.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace ribkit::cli {

enum class byte_form : uint8_t {
    detected, ///< text holds no control characters but white space; anything else is raw
    hex,
    raw
};

/// The bytes that `content` holds. As text: hexadecimal numbers of whole bytes, "0x" in front or not, apart or not;
/// `00*24` is that many times 00; `#` and what follows on its line is a comment; in a line of a dump, which begins with
/// an offset and a colon, the offset and the characters behind two blanks are passed over. It is 64 MiB at most. Throws
/// line_error.
/// @param first_line the number of the first line
std::vector<uint8_t> network_bytes(std::string_view content, byte_form form, uint32_t first_line = 1);

/// Raw or hexadecimal, as far as the beginning of a content tells.
byte_form form_of(std::string_view beginning);

} // namespace ribkit::cli
