// What stands for values where options are declared: what each is, and which values are known.
#pragma once

#include "cli/usage_errors.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::cli {

/// A word that may stand there.
struct candidate {
    std::string word;
    std::string what;
};

struct value_type {
    std::string_view name; ///< "VSAN"; an argument's type is its name
    const char *what;
    /// @param given the words in front of it, from the command on
    std::vector<candidate> (*known)(const words &given); ///< null where nothing is
};

std::span<const value_type> value_types();

/// Null where there is none of that name.
const value_type *value_type_named(std::string_view name);

/// What a kind of file holds, by the ending that its names have.
struct file_type {
    std::string_view ending;
    const char *what;
};

std::span<const file_type> file_types();

} // namespace ribkit::cli
