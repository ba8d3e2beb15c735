// The descriptor becomes the way into a pipe. A thread empties the pipe into memory whenever something is there, and
// memory into the real output whenever that takes something; it never waits for the latter alone.
#include "base/patient_output.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <pthread.h>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>

namespace ribkit::base {

namespace {

constexpr size_t most_held = size_t{1} << 20;
constexpr std::chrono::milliseconds farewell{300}; ///< without that anything is read

bool is_ready(int descriptor, std::chrono::milliseconds patience) {
    pollfd one{descriptor, POLLOUT, 0};
    return poll(&one, 1, static_cast<int>(patience.count())) > 0;
}

/// No more than a pipe that is ready has room for; a pipe that somebody else has filled meanwhile is not waited for.
/// @return bytes taken
size_t write_some(int descriptor, std::string_view text) {
    iovec piece{const_cast<char *>(text.data()), std::min<size_t>(text.size(), PIPE_BUF)};
    ssize_t written = pwritev2(descriptor, &piece, 1, -1, RWF_NOWAIT);
    if (written < 0 && errno != EAGAIN && errno != EPIPE) { // files and terminals do not know the flag
        written = write(descriptor, piece.iov_base, piece.iov_len);
    }
    if (written < 0) {
        return errno == EINTR || errno == EAGAIN ? 0 : text.size();
    }
    return static_cast<size_t>(written);
}

/// Whole lines that wait for a reader.
class held_lines {
  public:
    void add(std::string_view text) {
        while (!text.empty()) {
            const size_t end = text.find('\n');
            const std::string_view line = text.substr(0, end == std::string_view::npos ? text.size() : end + 1);
            text.remove_prefix(line.size());
            add_piece(line, line.back() == '\n');
        }
    }
    void end() {
        if (lost_ > 0) {
            tell_lost();
        }
    }
    void remove(size_t size) { held_.erase(0, size); }
    [[nodiscard]] std::string_view first() const { return std::string_view(held_).substr(0, PIPE_BUF); }
    [[nodiscard]] bool empty() const { return held_.empty(); }
    [[nodiscard]] const std::string &all() const { return held_; }

  private:
    // A line that has begun goes on, or is lost from its middle on.
    void add_piece(std::string_view piece, bool ends) {
        if (!within_ && lost_ > 0 && held_.size() < most_held / 2) {
            tell_lost();
        }
        losing_ = (within_ && losing_) || held_.size() + piece.size() > most_held || (!within_ && lost_ > 0);
        if (!losing_ && !keep(piece)) {
            losing_ = true;
        }
        lost_ += losing_ && ends ? 1 : 0;
        within_ = !ends;
    }

    void tell_lost() {
        char text[80];
        const int length = std::snprintf(text, sizeof text, "ribkit: nobody read: %zu lines were lost here\n", lost_);
        if (keep({text, static_cast<size_t>(length)})) {
            lost_ = 0;
        }
    }

    bool keep(std::string_view piece) {
        try {
            held_ += piece;
            return true;
        } catch (const std::bad_alloc &) {
            return false;
        }
    }

    std::string held_;
    size_t lost_ = 0;
    bool within_ = false; ///< a line
    bool losing_ = false; ///< the line at hand
};

} // namespace

void ignore_gone_readers() {
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
}

size_t write_patiently(int descriptor, std::string_view text, std::chrono::milliseconds patience) {
    size_t taken = 0;
    for (size_t now = 1; now > 0 && taken < text.size(); taken += now) {
        now = is_ready(descriptor, patience) ? write_some(descriptor, text.substr(taken)) : 0;
    }
    return taken;
}

patient_output::patient_output(int descriptor) : descriptor_(descriptor) {
    std::fflush(stdout);
    int ends[2] = {-1, -1};
    real_ = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (real_ < 0 || pipe2(ends, O_CLOEXEC) != 0) {
        const int reason = errno;
        close(real_);
        throw std::system_error(reason, std::generic_category(), "cannot print");
    }
    from_ = ends[0];
    carrying_ = std::thread([this] { carry(); });
    dup2(ends[1], descriptor);
    close(ends[1]);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

patient_output::~patient_output() {
    std::fflush(stdout);
    dup2(real_, descriptor_); // the pipe's last way in is closed
    carrying_.join();
    close(from_);
    close(real_);
}

void patient_output::carry() const {
    ignore_gone_readers();
    char block[size_t{16} * 1024];
    held_lines held;
    for (;;) {
        pollfd both[] = {{from_, POLLIN, 0}, {held.empty() ? -1 : real_, POLLOUT, 0}};
        poll(both, 2, -1);
        if (both[0].revents != 0) {
            const ssize_t size = read(from_, block, sizeof block);
            if (size == 0) {
                break;
            }
            held.add({block, static_cast<size_t>(size < 0 ? 0 : size)});
        }
        if (both[1].revents != 0) {
            held.remove(write_some(real_, held.first()));
        }
    }
    held.end();
    write_patiently(real_, held.all(), farewell);
}

} // namespace ribkit::base
