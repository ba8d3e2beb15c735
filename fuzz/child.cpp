// Pipes to and from the child, read until it ends; one that does not end in time is killed, and that is a failure.
#include "fuzz/child.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ribkit::fuzz {

namespace {

std::vector<char *> pointers(const std::vector<std::string> &texts) {
    std::vector<char *> all;
    for (const std::string &text : texts) {
        all.push_back(const_cast<char *>(text.c_str()));
    }
    return all;
}

// Whether there may be more.
bool read_from(int &end, std::string &text) {
    std::array<char, 65536> part{};
    const ssize_t size = read(end, part.data(), part.size());
    if (size > 0) {
        text.append(part.data(), static_cast<size_t>(size));
        return true;
    }
    close(end);
    end = -1;
    return false;
}

} // namespace

std::string shown(const ending &how) {
    std::string text = !how.in_time      ? "did not end"
                       : how.signal != 0 ? "ended by signal " + std::to_string(how.signal)
                                         : "exit code " + std::to_string(how.exit_code);
    return text + "\nstandard error:\n" + how.errors.substr(0, 2000) + "\nstandard output:\n" +
           how.output.substr(0, 2000);
}

child::child(const std::vector<std::string> &words, const std::vector<std::string> &settings) {
    std::array<int, 2> output{};
    std::array<int, 2> errors{};
    if (pipe2(output.data(), O_CLOEXEC) != 0 || pipe2(errors.data(), O_CLOEXEC) != 0) {
        std::abort();
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    std::vector<char *> arguments = pointers(words);
    arguments.push_back(nullptr);
    std::vector<char *> environment = pointers(settings);
    for (char **one = environ; *one != nullptr; ++one) {
        environment.push_back(*one);
    }
    environment.push_back(nullptr);
    if (posix_spawn(&process_, arguments[0], &actions, nullptr, arguments.data(), environment.data()) != 0) {
        std::abort();
    }
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    close(errors[1]);
    output_ = output[0];
    errors_ = errors[0];
}

child::~child() {
    if (process_ > 0) {
        kill(process_, SIGKILL);
        end();
    }
}

int child::left() const {
    const auto time = std::chrono::ceil<std::chrono::milliseconds>(limit_ - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(time.count(), 0));
}

bool child::read_some() {
    std::array<pollfd, 2> ends{{{output_, POLLIN, 0}, {errors_, POLLIN, 0}}};
    if (poll(ends.data(), ends.size(), left()) <= 0) {
        return false;
    }
    if (ends[0].revents != 0) {
        read_from(output_, so_far_.output);
    }
    if (ends[1].revents != 0) {
        read_from(errors_, so_far_.errors);
    }
    return true;
}

bool child::prints(std::string_view text) {
    limit_ = std::chrono::steady_clock::now() + deadline;
    while (so_far_.output.find(text) == std::string::npos) {
        if (output_ < 0 || !read_some()) {
            return false;
        }
    }
    return true;
}

void child::signal(int number) const { kill(process_, number); }

ending child::end() {
    limit_ = std::chrono::steady_clock::now() + deadline;
    while (output_ >= 0 || errors_ >= 0) {
        if (!read_some()) {
            so_far_.in_time = false;
            kill(process_, SIGKILL);
            limit_ = std::chrono::steady_clock::now() + deadline;
        }
    }
    int status = 0;
    rusage used{};
    wait4(process_, &status, 0, &used);
    process_ = 0;
    so_far_.most_memory = used.ru_maxrss;
    so_far_.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    so_far_.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return so_far_;
}

} // namespace ribkit::fuzz
