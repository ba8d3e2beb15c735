// Short work stays silent, and a redirected standard error stays clean.
#include "base/progress.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace ribkit::base {

namespace {

constexpr std::chrono::milliseconds between_drawings{100};

/// A terminal, and one that can clear its line.
bool understands_escapes() {
    const char *kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) != 0 && kind != nullptr && *kind != '\0' && std::strcmp(kind, "dumb") != 0;
}

} // namespace

progress_line::progress_line(std::chrono::milliseconds silent_at_first)
    : on_terminal_(understands_escapes()), next_(std::chrono::steady_clock::now() + silent_at_first) {}

void progress_line::show(const char *what, size_t done, size_t total) {
    const auto now = std::chrono::steady_clock::now();
    if (!on_terminal_ || now < next_) {
        return;
    }
    std::fprintf(stderr, "\r\033[K%zu of %zu %s", done, total, what);
    std::fflush(stderr);
    drawn_ = true;
    next_ = now + between_drawings;
}

void progress_line::clear() {
    if (drawn_) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        drawn_ = false;
    }
}

} // namespace ribkit::base
