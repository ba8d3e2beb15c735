// Runs of the command, as a user types them.
#pragma once

#include "testing/temporary_directory.h"
#include <algorithm>
#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <span>
#include <string>
#include <sys/wait.h>

namespace ribkit::testing {

struct outcome {
    int exit_code;
    std::string output;
};

/// Runs a shell's line in the root of the tree.
inline outcome run_line(const std::string &line) {
    std::FILE *pipe = popen(("cd " RIBKIT_SOURCE_DIR " && " + line).c_str(), "r");
    std::string output;
    std::array<char, 4096> part{};
    size_t read = 0;
    while ((read = std::fread(part.data(), 1, part.size(), pipe)) > 0) {
        output.append(part.data(), read);
    }
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

/// Runs `ribkit ARGUMENTS` there. Times are told in UTC.
inline outcome run_command(const std::string &arguments) { return run_line("TZ=UTC0 " RIBKIT_COMMAND " " + arguments); }

/// The one line that a mistake is answered with.
inline std::string complaint(const std::string &arguments) {
    const outcome run = run_command(arguments + " 2>&1");
    EXPECT_EQ(run.exit_code, 2) << arguments;
    EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 1) << arguments << ": " << run.output;
    return run.output;
}

} // namespace ribkit::testing
