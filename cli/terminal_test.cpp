// What a command shows on a terminal: nothing in a name acts on it, and no line is redrawn where it cannot be.
#include "base/progress.h"
#include "cli/command_output.h"
#include "testing/golden.h"
#include "testing/run_command.h"
#include "testing/temporary_directory.h"

#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace ribkit::testing;

namespace ribkit::cli {
namespace {

/// A terminal for programs to write to, as descriptor 9 of the shells that are started and as standard error of this
/// process where that is asked for.
class terminal {
  public:
    terminal() {
        EXPECT_EQ(openpty(&reader_, &writer_, nullptr, nullptr, nullptr), 0);
        dup2(writer_, number);
    }
    terminal(const terminal &) = delete;
    terminal &operator=(const terminal &) = delete;
    ~terminal() {
        close(number);
        close(writer_);
        close(reader_);
    }

    /// What was written, once nothing more comes; it has to be little.
    [[nodiscard]] std::string shown() const {
        std::string text;
        std::array<char, 4096> part{};
        for (pollfd ready{reader_, POLLIN, 0}; poll(&ready, 1, 0) > 0;) {
            text.append(part.data(), static_cast<size_t>(read(reader_, part.data(), part.size())));
        }
        return text;
    }

    [[nodiscard]] int writer() const { return writer_; }

  private:
    static constexpr int number = 9;
    int reader_ = -1;
    int writer_ = -1;
};

/// What it prints to a standard error that is a terminal of this kind; null: of no kind.
std::string drawn_on(const char *kind, const std::function<void()> &draw) {
    const terminal screen;
    const int before = dup(STDERR_FILENO);
    dup2(screen.writer(), STDERR_FILENO);
    kind == nullptr ? unsetenv("TERM") : setenv("TERM", kind, 1);
    draw();
    std::fflush(stderr);
    dup2(before, STDERR_FILENO);
    close(before);
    return screen.shown();
}

void show_progress() {
    base::progress_line progress(std::chrono::milliseconds(0));
    progress.show("routes sent", 1, 2);
}

} // namespace

TEST(terminal, is_spared_what_a_display_prints_of_a_name) {
    const auto printed = [](int where) {
        const int before = dup(STDOUT_FILENO);
        std::fflush(stdout);
        dup2(where, STDOUT_FILENO);
        {
            command_output out({});
            out.display([] { std::fputs("f\x1b[2J\xc2\x9b\x80\u202e\u00e4\tg\n", stdout); });
            out.print_line("\x1b]0;x\x07");
            out.finish();
        }
        dup2(before, STDOUT_FILENO);
        close(before);
    };
    const terminal screen;
    printed(screen.writer());
    EXPECT_EQ(screen.shown(), "f\\x1b[2J\\u009b\\x80\\u202e\u00e4\tg\r\n\\x1b]0;x\\x07\r\n");
    const testing::input_file file("");
    const int elsewhere = open(file.path().c_str(), O_WRONLY);
    printed(elsewhere);
    close(elsewhere);
    EXPECT_EQ(file_content(file.path()), "f\x1b[2J\xc2\x9b\x80\u202e\u00e4\tg\n\x1b]0;x\x07\n")
        << "what is no terminal gets the bytes";
}

TEST(terminal, is_shown_nothing_where_there_is_no_room_to_look_at_it_first) {
    const terminal screen;
    const int before = dup(STDOUT_FILENO);
    std::fflush(stdout);
    dup2(screen.writer(), STDOUT_FILENO);
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    std::string why = "nothing";
    {
        command_output out({});
        const int next = dup(before); // the lowest that is free
        close(next);
        const rlimit none{static_cast<rlim_t>(next), usual.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        try {
            out.display([] { std::fputs("shown", stdout); });
        } catch (const std::exception &error) {
            setrlimit(RLIMIT_NOFILE, &usual); // sanitizers need some, too
            why = error.what();
        }
        setrlimit(RLIMIT_NOFILE, &usual);
    }
    dup2(before, STDOUT_FILENO);
    close(before);
    EXPECT_EQ(why, "standard output cannot be written: Too many open files");
    EXPECT_EQ(screen.shown(), "");
}

TEST(terminal, shows_displays_as_they_are_and_mistakes_behind_them) {
    const terminal screen;
    const std::string expected = testing::run_command("show fcm examples/messages/fcm.hex").output;
    testing::run_line(RIBKIT_COMMAND " show fcm examples/messages/fcm.hex >&9");
    std::string shown = screen.shown();
    std::erase(shown, '\r');
    EXPECT_EQ(shown, expected);
    const testing::input_file second_is_bad("0000000e 00000001 00fffd01 00ffffff 00000001 01010001 00");
    testing::run_line(RIBKIT_COMMAND " show fcm " + second_is_bad.path() + " >&9 2>&9");
    shown = screen.shown();
    EXPECT_NE(shown.find("    fc1/1\r\n" + second_is_bad.path() + ": record 2 at byte 24: "), std::string::npos)
        << shown;
}

TEST(terminal, is_spared_what_names_of_a_fabric_hold) {
    const testing::input_file named(
        "name = \"a\\u202eb\\u009bc\"\nlocal = \"x\"\n[[vsan]]\nid = 1\nname = \"\\u2066\\u6771\"\n"
        "[[switch]]\nname = \"x\"\ndomain = 1\n");
    EXPECT_EQ(testing::run_command("lab --check " + named.path()).output,
              "a\\u202eb\\u009bc: 1 switch, 0 links; routes of x (domain 1) in VSAN 1 (\\u2066\u6771)\n");
}

TEST(progress_line, is_drawn_where_a_terminal_can_clear_it) {
    EXPECT_EQ(drawn_on("xterm", show_progress), "\r\033[K1 of 2 routes sent\r\033[K");
    EXPECT_EQ(drawn_on("dumb", show_progress), "");
    EXPECT_EQ(drawn_on("", show_progress), "");
    EXPECT_EQ(drawn_on(nullptr, show_progress), "");
}

TEST(progress_line, is_not_drawn_of_short_work) {
    EXPECT_EQ(drawn_on("xterm",
                       [] {
                           base::progress_line progress(std::chrono::hours(1));
                           progress.show("routes sent", 1, 2);
                       }),
              "");
}

} // namespace ribkit::cli
