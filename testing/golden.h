// Kept outputs: one file each, compared byte for byte. With RIBKIT_REFRESH_GOLDEN=1 in the environment the files are
// written instead; a person then reads the difference.
#pragma once

#include <string>

namespace ribkit::testing {

/// Fails the running test where `text` differs from the file at `path`.
void expect_golden(const std::string &path, const std::string &text);

} // namespace ribkit::testing
