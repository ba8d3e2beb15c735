// The texts of fields, as both writers show them and as the reader of JSON compares them.
#pragma once

#include "decode/shape.h"

#include <span>

namespace ribkit::decode {

/// "0x020000": six digits, eight where the top byte is not 0. @return behind it
char *put_address(char *to, uint32_t address);

char *put_digits(char *to, std::span<const uint8_t> bytes);

/// What our services mean by a word: "result: no error". @return behind it
char *put_use(char *to, const field &f, uint32_t word);

/// The characters of a name, to the first that is 0.
std::string_view name_in(std::span<const uint8_t> room);

} // namespace ribkit::decode
