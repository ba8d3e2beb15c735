// One place that a command writes to: a file that was named, or standard output.
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::base {

/// Who read what is written has left: nobody is there any more to be told.
struct output_closed : std::exception {};

class output_file {
  public:
    /// Standard output, as it leads now.
    output_file();

    /// A file by its name. What it holds stays until something is written. Throws an input_error where it cannot be
    /// written, or is one of the inputs, which are names of files, "-" for standard input.
    output_file(std::string path, const std::vector<std::string> &inputs);

    output_file(const output_file &) = delete;
    output_file &operator=(const output_file &) = delete;

    /// A file that nothing was written to is as it was, or is not there.
    ~output_file();

    /// Throws output_closed, or std::runtime_error where it cannot be written for another reason.
    void write(std::string_view text);

    /// Says that something is being written by the descriptor.
    void begin();

    /// Throws as `write` does, the system's reason being `reason`.
    [[noreturn]] void fail(int reason) const;

    /// Closes the file; throws as `write` does where the system has lost something of it.
    void finish();

    [[nodiscard]] int descriptor() const { return descriptor_; }
    [[nodiscard]] bool on_terminal() const { return on_terminal_; }
    [[nodiscard]] bool is_same_file(const output_file &other) const;

  private:
    void refuse_inputs(const std::vector<std::string> &inputs);
    void leave();

    std::string path_; ///< empty: standard output
    int descriptor_ = -1;
    bool created_ = false; ///< was not there before
    bool begun_ = false;
    bool on_terminal_ = false;
};

} // namespace ribkit::base
