// What is wrong with a command line, each in one line that says what to type instead.
#pragma once

#include "base/input_error.h"

#include <string>
#include <string_view>
#include <vector>

namespace ribkit::cli {

/// The words of a command line behind the program's name.
using words = std::vector<std::string>;

/// The file that `--json=FILE` names, or an empty name where the option stands alone. Throws an input_error where the
/// option names nothing.
std::string json_file(const words &given);

/// Throws an input_error where a file's name behind `--json` was meant to be its value. It was not taken for that, but
/// for an argument of the command's: for one too many (`left_over`), or for one that can be left out.
/// @param has_own_word whether the command has to have an argument, which may stand there
void refuse_json_in_two_words(const std::string &command, const words &given, bool has_own_word, bool left_over);

/// For words that nothing takes.
/// @param command "ribkit lab"
/// @param options of the command, with their dashes
base::input_error unexpected(const std::string &command, const words &left, const std::vector<std::string> &options);

/// For a command line that does not begin with a command.
base::input_error no_command(const words &given, const std::vector<std::string_view> &commands);

} // namespace ribkit::cli
