// The stream is turned into a temporary file and back; what the file then holds is the text.
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

// One of this process's streams, for as long as the object lives.
class redirected {
  public:
    redirected(FILE *stream, int file) : stream_(stream) {
        std::fflush(stream);
        saved_ = dup(fileno(stream));
        require(saved_ >= 0 && dup2(file, fileno(stream)) >= 0);
    }
    redirected(const redirected &) = delete;
    redirected &operator=(const redirected &) = delete;
    ~redirected() {
        std::fflush(stream_);
        require(dup2(saved_, fileno(stream_)) >= 0);
        close(saved_);
    }

  private:
    FILE *stream_;
    int saved_;
};

static std::string written_to_a_file_by(const std::function<void(int file)> &action) {
    const int file = memfd_create("printed", MFD_CLOEXEC);
    require(file >= 0);
    action(file);
    std::string text(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
    require(pread(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
    close(file);
    return text;
}

std::string printed_by(const std::function<void()> &action) {
    return written_to_a_file_by([&](int file) {
        const redirected output{stdout, file};
        action();
    });
}

std::string all_printed_by(const std::function<void()> &action) {
    return written_to_a_file_by([&](int file) {
        const redirected output{stdout, file};
        const redirected errors{stderr, file};
        action();
    });
}

} // namespace ribkit::testing
