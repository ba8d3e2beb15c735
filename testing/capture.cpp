#include "testing/capture.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace ribkit::testing {

static void require(bool holds) {
    if (!holds) {
        std::perror("testing/capture");
        std::abort();
    }
}

std::string printed_by(const std::function<void()> &action) {
    std::fflush(stdout);
    std::FILE *file = std::tmpfile();
    require(file != nullptr);
    const int saved = dup(STDOUT_FILENO);
    require(saved >= 0 && dup2(fileno(file), STDOUT_FILENO) >= 0);
    action();
    std::fflush(stdout);
    require(dup2(saved, STDOUT_FILENO) >= 0);
    close(saved);
    std::string text(static_cast<size_t>(lseek(fileno(file), 0, SEEK_END)), '\0');
    require(pread(fileno(file), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
    std::fclose(file);
    return text;
}

} // namespace ribkit::testing
