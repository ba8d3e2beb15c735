// From the parser's declarations to values. CLI11 is seen by command_line.cpp, which alone includes this.
#pragma once

#include "cli/manual/description.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <string_view>

namespace ribkit::cli {

/// "a,b" of "ROLE:{a,b}"
inline std::vector<std::string> choices_in(const std::string &type) {
    const size_t open = type.find(":{");
    if (open == std::string::npos) {
        return {};
    }
    return CLI::detail::split(type.substr(open + 2, type.find('}') - open - 2), ',');
}

/// What a check of files' names is called: their endings.
inline std::string endings_of(CLI::Option &option) {
    for (int index = 0;; index++) {
        try {
            std::string name = option.get_validator(index)->get_name();
            if (name.starts_with('.') || name == "*") {
                return name;
            }
        } catch (const CLI::OptionNotFound &) {
            return "";
        }
    }
}

/// In the order of their declaration, where the parser has that of their addresses.
inline std::vector<std::string> in_order(const std::vector<CLI::Option *> &declared,
                                         const std::set<CLI::Option *> &chosen) {
    std::vector<std::string> names;
    for (const CLI::Option *option : declared) {
        if (std::any_of(chosen.begin(), chosen.end(), [option](const CLI::Option *one) { return one == option; })) {
            names.push_back(option->get_name());
        }
    }
    return names;
}

inline described_option described(CLI::Option &option, const std::vector<CLI::Option *> &declared) {
    described_option made;
    const std::string type = option.get_type_name();
    made.is_argument = option.get_positional();
    made.is_required = option.get_required();
    made.repeats = option.get_expected_max() == CLI::detail::expected_max_vector_size;
    made.may_have_file = type == optional_file;
    made.what = option.get_description();
    made.standard = option.get_default_str();
    made.variable = option.get_envname();
    made.choices = choices_in(type);
    made.endings = made.may_have_file ? "*" : endings_of(option);
    made.needs = in_order(declared, option.get_needs());
    made.excludes = in_order(declared, option.get_excludes());
    if (made.is_argument) {
        made.names = {option.get_name(true)};
        made.value = made.names.front();
        return made;
    }
    for (const std::string &name : option.get_snames()) {
        made.names.push_back("-" + name);
    }
    for (const std::string &name : option.get_lnames()) {
        made.names.push_back("--" + name);
    }
    made.value = option.get_expected_max() == 0 ? "" : type.substr(0, type.find(':'));
    return made;
}

inline described_command described(const command &row, CLI::App &app) {
    described_command made{&row, {}};
    const std::vector<CLI::Option *> declared = app.get_options();
    for (CLI::Option *option : declared) {
        made.options.push_back(described(*option, declared));
    }
    return made;
}

} // namespace ribkit::cli
