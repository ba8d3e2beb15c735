#include "testing/capture.h"

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
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
    const int file = memfd_create("printed", MFD_CLOEXEC);
    const int saved = dup(STDOUT_FILENO);
    require(file >= 0 && saved >= 0 && dup2(file, STDOUT_FILENO) >= 0);
    action();
    std::fflush(stdout);
    require(dup2(saved, STDOUT_FILENO) >= 0);
    close(saved);
    std::string text(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
    require(pread(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
    close(file);
    return text;
}

} // namespace ribkit::testing
