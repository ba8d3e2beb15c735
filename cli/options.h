// Options that commands of both groups have.
#pragma once

#include "base/input_error.h"
#include "base/text.h"
#include "cli/command.h"
#include "cli/command_output.h"

#include <charconv>
#include <CLI/CLI.hpp>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ribkit::cli {

/// A variable that a script has left empty names no file, nor does an option that follows it then. Checks are called as
/// the files' names end, ".hex .bin", which shells complete; "*": anyhow.
inline const CLI::Validator file_name(
    [](const std::string &name) {
        if (name.empty()) {
            return std::string("the name of the file is empty");
        }
        return name.size() > 1 && name[0] == '-' ? base::joined(name, " is no name of a file (./", name, " is)") : "";
    },
    "", "*");
inline constexpr const char *fabric_files = ".toml";
inline constexpr const char *fault_files = ".faults";
inline constexpr const char *network_files = ".hex .bin";
inline constexpr const char *json_files = ".json";

/// Digits, and within its limits; said with both where it is not.
inline CLI::Validator whole_number(uint64_t least, uint64_t most) {
    const std::string limits = base::joined(least, " to ", most);
    return {[=](const std::string &text) {
                uint64_t value = 0;
                const char *end = text.data() + text.size();
                const auto [stopped, error] = std::from_chars(text.data(), end, value);
                const bool good = error == std::errc() && stopped == end && value >= least && value <= most;
                return good ? ""
                            : base::joined("takes a whole number from ", limits, ", not ",
                                           text.empty() ? "nothing" : text);
            },
            "", ""};
}

/// An option that takes one.
template <typename Number>
CLI::Option *add_number(CLI::App &app, const char *name, Number &value, uint64_t least, uint64_t most,
                        const std::string &what) {
    return app.add_option(name, value, base::joined(what, ", ", least, " to ", most))->check(whole_number(least, most));
}

inline void add_file(CLI::App &app, output_options &output) {
    app.add_option("-o,--output", output.file, "put what the command prints into FILE, - for standard output")
        ->type_name("FILE")
        ->check(file_name)
        ->capture_default_str();
}

inline CLI::Option *add_json(CLI::App &app, output_options &output, const words &given) {
    const char *const what = "the outcome for a program, and nothing else; with =FILE into FILE beside what is printed";
    return app.add_flag("--json", what)->type_name("[=FILE]")->each([&output, &given](const std::string &) {
        output.json = json_file(given);
    });
}

inline void add_output(CLI::App &app, output_options &output, const words &given) {
    add_file(app, output);
    add_json(app, output, given);
}

/// The long names of a command's options, with their dashes.
inline std::vector<std::string> option_names(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::Option *option : app.get_options()) {
        for (const std::string &name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

/// JSON has the output for itself.
inline void refuse_beside_json(const output_options &output,
                               std::initializer_list<std::pair<bool, const char *>> printing) {
    for (const auto &[wanted, option] : printing) {
        if (output.json && output.json->empty() && wanted) {
            throw base::input_error(base::joined("--json alone leaves no room for ", option, "; --json=FILE does"));
        }
    }
}

} // namespace ribkit::cli
