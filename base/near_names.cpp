// A name is near when few letters separate it from what was typed.
#include "base/near_names.h"

#include "base/text.h"

#include <algorithm>
#include <numeric>

namespace ribkit::base {

namespace {

constexpr size_t most_edits = 2;

/// How many letters have to be added, removed or replaced to make one of the other.
size_t edits(std::string_view a, std::string_view b) {
    if (a.size() > b.size() + most_edits) {
        return a.size() - b.size();
    }
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (const char letter : a) {
        size_t diagonal = row[0]++;
        for (size_t i = 0; i < b.size(); i++) {
            const size_t replaced = diagonal + (letter == b[i] ? 0 : 1);
            diagonal = row[i + 1];
            row[i + 1] = std::min({replaced, diagonal + 1, row[i] + 1});
        }
    }
    return row.back();
}

} // namespace

std::vector<std::string_view> near_names(std::string_view wanted, const std::vector<std::string_view> &names) {
    std::vector<std::string_view> near;
    std::copy_if(names.begin(), names.end(), std::back_inserter(near), [&](std::string_view name) {
        return name.find(wanted) != std::string_view::npos || edits(wanted, name) <= most_edits;
    });
    return near;
}

std::string near_text(std::string_view wanted, const std::vector<std::string_view> &names) {
    std::string text;
    for (const std::string_view name : near_names(wanted, names)) {
        text += text.empty() ? "; near: " : ", ";
        text += name;
    }
    return text;
}

std::string no_such_name(std::string_view wanted, std::string_view kind, const std::vector<std::string_view> &names,
                         std::string_view command) {
    return joined(wanted, ": no ", kind, " has this name", near_text(wanted, names), "; ", command, " names them all");
}

} // namespace ribkit::base
