// Runs of the command that go on while the test does.
#pragma once

#include "testing/run_command.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace ribkit::testing {

inline std::string content(const std::string &path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// `ribkit ARGUMENTS` in the root of the tree while the test goes on; both outputs are kept.
class background {
  public:
    explicit background(const std::string &arguments) {
        const std::string line = "cd " RIBKIT_SOURCE_DIR " && exec " RIBKIT_COMMAND " " + arguments;
        const char *words[] = {"/bin/sh", "-c", line.c_str(), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
        posix_spawn(&process_, words[0], &actions, nullptr, const_cast<char *const *>(words), environ);
        posix_spawn_file_actions_destroy(&actions);
    }
    background(const background &) = delete;
    background &operator=(const background &) = delete;
    ~background() {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
        }
    }

    outcome ended() {
        int status = -1;
        if (process_ > 0) {
            waitpid(process_, &status, 0);
        }
        process_ = 0;
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, content(output_)};
    }

    outcome stopped(int signal) {
        if (process_ > 0) {
            kill(process_, signal);
        }
        return ended();
    }

    void suspend() const {
        kill(process_, SIGSTOP);
        waitpid(process_, nullptr, WUNTRACED);
    }

    [[nodiscard]] std::string so_far() const { return content(output_); }
    [[nodiscard]] pid_t number() const { return process_; }

    /// Whether it runs no more; it has not to be waited for.
    [[nodiscard]] bool has_ended() {
        if (process_ > 0 && waitpid(process_, nullptr, WNOHANG) == process_) {
            process_ = 0;
        }
        return process_ == 0;
    }

  private:
    testing::temporary_directory home_;
    std::string output_ = home_.file("output");
    pid_t process_ = 0;
};

/// Whether it comes true before a minute is over.
template <typename Condition> bool in_time(const Condition &condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

/// The displayed routes, from the heading on.
inline std::string tables(const std::string &output) {
    const size_t start = output.find("\nD:direct");
    return start == std::string::npos ? ""
                                      : output.substr(start, output.find("\n\n", output.find("----------")) - start);
}

} // namespace ribkit::testing
