// What a function under test prints, as a string.
#pragma once

#include <functional>
#include <string>

namespace ribkit::testing {

/// Runs `action` with standard output redirected to a file in memory; returns what it printed.
std::string printed_by(const std::function<void()> &action);

/// The same for standard output and standard error together.
std::string all_printed_by(const std::function<void()> &action);

} // namespace ribkit::testing
