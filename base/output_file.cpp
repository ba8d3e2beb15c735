// Written at once, without a buffer: what is said can be read while the command goes on, and a failure is noticed with
// its reason.
#include "base/output_file.h"

#include "base/input_error.h"
#include "base/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ribkit::base {

namespace {

constexpr mode_t readable_by_all = 0666;

std::optional<struct stat> regular_file(int found, const struct stat &info) {
    return found == 0 && S_ISREG(info.st_mode) ? std::optional(info) : std::nullopt;
}

std::optional<struct stat> regular_file(int descriptor) {
    struct stat info {};
    return regular_file(fstat(descriptor, &info), info);
}

std::optional<struct stat> regular_file(const std::string &path) {
    struct stat info {};
    return path == "-" ? regular_file(STDIN_FILENO) : regular_file(stat(path.c_str(), &info), info);
}

bool are_same(const std::optional<struct stat> &one, const std::optional<struct stat> &other) {
    return one && other && one->st_dev == other->st_dev && one->st_ino == other->st_ino;
}

void wait_for_room(int descriptor) {
    pollfd room{descriptor, POLLOUT, 0};
    poll(&room, 1, -1);
}

} // namespace

output_file::output_file()
    : descriptor_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)), begun_(true), on_terminal_(isatty(descriptor_) != 0) {}

output_file::output_file(std::string path, const std::vector<std::string> &inputs) : path_(std::move(path)) {
    constexpr int as_it_is = O_WRONLY | O_CREAT | O_CLOEXEC;
    descriptor_ = open(path_.c_str(), as_it_is | O_EXCL, readable_by_all);
    created_ = descriptor_ >= 0;
    if (!created_) {
        descriptor_ = open(path_.c_str(), as_it_is, readable_by_all);
    }
    if (descriptor_ < 0) {
        throw input_error(joined(path_, ": cannot be written: ", std::strerror(errno)));
    }
    refuse_inputs(inputs);
    on_terminal_ = isatty(descriptor_) != 0;
}

output_file::~output_file() { leave(); }

void output_file::leave() {
    if (descriptor_ >= 0) {
        close(std::exchange(descriptor_, -1));
    }
    if (created_ && !begun_) {
        unlink(path_.c_str());
    }
}

void output_file::refuse_inputs(const std::vector<std::string> &inputs) {
    const auto mine = regular_file(descriptor_);
    const auto overwritten = std::find_if(
        inputs.begin(), inputs.end(), [&](const std::string &input) { return are_same(mine, regular_file(input)); });
    if (overwritten != inputs.end()) {
        leave();
        throw input_error(joined(path_, ": is read by this command, and so not written"));
    }
}

bool output_file::is_same_file(const output_file &other) const {
    return are_same(regular_file(descriptor_), regular_file(other.descriptor_));
}

void output_file::begin() {
    // A pipe or terminal has nothing to lose.
    if (!std::exchange(begun_, true) && ftruncate(descriptor_, 0) != 0 && errno != EINVAL) {
        fail(errno);
    }
}

void output_file::write(std::string_view text) {
    begin();
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor_, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<size_t>(written));
        } else if (errno == EAGAIN) {
            wait_for_room(descriptor_);
        } else if (errno != EINTR) {
            fail(errno);
        }
    }
}

void output_file::fail(int reason) const {
    if (reason == EPIPE) {
        throw output_closed();
    }
    throw std::runtime_error(joined(path_.empty() ? "standard output" : printable(path_) + ":",
                                    " cannot be written: ", std::strerror(reason)));
}

void output_file::finish() {
    if (close(std::exchange(descriptor_, -1)) != 0 && errno != EBADF) {
        fail(errno);
    }
}

} // namespace ribkit::base
