// What a command line may hold, as values: help, manual pages and the completion of shells are made of it, and see
// nothing of the parser.
#pragma once

#include "cli/command.h"

#include <string>
#include <vector>

namespace ribkit::cli {

/// An option, or an argument that has a place instead of dashes.
struct described_option {
    std::vector<std::string> names;   ///< "-o", "--output"; of an argument its only one
    std::string value;                ///< what stands for its value, "FILE"; empty for a flag
    std::string what;                 ///< as it is declared
    std::string standard;             ///< its value where none is given
    std::string variable;             ///< of the environment, where it may stand as well
    std::vector<std::string> choices; ///< all its values, where they are listed
    std::string endings;              ///< of the files that it names, ".hex .bin"; "*": any; empty: it names none
    std::vector<std::string> needs;
    std::vector<std::string> excludes;
    bool is_argument = false;
    bool is_required = false;
    bool repeats = false;
    bool may_have_file = false; ///< a flag, or with "=FILE" more than that
};

struct described_command {
    const command *row;
    std::vector<described_option> options; ///< arguments too, in the order of their declaration
};

/// All of them, in the order in which they are listed.
std::vector<described_command> described_commands();

/// The one of that name; throws an input_error, with what may have been meant, where there is none.
const described_command &described_named(const std::vector<described_command> &all, const std::string &name);

/// The types of values that an option has more to say of: "FILE" of "--json[=FILE]".
inline constexpr const char *optional_file = "[=FILE]";

/// "ribkit lab [OPTION...] FABRIC"
std::string usage_of(const described_command &one);

/// "-o, --output FILE"
std::string spelling_of(const described_option &option);

/// What is said of an option: its declaration's text, its default and what it goes with.
std::string meaning_of(const described_option &option);

/// What `ribkit NAME --help` prints.
std::string help_of(const described_command &one);

/// What `ribkit --help` prints.
std::string help_of(const std::vector<described_command> &all);

} // namespace ribkit::cli
