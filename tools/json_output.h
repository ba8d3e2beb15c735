// Where a run's JSON goes: opened before the run, so that a run is not in vain; what a file held is
// lost only when there is something new to write.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace ribkit {

class json_output {
  public:
    /// @param path empty: none; "-": standard output, which is nobody else's then: whatever is printed from now on, by
    /// the RIB's allocators too, goes to standard error. Throws an input_error where it cannot be written.
    explicit json_output(std::string path);

    [[nodiscard]] bool wanted() const { return file_ != nullptr; }
    [[nodiscard]] bool alone() const { return path_ == "-"; }
    void write(const std::string &text) const;

  private:
    std::string path_;
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> file_;
};

} // namespace ribkit
