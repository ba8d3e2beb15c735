// The ribkit command: what its process is, and how it ends.
#include "tools/command_line.h"
#include "tools/command_output.h"
#include "tools/input_error.h"

#include <csignal>
#include <cstdio>
#include <exception>

namespace ribkit {
namespace {

constexpr int wrong_input = 2;
constexpr int failed = 1;

/// Without a word, as every tool ends whose reader has left.
int end_unread() {
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
    return failed;
}

int run(int argc, char **argv) {
    try {
        return run_command_line(argc, argv);
    } catch (const output_closed &) {
        return end_unread();
    } catch (const input_error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return wrong_input;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "ribkit: %s\n", printable(error.what()).c_str());
        return failed;
    }
}

} // namespace
} // namespace ribkit

int main(int argc, char **argv) {
    ribkit::reserve_standard_descriptors();
    std::signal(SIGPIPE, SIG_IGN); // outputs say by themselves that nobody reads them
    return ribkit::run(argc, argv);
}
