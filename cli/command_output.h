// Where a command's own output goes. The library prints on descriptor 1, whatever happens. So that only what was asked
// for stands in a command's output, the command keeps the descriptor that its user gave it, and descriptor 1 leads to
// standard error but while a display is printed that was asked for; with traces it stays what it is.
#pragma once

#include "base/output_file.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::cli {

/// What the command line says about it.
struct output_options {
    std::string file = "-";          ///< what the command prints; "-": standard output
    std::optional<std::string> json; ///< empty: takes the place of what the command prints; else a file beside it
    bool traces = false;             ///< the library's traces belong to the output
};

class command_output {
  public:
    /// Opens the files, so that no run is in vain. Throws as output_file does.
    /// @param inputs files that the command reads, which are not overwritten
    explicit command_output(const output_options &options, const std::vector<std::string> &inputs = {});
    command_output(const command_output &) = delete;
    command_output &operator=(const command_output &) = delete;

    /// Descriptor 1 leads again to where it did.
    ~command_output();

    /// Whether text is wanted, or JSON alone.
    [[nodiscard]] bool wants_text() const { return !json_alone_; }
    [[nodiscard]] bool wants_json() const { return json_alone_ || json_; }

    /// Texts, as they are; nothing where JSON is alone. These and all below throw as output_file::write does.
    void print(std::string_view text);
    void print_line(std::string_view line);

    /// Calls `show`, which prints on standard output as displays do; not where JSON is alone.
    void display(const std::function<void()> &show);

    /// A document, where one is wanted.
    void print_json(std::string_view document);

    /// At the command's end: throws where something of the output is lost.
    void finish();

  private:
    class shown_here;

    void write(std::string_view text);
    void flush_traces();
    void show_escaped(const std::function<void()> &show);

    bool json_alone_;
    bool traces_;
    int given_; ///< where descriptor 1 led before
    std::optional<base::output_file> text_;
    std::optional<base::output_file> json_;
};

/// Gives descriptors 0 to 2 something to lead to where the process was started without one, so that no file takes
/// their numbers; what is written to a missing standard output still fails.
void reserve_standard_descriptors();

} // namespace ribkit::cli
