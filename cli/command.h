// What the command line knows of a command: a row for each, and the lists of them. CLI11 is seen by few files, since it
// takes seconds to compile: command_line.cpp and those that declare the options of a group of commands.
#pragma once

#include "cli/usage_errors.h"

#include <array>
#include <functional>
#include <span>

namespace CLI {
class App;
}

namespace ribkit::cli {

/// What is done once the command line is understood; returns the exit code.
using action = std::function<int()>;

struct example {
    const char *words = nullptr; ///< behind "ribkit"
    const char *what = "";
};

struct command {
    const char *name;
    const char *description;
    action (*declare)(CLI::App &app, const words &given);
    /// Whether it has to have an argument, so that what stands behind `--json` may be meant as that.
    bool has_own_word;
    const char *details;             ///< paragraphs, in lines as they are shown
    std::array<example, 3> examples; ///< the rest of them empty
    const char *failure;             ///< when its exit code is 1
};

inline constexpr const char *what_ribkit_is = "Routing information base of a Fibre Channel fabric, off the switch";

struct exit_code {
    int number;
    const char *what; ///< null: each command's own
};

inline constexpr exit_code exit_codes[] = {
    {0, "all went well"},
    {1, nullptr},
    {2, "the command line or an input is wrong: one line says where, and nothing was run"},
};

inline constexpr const char *output_lost = "the output cannot be written";

/// Fabrics, their RIB and its routes.
std::span<const command> fabric_commands();

/// What an operator asks of a RIB that runs.
std::span<const command> rib_commands();

/// Messages, displays and texts.
std::span<const command> message_commands();

} // namespace ribkit::cli
