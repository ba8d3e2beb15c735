// Network bytes as they come from a file, piece by piece: raw, or as hexadecimal text of which a few lines are held at
// a time.
#pragma once

#include "cli/messages/network_bytes.h"
#include "decode/byte_buffer.h"

#include <string>

namespace ribkit::cli {

/// A file as it comes.
class raw_input {
  public:
    /// @param path "-": standard input. Throws input_error where it cannot be opened.
    explicit raw_input(const std::string &path);
    raw_input(const raw_input &) = delete;
    raw_input &operator=(const raw_input &) = delete;
    ~raw_input();

    /// At most `size` characters; waits for some. @return how many; 0 at the end. Throws input_error.
    size_t read(char *to, size_t size);

    [[nodiscard]] const std::string &title() const { return title_; }

  private:
    std::string title_;
    int descriptor_;
};

class network_input {
  public:
    /// @param path "-": standard input. Throws input_error where it cannot be opened.
    network_input(const std::string &path, byte_form form) : file_(path), form_(form) {}

    /// Appends what comes next, whatever is there already; waits for it. @return false at the end. Throws input_error
    /// where it cannot be read, or is text and no bytes.
    bool read(decode::byte_buffer &to);

    [[nodiscard]] const std::string &title() const { return file_.title(); }

  private:
    bool read_part();
    size_t end_of_lines(size_t looked);
    void refuse_copies();
    void take_lines(decode::byte_buffer &to, size_t end);

    raw_input file_;
    byte_form form_;
    std::string text_;  ///< read, and not yet taken
    uint32_t line_ = 1; ///< of the first character of the text
    bool ended_ = false;
    bool in_comment_ = false; ///< of a very long line
    bool in_number_ = false;  ///< likewise
};

} // namespace ribkit::cli
