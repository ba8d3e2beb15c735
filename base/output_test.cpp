// Inputs and outputs that fail, are full, are interrupted, or that nobody reads.
#include "base/input_error.h"
#include "base/input_file.h"
#include "base/output_file.h"
#include "base/patient_output.h"
#include "base/spool.h"
#include "testing/alloc_failure.h"
#include "testing/pipe.h"
#include "testing/temporary_directory.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <system_error>
#include <thread>

namespace ribkit::base {
namespace {

using testing::filled_pipe;

/// While it lives, one of this process's descriptors leads elsewhere.
class redirection {
  public:
    redirection(int number, int target) : number_(number) {
        std::fflush(stdout); // what the test framework has said belongs elsewhere
        before_ = fcntl(number, F_DUPFD_CLOEXEC, 3);
        dup2(target, number);
    }
    redirection(const redirection &) = delete;
    redirection &operator=(const redirection &) = delete;
    ~redirection() {
        dup2(before_, number_);
        close(before_);
    }

  private:
    int number_;
    int before_ = -1;
};

/// While it lives, this process may have no more of something.
class limitation {
  public:
    limitation(int what, rlim_t most) : what_(what) {
        getrlimit(what, &before_);
        const rlimit now{most, before_.rlim_max};
        setrlimit(what, &now);
    }
    limitation(const limitation &) = delete;
    limitation &operator=(const limitation &) = delete;
    ~limitation() { setrlimit(what_, &before_); }

  private:
    int what_;
    rlimit before_{};
};

/// While it lives, a signal does that.
class handled {
  public:
    handled(int signal, void (*what)(int)) : signal_(signal) {
        struct sigaction now {};
        now.sa_handler = what; // calls that wait are interrupted
        sigaction(signal, &now, &before_);
    }
    handled(const handled &) = delete;
    handled &operator=(const handled &) = delete;
    ~handled() { sigaction(signal_, &before_, nullptr); }

  private:
    int signal_;
    struct sigaction before_ {};
};

/// The number that the next file gets.
int next_descriptor() {
    const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(next);
    return next;
}

std::string by_number(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

/// What an action throws says; "" where it throws nothing.
template <class Action> std::string complaint_of(const Action &action) {
    try {
        action();
        return "";
    } catch (const std::exception &why) {
        return why.what();
    }
}

std::string read_until(const filled_pipe &from, std::string_view end) {
    std::string all;
    while (!all.ends_with(end)) {
        all += from.read_some();
    }
    return all;
}

const std::string much(size_t{1} << 20, 'x');

} // namespace

TEST(read_input, names_what_cannot_be_read) {
    const testing::temporary_directory home;
    EXPECT_EQ(complaint_of([&] { read_input(home.file("none")); }),
              home.file("none") + ": cannot be read: No such file or directory");
    const int folder = open(home.file("").c_str(), O_RDONLY | O_CLOEXEC);
    const redirection input(STDIN_FILENO, folder);
    EXPECT_EQ(complaint_of([] { read_input("-"); }), "standard input: cannot be read: Is a directory");
    std::clearerr(stdin);
    close(folder);
}

TEST(output_file, is_none_of_the_inputs) {
    const testing::temporary_directory home;
    const testing::input_file one("one");
    const testing::input_file other("other");
    EXPECT_EQ(complaint_of([&] {
                  output_file(one.path(), {other.path(), one.path()});
              }),
              one.path() + ": is read by this command, and so not written");
    EXPECT_EQ(read_input(one.path()), "one");
    EXPECT_EQ(complaint_of([&] {
                  output_file(one.path(), {other.path(), "/proc/self/status", home.file("none")});
              }),
              "");
    EXPECT_EQ(complaint_of([&] {
                  output_file("/dev/null", {"/dev/null", one.path()});
              }),
              "")
        << "what holds nothing may be both";
}

TEST(output_file, is_written_whole_where_there_is_room_now_and_then) {
    const filled_pipe out;
    fcntl(out.way_in(), F_SETFL, O_NONBLOCK);
    std::string got;
    std::thread reader([&] { got = read_until(out, "end"); });
    {
        const redirection output(STDOUT_FILENO, out.way_in());
        output_file().write(much + "end");
    }
    reader.join();
    EXPECT_EQ(got.substr(got.size() - much.size() - 3), much + "end");
}

TEST(output_file, is_written_whole_where_signals_interrupt) {
    static std::atomic<int> heard;
    const handled signal(SIGUSR1, [](int) { ++heard; });
    const filled_pipe out;
    std::string got;
    std::thread reader([&, writing = pthread_self()] {
        for (int said = 1; said <= 100; said++) {
            pthread_kill(writing, SIGUSR1);
            while (heard < said) {
                std::this_thread::yield();
            }
        }
        got = read_until(out, "end");
    });
    {
        const redirection output(STDOUT_FILENO, out.way_in());
        output_file().write("end");
    }
    reader.join();
    EXPECT_TRUE(got.ends_with(".end") && got.find("end") == got.size() - 3) << "it is written once";
}

TEST(output_file, says_why_it_cannot_be_written) {
    EXPECT_EQ(complaint_of([] { output_file("/dev/full", {}).write("x"); }),
              "/dev/full: cannot be written: No space left on device");
    const int sealed = memfd_create("sealed", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    ASSERT_EQ(write(sealed, "kept", 4), 4);
    ASSERT_EQ(fcntl(sealed, F_ADD_SEALS, F_SEAL_SHRINK), 0);
    EXPECT_EQ(complaint_of([&] { output_file(by_number(sealed), {}).write("x"); }),
              by_number(sealed) + ": cannot be written: Operation not permitted");
    EXPECT_EQ(lseek(sealed, 0, SEEK_END), 4) << "nothing of it is gone";
    close(sealed);
}

TEST(output_file, tells_where_nobody_reads_any_more) {
    const handled signal(SIGPIPE, SIG_IGN);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    output_file out(by_number(ends[1]), {});
    close(ends[0]);
    close(ends[1]);
    EXPECT_THROW(out.write("x"), output_closed);
}

TEST(output_file, that_was_closed_before_ends_quietly) {
    output_file out("/dev/null", {});
    close(out.descriptor());
    EXPECT_EQ(complaint_of([&] { out.finish(); }), "");
}

TEST(write_patiently, takes_what_is_for_nobody) {
    ignore_gone_readers();
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    EXPECT_EQ(write_patiently(ends[1], much, {}), much.size());
    close(ends[1]);
    EXPECT_EQ(write_patiently(ends[1], much, {}), much.size()) << "the output itself is gone";
}

TEST(patient_output, tells_how_many_lines_were_lost_where_they_were) {
    constexpr size_t lines = 40000;
    const std::string text(90, 'x');
    const filled_pipe out(false);
    std::string got;
    {
        const redirection output(STDOUT_FILENO, out.way_in());
        const patient_output patient(STDOUT_FILENO);
        for (size_t i = 0; i < lines; i++) {
            std::printf("%05zu %s\n", i, text.c_str());
        }
        std::fflush(stdout);
        while (got.size() < size_t{700} * 1024) {
            got += out.read_some();
        }
        std::printf("after\n");
        got += read_until(out, "after\n");
    }
    const std::string_view told = "ribkit: nobody read: ";
    size_t lost = 0;
    for (size_t at = got.find(told); at != std::string::npos; at = got.find(told, at + 1)) {
        lost += std::strtoull(got.c_str() + at + told.size(), nullptr, 10);
    }
    EXPECT_GT(lost, 0U);
    EXPECT_EQ(lost + static_cast<size_t>(std::count(got.begin(), got.end(), 'x')) / text.size(), lines);
}

TEST(patient_output, tells_of_lines_for_which_there_was_no_memory) {
    const filled_pipe out(false);
    const redirection output(STDOUT_FILENO, out.way_in());
    const patient_output patient(STDOUT_FILENO);
    {
        const testing::failing_allocation none(1, testing::failing_allocation::how::onwards);
        std::printf("a first line, too long to be held without memory: %080d\n", 1);
        while (!none.happened()) {
            std::this_thread::yield();
        }
        const size_t first = testing::failing_allocation::size_refused();
        std::printf("a second line, before which nothing can be told\n");
        while (testing::failing_allocation::size_refused() == first) {
            std::this_thread::yield();
        }
    }
    std::printf("a third line\n");
    EXPECT_EQ(read_until(out, "third line\n"), "ribkit: nobody read: 2 lines were lost here\na third line\n");
}

TEST(patient_output, takes_no_descriptor_where_it_cannot_begin) {
    EXPECT_THROW(patient_output(-1), std::system_error);
    const int next = next_descriptor();
    {
        const limitation one_more(RLIMIT_NOFILE, static_cast<rlim_t>(next) + 1);
        EXPECT_THROW(patient_output(STDOUT_FILENO), std::system_error);
    }
    EXPECT_EQ(next_descriptor(), next);
}

TEST(spool, says_that_there_is_no_room) {
    const handled signal(SIGXFSZ, SIG_IGN);
    const std::string held(size_t{4} << 20, 'x');
    const std::string none = "a temporary file cannot be used: ";
    {
        spool kept;
        kept.add(held);
        const limitation files(RLIMIT_NOFILE, static_cast<rlim_t>(next_descriptor()));
        EXPECT_EQ(complaint_of([&] { kept.add("y"); }), none + "Too many open files");
    }
    {
        spool kept;
        kept.add(held);
        const limitation size(RLIMIT_FSIZE, held.size() - 1);
        EXPECT_EQ(complaint_of([&] { kept.add("y"); }), none + "File too large");
    }
    {
        spool kept;
        kept.add(held);
        const limitation size(RLIMIT_FSIZE, held.size());
        EXPECT_EQ(complaint_of([&] {
                      kept.add("y");
                      kept.hand_on([](std::string_view) {});
                  }),
                  none + "File too large");
    }
}

TEST(spool, says_that_what_was_put_aside_is_not_there) {
    const std::string held(size_t{4} << 20, 'x');
    const std::string none = "a temporary file cannot be used: ";
    const auto handed_on_from = [&](int elsewhere) {
        const int file = next_descriptor();
        spool kept;
        kept.add(held);
        kept.add(held); // which is put aside as well, so that nothing waits in memory
        dup2(elsewhere, file);
        return complaint_of([&] { kept.hand_on([](std::string_view) {}); });
    };
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    EXPECT_EQ(handed_on_from(ends[0]), none + "Illegal seek");
    close(ends[0]);
    close(ends[1]);
    const int folder = open("/", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(handed_on_from(folder), none + "Is a directory");
    close(folder);
}

} // namespace ribkit::base
