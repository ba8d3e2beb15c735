// What a user asks a vocabulary: a number, or a text whose numbers are wanted.
#include "base/input_error.h"
#include "base/near_names.h"
#include "base/text.h"
#include "cli/messages/text.h"
#include "diag/catalogue.h"
#include "rib_codes.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>

using namespace ribkit::diag;

namespace ribkit::cli {

namespace {

constexpr size_t longest_text = 64;
constexpr uint32_t errno_bits = 0xffff;

std::optional<uint32_t> number_of(std::string_view written) {
    const bool hex = written.starts_with("0x") || written.starts_with("0X");
    const char *end = written.data() + written.size();
    uint32_t value = 0;
    const auto [stopped, error] = std::from_chars(written.data() + (hex ? 2 : 0), end, value, hex ? 16 : 10);
    return error == std::errc() && stopped == end ? std::optional(value) : std::nullopt;
}

/// The system's reason in a result code that carries one.
void add_reason(value_text &entry) {
    const auto reason = static_cast<int>(entry.value & errno_bits);
    const char *name = strerrorname_np(reason);
    if ((entry.value & ~errno_bits) == RIB_PLATFORM_FAILURE && reason != 0 && name != nullptr) {
        entry.errno_name = name;
        entry.errno_text = std::strerror(reason);
    }
}

value_text text_of(const vocabulary &words, uint32_t value, const std::string &written) {
    char text[longest_text] = "";
    words.converter(value, text);
    value_text entry{value, written, text, "", ""};
    if (words.converter == rib_rtn_to_str) {
        add_reason(entry);
    }
    return entry;
}

std::string in_small_letters(std::string_view text) {
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return small;
}

/// The rows whose text fits, capital letters or not.
template <typename Fits>
std::vector<value_text> rows_that_fit(const vocabulary &words, const std::string &wanted, Fits fits) {
    std::vector<value_text> found;
    for (const text_row &row : words.rows) {
        if (fits(in_small_letters(row.text), wanted)) {
            found.push_back(text_of(words, row.value, shown(row.value)));
        }
    }
    return found;
}

/// Those that have the text; where none has, those that have it as a part.
std::vector<value_text> rows_called(const vocabulary &words, const std::string &text) {
    const std::string wanted = in_small_letters(text);
    const auto same = rows_that_fit(words, wanted, [](const auto &one, const auto &other) { return one == other; });
    if (!same.empty() || wanted.empty()) {
        return same;
    }
    return rows_that_fit(words, wanted,
                         [](const auto &one, const auto &part) { return one.find(part) != std::string::npos; });
}

base::input_error no_such_value(const vocabulary &words, const std::string &written) {
    std::vector<std::string_view> names;
    std::transform(words.rows.begin(), words.rows.end(), std::back_inserter(names),
                   [](const text_row &row) { return row.text; });
    return base::input_error(base::joined('"', written, "\" is no number from 0 to 0xffffffff, and no text of ",
                                          words.name, written.empty() ? "" : base::near_text(written, names)));
}

} // namespace

std::string shown(uint32_t value) { return value < 0x100 ? base::joined(value) : base::joined("0x", std::hex, value); }

std::vector<value_text> texts_of(const vocabulary &words, const std::vector<std::string> &values) {
    std::vector<value_text> texts;
    for (const std::string &written : values) {
        const auto value = number_of(written);
        const auto found = value ? std::vector{text_of(words, *value, written)} : rows_called(words, written);
        if (found.empty()) {
            throw no_such_value(words, written);
        }
        texts.insert(texts.end(), found.begin(), found.end());
    }
    return texts;
}

} // namespace ribkit::cli
