// Texts go to the kept descriptor by themselves; displays and traces through stdio's standard output, which is flushed
// whenever the descriptor below it is led elsewhere.
#include "cli/command_output.h"

#include "base/input_error.h"
#include "base/text.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/mman.h>
#include <unistd.h>

namespace ribkit::cli {

namespace {

void lead_standard_output(int descriptor) {
    std::fflush(stdout);
    dup2(descriptor, STDOUT_FILENO);
}

/// The system's reason why standard output has lost something; 0 where it has not. What could not be written is gone.
int take_loss() {
    errno = 0;
    const bool lost = std::fflush(stdout) != 0 || std::ferror(stdout) != 0;
    const int reason = errno != 0 ? errno : EIO;
    if (lost) {
        __fpurge(stdout);
        std::clearerr(stdout);
    }
    return lost ? reason : 0;
}

/// Of a file in memory.
std::string content_of(int file) {
    std::string content(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
    size_t read = 0;
    ssize_t part = 0;
    while ((part = pread(file, content.data() + read, content.size() - read, static_cast<off_t>(read))) > 0) {
        read += static_cast<size_t>(part);
    }
    content.resize(read);
    return content;
}

} // namespace

/// While it lives, what is printed on standard output goes to a descriptor of the command's.
class command_output::shown_here {
  public:
    shown_here(const command_output &output, int descriptor)
        : back_(output.traces_ ? output.text_->descriptor() : STDERR_FILENO) {
        lead_standard_output(descriptor);
        std::clearerr(stdout);
    }
    shown_here(const shown_here &) = delete;
    shown_here &operator=(const shown_here &) = delete;
    ~shown_here() { lead_standard_output(back_); }

  private:
    int back_;
};

command_output::command_output(const output_options &options, const std::vector<std::string> &inputs)
    : json_alone_(options.json && options.json->empty()), traces_(options.traces),
      given_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)) {
    if (options.file == "-") {
        text_.emplace();
    } else {
        text_.emplace(options.file, inputs);
    }
    if (options.json && !json_alone_) {
        json_.emplace(*options.json, inputs);
        if (json_->is_same_file(*text_)) {
            throw base::input_error(base::joined(*options.json, ": would be written twice: as text and as JSON"));
        }
    }
    lead_standard_output(traces_ ? text_->descriptor() : STDERR_FILENO);
    if (traces_) {
        text_->begin();
    }
}

command_output::~command_output() {
    lead_standard_output(given_);
    close(given_);
}

void command_output::print(std::string_view text) {
    if (wants_text()) {
        write(text);
    }
}

void command_output::print_line(std::string_view line) { print(base::joined(line, '\n')); }

void command_output::write(std::string_view text) {
    flush_traces();
    text_->on_terminal() ? text_->write(base::printable_lines(text)) : text_->write(text);
}

void command_output::flush_traces() {
    if (const int reason = traces_ ? take_loss() : 0; reason != 0) {
        text_->fail(reason);
    }
}

void command_output::display(const std::function<void()> &show) {
    if (!wants_text()) {
        return;
    }
    flush_traces();
    if (text_->on_terminal()) {
        return show_escaped(show);
    }
    text_->begin();
    const shown_here scope(*this, text_->descriptor());
    show();
    if (const int reason = take_loss(); reason != 0) {
        text_->fail(reason);
    }
}

void command_output::show_escaped(const std::function<void()> &show) {
    const int screen = memfd_create("display", MFD_CLOEXEC);
    if (screen < 0) {
        text_->fail(errno);
    }
    std::exception_ptr why_ended;
    try {
        const shown_here scope(*this, screen);
        show();
    } catch (...) {
        why_ended = std::current_exception();
    }
    const std::string shown = content_of(screen);
    close(screen);
    text_->write(base::printable_lines(shown));
    if (why_ended) {
        std::rethrow_exception(why_ended);
    }
}

void command_output::print_json(std::string_view document) {
    if (json_alone_) {
        write(document);
    } else if (json_) {
        json_->write(document);
    }
}

void command_output::finish() {
    flush_traces();
    lead_standard_output(given_);
    text_->finish();
    if (json_) {
        json_->finish();
    }
}

void reserve_standard_descriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            open("/dev/null", descriptor == STDOUT_FILENO ? O_RDONLY : O_WRONLY); // takes the lowest free number
        }
    }
}

} // namespace ribkit::cli
