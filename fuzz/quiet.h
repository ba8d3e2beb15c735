// Standard output goes nowhere while one of these lives.
#pragma once

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace ribkit::fuzz {

class quiet {
  public:
    quiet() : saved_(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        const int nowhere = ::open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    quiet(const quiet &) = delete;
    quiet &operator=(const quiet &) = delete;
    ~quiet() {
        std::fflush(stdout);
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
    }

  private:
    int saved_;
};

} // namespace ribkit::fuzz
