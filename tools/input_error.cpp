#include "tools/input_error.h"

#include <array>
#include <cstdio>

namespace ribkit {

std::string printable(const std::string &text) {
    std::string result;
    for (const char c : text) {
        if (is_control(c)) {
            std::array<char, 5> code{};
            std::snprintf(code.data(), code.size(), "\\x%02x", static_cast<unsigned char>(c));
            result += code.data();
        } else {
            result += c;
        }
    }
    return result;
}

} // namespace ribkit
