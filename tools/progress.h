// One line on the terminal that says how far the work is, and is gone when it is done.
#pragma once

#include <chrono>
#include <cstddef>

namespace ribkit {

class progress_line {
  public:
    /// Shows nothing unless standard error is a terminal, and none that TERM calls dumb or does not name.
    progress_line();
    progress_line(const progress_line &) = delete;
    progress_line &operator=(const progress_line &) = delete;
    ~progress_line() { clear(); }

    /// Redraws the line, at most ten times a second and not at all in the first quarter of one.
    void show(const char *what, size_t done, size_t total);
    void clear();

  private:
    bool on_terminal_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point next_;
};

} // namespace ribkit
