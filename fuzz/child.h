// The command as a process that a test watches: what it prints, how it ends, and that it does end.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace ribkit::fuzz {

/// Whether what a child used at most says something: a sanitizer keeps what was freed, and what the test itself used
/// counts, too, until the child's program is there.
#ifdef RIBKIT_SANITIZED
inline constexpr bool memory_tells = false;
#else
inline constexpr bool memory_tells = true;
#endif

struct ending {
    bool in_time = true; ///< false: it had to be killed
    int signal = 0;      ///< that ended it, or 0
    int exit_code = -1;
    long most_memory = 0; ///< that it held at once, in KiB
    std::string output, errors;
};

/// What went on, for whoever reads that a test failed.
std::string shown(const ending &how);

class child {
  public:
    static constexpr std::chrono::seconds deadline{60};

    /// Starts `words` with `settings` ("NAME=VALUE") added to the environment, nothing to read, and its outputs read by
    /// this object.
    explicit child(const std::vector<std::string> &words, const std::vector<std::string> &settings = {});
    child(const child &) = delete;
    child &operator=(const child &) = delete;
    ~child();

    /// Reads until standard output holds the text. @return false where the outputs end before, or the deadline is over
    bool prints(std::string_view text);
    void signal(int number) const;
    /// Reads to the end. Kills the process when the deadline is over.
    ending end();

    [[nodiscard]] pid_t number() const { return process_; }

  private:
    bool read_some();
    [[nodiscard]] int left() const;

    pid_t process_ = 0;
    int output_ = -1;
    int errors_ = -1;
    std::chrono::steady_clock::time_point limit_ = std::chrono::steady_clock::now() + deadline;
    ending so_far_;
};

} // namespace ribkit::fuzz
