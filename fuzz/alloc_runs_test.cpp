// Whole programs whose memory fails: each run of the command lets one allocation fail, or all from one on. It has to
// end with the output that it has otherwise, or with a line on standard error that says what was missing; a RIB goes on
// serving, or ends so. Every 17th allocation has its turn; with RIBKIT_ALL=1 in the environment each of them has.
#include "fuzz/child.h"
#include "testing/temporary_directory.h"

#include <cctype>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#ifdef RIBKIT_NATS_SERVER
#include "platform/nats_server.h"
#endif

namespace ribkit::fuzz {
namespace {

using words = std::vector<std::string>;

constexpr const char *fabric = RIBKIT_SOURCE_DIR "/fuzz/allocations/tiny.toml";
constexpr const char *script = RIBKIT_SOURCE_DIR "/fuzz/allocations/virtual.faults";

enum class how : unsigned char { once, onwards };

std::string content(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

words lines_of(const std::string &text) {
    std::istringstream stream(text);
    words lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Numbers differ from run to run, and with them the width of columns and whether it is one message or several.
std::string without_numbers(const std::string &text) {
    std::string left;
    for (const char c : text) {
        const bool varies = std::isdigit(static_cast<unsigned char>(c)) != 0 || c == ' ' || c == '.';
        if (!varies) {
            left += c;
        } else if (left.empty() || left.back() != '#') {
            left += '#';
        }
    }
    for (size_t at = left.find("messages"); at != std::string::npos; at = left.find("messages")) {
        left.replace(at, std::strlen("messages"), "message");
    }
    return left;
}

bool names_memory(const std::string &errors) {
    return errors.find("out of memory") != std::string::npos ||
           errors.find("Cannot allocate memory") != std::string::npos ||
           errors.find("a thread cannot be started") != std::string::npos;
}

/// What a run that had to ask again has to show all the same; its traces tell of more.
std::string essence(const std::string &output, bool asked_again) {
    const size_t tables = asked_again ? output.find("\nD:direct") : 0;
    return without_numbers(tables == std::string::npos ? output : output.substr(tables));
}

/// What is wrong with the end of a program that lacked memory; empty: nothing.
std::string fault_of(const ending &end, const std::string &wanted) {
    if (!end.in_time || end.signal != 0) {
        return "no orderly end";
    }
    for (const std::string &line : lines_of(end.errors)) {
        if (line.empty() || line.ends_with(": ") || line.ends_with(":")) {
            return "an empty line";
        }
    }
    if (end.exit_code == 0) {
        const bool asked_again = end.errors.find("; asking again\n") != std::string::npos;
        return essence(end.output, asked_again) == essence(wanted, asked_again) ? "" : "success, but another output";
    }
    return names_memory(end.errors) ? "" : "it does not say that memory was missing";
}

/// The failing allocation in a child's environment, and what its library says of it.
class failing {
  public:
    explicit failing(uint64_t number = 0, how often = how::once) : number_(number), often_(often) {}

    [[nodiscard]] words settings() const {
        return {std::string("LD_PRELOAD=") + RIBKIT_FAILING_MALLOC, "RIBKIT_FAIL_AT=" + std::to_string(number_),
                "RIBKIT_FAIL_ONWARDS=" + std::to_string(often_ == how::onwards ? 1 : 0), "RIBKIT_FAIL_REPORT=" + file_};
    }

    [[nodiscard]] std::string report() const { return content(file_); }
    [[nodiscard]] uint64_t allocations() const {
        const words lines = lines_of(report());
        return lines.empty() ? 0 : std::stoull(lines.back());
    }

    /// To repeat it by hand.
    [[nodiscard]] std::string line(const words &command) const {
        std::string text = "again:";
        for (const words &part : {settings(), command}) {
            for (const std::string &word : part) {
                text += word.starts_with("RIBKIT_FAIL_REPORT=") ? " RIBKIT_FAIL_REPORT=/dev/stderr" : ' ' + word;
            }
        }
        return text + '\n';
    }

  private:
    testing::temporary_directory home_;
    std::string file_ = home_.file("report");
    uint64_t number_;
    how often_;
};

words ribkit(const words &arguments) {
    words all{RIBKIT_COMMAND};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

/// Tries every allocation in turn with `attempt`, which says what went wrong; stops after a few finds.
void sweep(uint64_t allocations, const std::function<std::string(const failing &)> &attempt) {
    ASSERT_GT(allocations, 1000U);
    const uint64_t stride = std::getenv("RIBKIT_ALL") == nullptr ? 17 : 1;
    int finds = 0;
    for (const how often : {how::once, how::onwards}) {
        for (uint64_t number = 1; number <= allocations && finds < 5; number += stride) {
            const std::string wrong = attempt(failing(number, often));
            if (!wrong.empty()) {
                finds++;
                ADD_FAILURE() << "allocation " << number << (often == how::onwards ? " and all that follow: " : ": ")
                              << wrong;
            }
        }
    }
}

/// A program that ends by itself and needs nobody.
void sweep_alone(const words &arguments, const std::string &file = "") {
    const words command = ribkit(arguments);
    const failing none;
    const ending whole = child(command, none.settings()).end();
    ASSERT_EQ(whole.exit_code, 0) << shown(whole);
    const std::string written = content(file);
    sweep(none.allocations(), [&](const failing &memory) {
        std::remove(file.c_str());
        const ending end = child(command, memory.settings()).end();
        std::string wrong = fault_of(end, whole.output);
        const std::string now = content(file);
        if (wrong.empty() && without_numbers(now) != without_numbers(written) && (end.exit_code == 0 || !now.empty())) {
            wrong = "half a file: " + now;
        }
        return wrong.empty() ? "" : wrong + "\n" + shown(end) + memory.line(command) + memory.report();
    });
}

TEST(failing_allocations, of_a_lab) { sweep_alone({"lab", fabric}); }

TEST(failing_allocations, of_a_lab_under_the_virtual_clock) { sweep_alone({"lab", "--faults", script, fabric}); }

TEST(failing_allocations, of_a_lab_that_shows_all) {
    const testing::temporary_directory home;
    const std::string file = home.file("run.json");
    sweep_alone({"lab", "--trace", "--memory", "--envelopes", "--json=" + file, fabric}, file);
}

TEST(failing_allocations, of_a_generated_fabric) {
    const testing::temporary_directory home;
    const std::string file = home.file("fabric.toml");
    sweep_alone({"fabric", "--switches", "4", "--vsans", "2", "-o", file}, file);
}

TEST(failing_allocations, of_displays) { sweep_alone({"show", "fcu", RIBKIT_SOURCE_DIR "/examples/messages/fcu.hex"}); }

TEST(failing_allocations, of_texts) { sweep_alone({"text", "--json", "rib_uuid", "12"}); }

} // namespace
} // namespace ribkit::fuzz
