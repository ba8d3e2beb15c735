// Files are found from the root of the tree, wherever the test runs.
#include "testing/golden.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace ribkit::testing {

static std::string in_tree(const std::string &path) {
    return path.starts_with('/') ? path : RIBKIT_SOURCE_DIR "/" + path;
}

std::string file_content(const std::string &path) {
    std::ifstream file(in_tree(path), std::ios::binary);
    EXPECT_TRUE(file) << path << " cannot be read; ./run golden writes it";
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void expect_golden(const std::string &path, const std::string &text) {
    if (std::getenv("RIBKIT_REFRESH_GOLDEN") != nullptr) {
        std::ofstream(in_tree(path), std::ios::binary) << text;
    }
    EXPECT_EQ(text, file_content(path)) << path;
}

} // namespace ribkit::testing
