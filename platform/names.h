// What fabrics, groups of listeners and senders may be called: a word that no subject of a server is parted or matched
// by.
#pragma once

#include <algorithm>
#include <string_view>

namespace ribkit::platform {

inline bool is_name(std::string_view word) {
    return !word.empty() && std::all_of(word.begin(), word.end(), [](unsigned char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_';
    });
}

inline bool is_name(const char *word) { return word != nullptr && is_name(std::string_view{word}); }

} // namespace ribkit::platform
