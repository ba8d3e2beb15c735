// The text command: what numbers are called, vocabulary by vocabulary.
#pragma once

#include "cli/command_output.h"
#include "diag/catalogue.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::cli {

struct text_options {
    std::string vocabulary;          ///< empty where all are listed
    std::vector<std::string> values; ///< numbers or texts; none: every text is listed
    output_options output;
};

struct value_text {
    uint32_t value;
    std::string written; ///< the value as the user wrote it
    std::string text;
    std::string errno_name; ///< of the system's reason that a result code carries; empty: none
    std::string errno_text;
};

/// What the values are called, or the numbers that are called so. Throws an input_error where one is neither.
std::vector<value_text> texts_of(const diag::vocabulary &words, const std::vector<std::string> &values);

/// Small numbers are known by their decimal digits, masks and codes by their bits.
std::string shown(uint32_t value);

int run_text(const text_options &options);

/// The vocabulary of that name; null where there is none. "rib_" or "fib_" may be left out where only one is meant, and
/// the name may be that of the converter, with "_to_str".
const diag::vocabulary *find_vocabulary(std::string_view name);

/// The same for a program.
void print_json(command_output &out, const std::vector<value_text> &texts);
void print_json(command_output &out, const std::vector<const diag::vocabulary *> &listed);

} // namespace ribkit::cli
