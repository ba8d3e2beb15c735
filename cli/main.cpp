// The ribkit command: what its process is, and how it ends.
#include "base/input_error.h"
#include "cli/command_line.h"
#include "cli/command_output.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <system_error>

namespace ribkit::cli {
namespace {

constexpr int wrong_input = 2;
constexpr int failed = 1;

/// Without a word, as every tool ends whose reader has left.
int end_unread() {
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
    return failed;
}

/// Needs no memory.
int end_out_of_memory() {
    std::fputs("ribkit: out of memory\n", stderr);
    return failed;
}

/// Some libraries need memory to take their objects apart, where nothing may be thrown any more.
[[noreturn]] void end_at_once() {
    try {
        if (const auto why = std::current_exception()) {
            std::rethrow_exception(why);
        }
    } catch (const std::bad_alloc &) {
        std::_Exit(end_out_of_memory());
    } catch (...) { // a mistake of ours
    }
    std::abort();
}

/// The library says the system's reason only.
bool no_thread(const std::exception &error) {
    const auto *failure = dynamic_cast<const std::system_error *>(&error);
    return failure != nullptr && failure->code() == std::errc::resource_unavailable_try_again &&
           failure->code().message() == failure->what();
}

/// @throws std::bad_alloc also where there is no memory to say what is wrong
int run_command(int argc, char **argv) {
    try {
        return run_command_line(argc, argv);
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const base::output_closed &) {
        return end_unread();
    } catch (const base::input_error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return wrong_input;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "ribkit: %s%s\n", no_thread(error) ? "a thread cannot be started: " : "",
                     base::one_line(error.what()).c_str());
        return failed;
    }
}

int run(int argc, char **argv) {
    try {
        return run_command(argc, argv);
    } catch (const std::bad_alloc &) {
        return end_out_of_memory();
    }
}

} // namespace
} // namespace ribkit::cli

int main(int argc, char **argv) {
    ribkit::cli::reserve_standard_descriptors();
    std::signal(SIGPIPE, SIG_IGN); // outputs say by themselves that nobody reads them
    std::set_terminate(ribkit::cli::end_at_once);
    return ribkit::cli::run(argc, argv);
}
