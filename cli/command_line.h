// What the user typed: parsed, and the command run.
#pragma once

namespace ribkit::cli {

/// @return the command's exit code. Throws an input_error, one line, where the command line is wrong.
int run_command_line(int argc, char **argv);

} // namespace ribkit::cli
