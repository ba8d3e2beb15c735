// A second formatter, for the tests: rows are written as forms that it reads at run time, with fields named by place.
//
//   {d4@w8}        word at 8, decimal, left in 4 columns        {r8@w8}  right in 8 columns
//   {x6@w8}        hexadecimal with at least 6 digits           {X4@h6}  left in 4 columns
//   {t10:rib_uuid@w0}  text of a vocabulary, cut and padded to 10 (0: as it is)
//   {i16@w4} interface   {m@w8} calendar time   {f@w24} unicast flags   {c@b0} label control   {l@w8} label stack entry
//   {T&20@b18} T or F of a mask; {d0&1f@b18} and {d0>4@b5} mask and shift (hexadecimal, decimal)
//
// w, h and b are a word, a half word and a byte, most significant byte first.
#pragma once

#include <cstdint>
#include <string>

namespace ribkit::diag {

std::string render(const std::string &form, const uint8_t *bytes);

uint32_t word_at(const uint8_t *bytes, size_t offset);
std::string interface_text(uint32_t if_index);
std::string calendar_text(uint32_t seconds);

} // namespace ribkit::diag
