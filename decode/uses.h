// What our own services put into words that the messages leave open. It is shown beside the word and enters no layout.
#pragma once

#include <string_view>

namespace ribkit::decode {

struct word_use {
    const char *message;
    const char *word;
    const char *use;
    const char *vocabulary = ""; ///< where its numbers have texts
    bool is_address = false;
};

inline constexpr word_use word_uses[] = {
    {"rib_fcurt_rsp", "word_0", "result", "rib_rtn"},
    {"rib_fcurt_rsp", "word_4", "oper", "rib_oper"},
    {"rib_fcurt_rsp", "word_8", "vsan"},
    {"rib_fcurt_rsp", "word_12", "accepted"},
    {"rib_fcurt_rsp", "word_16", "held"},
    {"rib_fcurt_query", "word_12", "vsan"},
    {"rib_fcurt_query", "word_16", "fcid", "", true},
    {"rib_fcurt_query", "word_20", "mask", "", true},
};

/// Null where there is none.
constexpr const word_use *use_of(std::string_view message, std::string_view word) {
    for (const word_use &use : word_uses) {
        if (message == use.message && word == use.word) {
            return &use;
        }
    }
    return nullptr;
}

} // namespace ribkit::decode
