// What a run says is compared with what a good one says, numbers aside; all it may add is that memory lacks.
#include "fuzz/alloc_runs.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <utility>

namespace ribkit::fuzz {

namespace {

words lines_of(const std::string &text) {
    std::istringstream stream(text);
    words lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

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
    constexpr std::pair<const char *, const char *> same[] = {{"#e-#", "#"}, {"#e+#", "#"}, {"messages", "message"}};
    for (const auto &[longer, shorter] : same) {
        for (size_t at = left.find(longer); at != std::string::npos; at = left.find(longer)) {
            left.replace(at, std::strlen(longer), shorter);
        }
    }
    return left;
}

/// What a run that had to ask again has to show all the same; its traces tell of more.
std::string essence(const std::string &output, bool asked_again) {
    const size_t tables = asked_again ? output.find("\nD:direct") : 0;
    return without_numbers(tables == std::string::npos ? output : output.substr(tables));
}

bool names_memory(const std::string &errors) {
    return errors.find("out of memory") != std::string::npos ||
           errors.find("Cannot allocate memory") != std::string::npos ||
           errors.find("a thread cannot be started") != std::string::npos;
}

} // namespace

std::string content(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool are_alike(const std::string &one, const std::string &other) {
    return without_numbers(one) == without_numbers(other);
}

std::string fault_of(const ending &end, const std::string &wanted, reason told) {
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
    return names_memory(end.errors) || (told == reason::any && !end.errors.empty())
               ? ""
               : "it does not say that memory was missing";
}

words failing::settings() const {
    return {"LD_PRELOAD=" RIBKIT_FAILING_MALLOC, "RIBKIT_FAIL_AT=" + std::to_string(number_),
            "RIBKIT_FAIL_ONWARDS=" + std::to_string(often_ == how::onwards ? 1 : 0), "RIBKIT_FAIL_REPORT=" + file_};
}

uint64_t failing::allocations() const {
    const words lines = lines_of(report());
    return lines.empty() ? 0 : std::stoull(lines.back());
}

std::string failing::line(const words &command) const {
    std::string text = "again:";
    for (const words &part : {settings(), command}) {
        for (const std::string &word : part) {
            text += word.starts_with("RIBKIT_FAIL_REPORT=") ? " RIBKIT_FAIL_REPORT=/dev/stderr" : ' ' + word;
        }
    }
    return text + '\n';
}

words ribkit(const words &arguments) {
    words all{RIBKIT_COMMAND};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

void sweep(uint64_t allocations, const std::function<std::string(const failing &)> &attempt) {
    constexpr int most_finds = 5;
    ASSERT_GT(allocations, 1000U);
    const uint64_t stride = std::getenv("RIBKIT_ALL") == nullptr ? 17 : 1;
    int finds = 0;
    for (const how often : {how::once, how::onwards}) {
        for (uint64_t number = 1; number <= allocations && finds < most_finds; number += stride) {
            const std::string wrong = attempt(failing(number, often));
            if (!wrong.empty()) {
                finds++;
                ADD_FAILURE() << "allocation " << number << (often == how::onwards ? " and all that follow: " : ": ")
                              << wrong;
            }
        }
    }
}

void sweep_alone(const words &arguments, const std::string &file, reason told) {
    const words command = ribkit(arguments);
    const failing none;
    const ending whole = child(command, none.settings()).end();
    ASSERT_EQ(whole.exit_code, 0) << shown(whole);
    const std::string written = content(file);
    sweep(none.allocations(), [&](const failing &memory) {
        std::remove(file.c_str());
        const ending end = child(command, memory.settings()).end();
        std::string wrong = fault_of(end, whole.output, told);
        const std::string now = content(file);
        if (wrong.empty() && !are_alike(now, written) && (end.exit_code == 0 || !now.empty())) {
            wrong = "half a file: " + now;
        }
        return wrong.empty() ? "" : wrong + "\n" + shown(end) + memory.line(command) + memory.report();
    });
}

} // namespace ribkit::fuzz
