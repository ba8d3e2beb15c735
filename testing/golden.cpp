#include "testing/golden.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace ribkit::testing {

static bool refreshing() {
    const char *wish = std::getenv("RIBKIT_REFRESH_GOLDEN");
    return wish != nullptr && std::string(wish) == "1";
}

void expect_golden(const std::string &path, const std::string &text) {
    if (refreshing()) {
        std::ofstream(path, std::ios::binary) << text;
    }
    std::ifstream file(path, std::ios::binary);
    ASSERT_TRUE(file) << path << " cannot be read; RIBKIT_REFRESH_GOLDEN=1 writes it";
    std::ostringstream kept;
    kept << file.rdbuf();
    EXPECT_EQ(text, kept.str()) << path;
}

} // namespace ribkit::testing
