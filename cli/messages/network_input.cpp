// Of text whole lines are taken, or all that is left at the end.
#include "cli/messages/network_input.h"

#include "base/input_error.h"
#include "base/input_file.h"
#include "base/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace ribkit::cli {

namespace {

constexpr size_t part_size = 65536;
constexpr size_t longest_line = size_t{1} << 20; // that is held

} // namespace

raw_input::raw_input(const std::string &path)
    : title_(base::input_title(path)),
      descriptor_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) {
        throw base::input_error(base::joined(title_, ": cannot be read: ", std::strerror(errno)));
    }
}

raw_input::~raw_input() {
    if (descriptor_ != STDIN_FILENO) {
        close(descriptor_);
    }
}

size_t raw_input::read(char *to, size_t size) {
    ssize_t got = 0;
    do {
        got = ::read(descriptor_, to, size);
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        throw base::input_error(base::joined(title_, ": cannot be read: ", std::strerror(errno)));
    }
    return static_cast<size_t>(got);
}

/// Reads on behind the text. @return false at the end
bool network_input::read_part() {
    const size_t held = text_.size();
    text_.resize(held + part_size);
    const size_t got = file_.read(text_.data() + held, part_size);
    text_.resize(held + got);
    return got != 0;
}

/// Where the text may be taken up to: the last line that is whole, or all of it at the end. Of a line that is very long
/// up to a blank, or between two digits; its comment is nothing.
size_t network_input::end_of_lines(size_t looked) {
    const size_t newline = std::string_view(text_).substr(looked).rfind('\n');
    if (ended_ || newline != std::string_view::npos) {
        in_comment_ = false;
        return ended_ ? text_.size() : looked + newline + 1;
    }
    if (text_.size() < longest_line || text_.find(':') != std::string::npos) {
        return 0;
    }
    if (const size_t comment = text_.find('#'); comment != std::string::npos) {
        text_.resize(comment);
        in_comment_ = true;
        return comment;
    }
    constexpr std::string_view blanks = " \t\v\f\r";
    text_.erase(0, text_.find_first_not_of(blanks));
    const size_t blank = text_.find_last_of(blanks);
    in_number_ = blank == std::string::npos;
    return in_number_ ? text_.size() / 2 * 2 : blank;
}

bool network_input::read(decode::byte_buffer &to) {
    while (!ended_) {
        const size_t looked = text_.size();
        ended_ = !read_part();
        if (form_ == byte_form::detected && !text_.empty()) {
            form_ = form_of(text_);
        }
        if (form_ == byte_form::raw) {
            to.append(text_.data(), text_.size());
            text_.clear();
            return !ended_;
        }
        if (in_comment_) {
            text_.erase(0, text_.find('\n'));
        }
        refuse_copies();
        const size_t before = to.size();
        take_lines(to, end_of_lines(std::min(looked, text_.size())));
        if (to.size() != before) {
            return true;
        }
        if (text_.size() > 2 * longest_line) {
            throw base::input_error(
                base::joined(title(), ':', line_, ": a line of more than ", longest_line, " characters"));
        }
    }
    return false;
}

/// Of a number that was taken in two pieces there are no copies: "00...00*24" would be of its end only.
void network_input::refuse_copies() {
    const size_t end = text_.find_first_not_of("0123456789abcdefABCDEF");
    if (in_number_ && end != std::string::npos && text_[end] == '*') {
        throw base::input_error(
            base::joined(title(), ':', line_, ": a number of more than ", longest_line, " digits has copies"));
    }
    in_number_ = in_number_ && end == std::string::npos;
}

void network_input::take_lines(decode::byte_buffer &to, size_t end) {
    const std::string_view lines(text_.data(), end);
    try {
        const std::vector<uint8_t> bytes = network_bytes(lines, byte_form::hex, line_);
        to.append(bytes.data(), bytes.size());
    } catch (const base::line_error &error) {
        throw base::input_error(base::joined(title(), ':', error.line, ": ", error.what()));
    }
    line_ += static_cast<uint32_t>(std::count(lines.begin(), lines.end(), '\n'));
    text_.erase(0, end);
}

} // namespace ribkit::cli
