#include "testing/golden.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace ribkit::testing {

static std::string in_tree(const std::string &path) { return std::string(RIBKIT_SOURCE_DIR "/") + path; }

std::string file_content(const std::string &path) {
    std::ostringstream content;
    content << std::ifstream(in_tree(path), std::ios::binary).rdbuf();
    return content.str();
}

::testing::AssertionResult matches_golden(const std::string &path, const std::string &text) {
    if (std::getenv("RIBKIT_REFRESH_GOLDEN") != nullptr) {
        std::ofstream(in_tree(path), std::ios::binary) << text;
        return ::testing::AssertionSuccess();
    }
    const std::string expected = file_content(path);
    if (text == expected) {
        return ::testing::AssertionSuccess();
    }
    const size_t at = std::mismatch(text.begin(), text.end(), expected.begin(), expected.end()).first - text.begin();
    const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n');
    const auto rest = [at](const std::string &s) { return s.substr(std::min(at, s.size()), 60); };
    return ::testing::AssertionFailure() << path << " differs at byte " << at << ", line " << line << ": printed \""
                                         << rest(text) << "\", expected \"" << rest(expected) << '"';
}

} // namespace ribkit::testing
