// The columns of a row: numbers and texts put into their widths, digit by digit.
#include "diag/text/row.h"

namespace ribkit::diag {

char *put_number(char *to, uint32_t value, uint32_t packed_column) {
    const column in = unpacked(packed_column);
    const size_t digits = in.hex ? hex_digits(value) : decimal_digits(value);
    const size_t width = in.width;
    char *behind = to + std::max(digits, width);
    for (; to + digits != behind && !in.left; ++to) {
        *to = in.fill;
    }
    to = in.hex ? put_hex(to, value, digits) : put_decimal(to, value, digits);
    for (; to != behind; ++to) {
        *to = ' ';
    }
    return to;
}

} // namespace ribkit::diag
