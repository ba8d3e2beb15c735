// The parser says that something is wrong; the words as they were given say what was meant.
#include "cli/usage_errors.h"

#include "base/near_names.h"
#include "base/text.h"

#include <algorithm>

namespace ribkit::cli {

namespace {

constexpr const char *json_spelling = "--json alone writes to standard output, --json=FILE to a file";

bool is_option(const std::string &word) { return word.size() > 1 && word.starts_with('-'); }

/// Behind it every word is an argument.
auto end_of_options(const words &given) { return std::find(given.begin(), given.end(), "--"); }

std::string name_of(const std::string &option) { return option.substr(0, option.find('=')); }

std::string in_order(const words &left) {
    std::string text;
    for (const std::string &word : left) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

} // namespace

std::string json_file(const words &given) {
    constexpr std::string_view with_file = "--json=";
    const auto end = end_of_options(given);
    const auto named = std::find_if(given.begin(), end, [=](const auto &word) { return word.starts_with(with_file); });
    if (named == end) {
        return "";
    }
    const std::string file = named->substr(with_file.size());
    if (file.empty() || file == "-") {
        throw base::input_error(base::joined(*named, ": names no file: ", json_spelling));
    }
    return file;
}

void refuse_json_in_two_words(const std::string &command, const words &given, bool has_own_word, bool left_over) {
    const auto end = end_of_options(given);
    const auto alone = std::find(given.begin(), end, "--json");
    if (alone == end || alone + 1 == end || is_option(alone[1]) || (alone[1] != "-" && has_own_word && !left_over)) {
        return;
    }
    const std::string spelling =
        alone[1] == "-" ? json_spelling
                        : base::joined("--json=", alone[1], " writes to that file, --json alone to standard output");
    throw base::input_error(base::joined(command, ": ", spelling));
}

base::input_error unexpected(const std::string &command, const words &left, const std::vector<std::string> &options) {
    const auto option = std::find_if(left.begin(), left.end(), is_option);
    if (option == left.end()) {
        return base::input_error(base::joined(command, ": ", left.size() == 1 ? "one argument" : "arguments",
                                              " too many: ", in_order(left), " (see ", command, " --help)"));
    }
    const std::vector<std::string_view> names(options.begin(), options.end());
    return base::input_error(
        base::joined(command, ": ", base::no_such_name(name_of(*option), "option", names, command + " --help")));
}

base::input_error no_command(const words &given, const std::vector<std::string_view> &commands) {
    if (given.empty()) {
        std::string names;
        for (const std::string_view name : commands) {
            names += base::joined(names.empty() ? "" : ", ", name);
        }
        return base::input_error(base::joined("ribkit: the commands are ", names, " (see ribkit --help)"));
    }
    if (is_option(given[0])) {
        return unexpected("ribkit", {given[0]}, {"--help", "--version"});
    }
    return base::input_error(
        base::joined("ribkit: ", base::no_such_name(given[0], "command", commands, "ribkit --help")));
}

} // namespace ribkit::cli
