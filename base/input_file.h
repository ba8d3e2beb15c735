// What the user names as input: a file, or "-" for standard input.
#pragma once

#include <string>

namespace ribkit::base {

/// What the input is called in a message.
std::string input_title(const std::string &path);

/// Everything in it. Throws input_error where it cannot be read, or is longer than 64 MiB.
std::string read_input(const std::string &path);

} // namespace ribkit::base
