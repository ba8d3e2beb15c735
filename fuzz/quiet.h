// An output goes nowhere while one of these lives.
#pragma once

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace ribkit::fuzz {

class quiet {
  public:
    explicit quiet(std::FILE *output = stdout) : output_(output), saved_(fcntl(fileno(output), F_DUPFD_CLOEXEC, 3)) {
        std::fflush(output);
        const int nowhere = ::open("/dev/null", O_WRONLY);
        dup2(nowhere, fileno(output));
        close(nowhere);
    }
    quiet(const quiet &) = delete;
    quiet &operator=(const quiet &) = delete;
    ~quiet() {
        std::fflush(output_);
        dup2(saved_, fileno(output_));
        close(saved_);
    }

  private:
    std::FILE *output_;
    int saved_;
};

} // namespace ribkit::fuzz
