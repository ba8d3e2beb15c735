// Golden outputs: what a test prints is compared with a file in the tree. `./run golden` writes the files anew, for a
// person to look at the difference.
#pragma once

#include <gtest/gtest.h>
#include <string>

namespace ribkit::testing {

/// Whether `text` is what the file (a path from the root of the tree) holds; writes the file instead where the
/// environment variable RIBKIT_REFRESH_GOLDEN is set.
::testing::AssertionResult matches_golden(const std::string &path, const std::string &text);

/// A file of the tree as a string; empty where it is missing.
std::string file_content(const std::string &path);

} // namespace ribkit::testing
