// Kept outputs: one file each, compared byte for byte. `./run golden` (RIBKIT_REFRESH_GOLDEN in the environment) writes
// the files instead; a person then reads the difference.
#pragma once

#include <string>

namespace ribkit::testing {

/// Fails the running test where `text` differs from the file at `path`, which counts from the root of the tree.
void expect_golden(const std::string &path, const std::string &text);

/// A file of the tree as a string. Fails the running test where it cannot be read.
std::string file_content(const std::string &path);

} // namespace ribkit::testing
