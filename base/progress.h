// One line on the terminal that says how far the work is, and is gone when it is done.
#pragma once

#include <chrono>
#include <cstddef>

namespace ribkit::base {

class progress_line {
  public:
    /// Shows nothing unless standard error is a terminal, and none that TERM calls dumb or does not name.
    /// @param silent_at_first short work is done before that, and shows nothing
    explicit progress_line(std::chrono::milliseconds silent_at_first = std::chrono::milliseconds(250));
    progress_line(const progress_line &) = delete;
    progress_line &operator=(const progress_line &) = delete;
    ~progress_line() { clear(); }

    /// Redraws the line, at most ten times a second.
    void show(const char *what, size_t done, size_t total);
    void clear();

  private:
    bool on_terminal_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point next_;
};

} // namespace ribkit::base
