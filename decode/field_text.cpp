// Texts of what is no plain number.
#include "decode/field_text.h"

#include "decode/output.h"
#include "diag/compose.h"

#include <algorithm>

namespace ribkit::decode {

char *put_address(char *to, uint32_t address) {
    return diag::put_hex(put(to, "0x"), address, address >> 24 == 0 ? 6 : 8);
}

char *put_digits(char *to, std::span<const uint8_t> bytes) {
    for (const uint8_t byte : bytes) {
        to = diag::put_hex(to, byte, 2);
    }
    return to;
}

char *put_use(char *to, const field &f, uint32_t word) {
    to = put(to, f.use->use);
    if (const number_text text = text_of(f.use->vocabulary)) {
        to = text.put(put(to, ": "), word);
    } else if (f.use->is_address) {
        to = put_address(put(to, ": "), word);
    }
    return to;
}

std::string_view name_in(std::span<const uint8_t> room) {
    const auto end = std::find(room.begin(), room.end(), uint8_t{0});
    return {reinterpret_cast<const char *>(room.data()), static_cast<size_t>(end - room.begin())};
}

} // namespace ribkit::decode
