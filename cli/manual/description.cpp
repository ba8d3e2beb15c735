// The words that help and manual pages share, and the help itself.
#include "cli/manual/description.h"

#include "base/near_names.h"
#include "base/text.h"

#include <algorithm>
#include <iomanip>

namespace ribkit::cli {

namespace {

std::string listed(const std::vector<std::string> &names) {
    std::string text;
    for (const std::string &name : names) {
        text += base::joined(text.empty() ? "" : ", ", name);
    }
    return text;
}

std::string argument_text(const described_option &argument) {
    const std::string text = base::joined(argument.names.front(), argument.repeats ? "..." : "");
    return argument.is_required ? text : base::joined('[', text, ']');
}

constexpr size_t column = 28; // where texts begin
constexpr size_t width = 110;

/// The text in lines, behind what stands in front of it.
std::string row(const std::string &front, const std::string &text) {
    std::string lines = base::joined("  ", front);
    const bool is_long = lines.size() + 2 > column;
    lines.append(is_long ? 1 : 0, '\n').append(is_long ? column : column - lines.size(), ' ');
    size_t at = column;
    for (size_t from = 0; from < text.size();) {
        const size_t end = std::min(text.find(' ', from), text.size());
        if (at + end - from > width) {
            lines += "\n" + std::string(column, ' ');
            at = column;
        }
        lines.append(at > column ? " " : "").append(text, from, end - from);
        at += end - from + 1;
        from = end + 1;
    }
    return lines + "\n";
}

std::string rows(const described_command &one, const char *head, bool arguments) {
    std::string text;
    for (const described_option &option : one.options) {
        if (option.is_argument == arguments) {
            text += row(spelling_of(option), meaning_of(option));
        }
    }
    return text.empty() ? "" : base::joined('\n', head, ":\n", text);
}

} // namespace

const described_command &described_named(const std::vector<described_command> &all, const std::string &name) {
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto &one) { return one.row->name == name; });
    if (found == all.end()) {
        std::vector<std::string_view> names;
        std::transform(all.begin(), all.end(), std::back_inserter(names),
                       [](const described_command &one) { return one.row->name; });
        throw base::input_error(base::joined("ribkit: ", base::no_such_name(name, "command", names, "ribkit --help")));
    }
    return *found;
}

std::string usage_of(const described_command &one) {
    std::string text = base::joined("ribkit ", one.row->name, " [OPTION...]");
    for (const described_option &option : one.options) {
        text += option.is_argument ? base::joined(' ', argument_text(option)) : "";
    }
    return text;
}

std::string spelling_of(const described_option &option) {
    const bool has_value = !option.is_argument && !option.value.empty();
    return base::joined(listed(option.names), has_value ? " " : "", has_value ? option.value : "",
                        option.may_have_file ? optional_file : "");
}

std::string meaning_of(const described_option &option) {
    std::vector<std::string> more;
    const auto add = [&more](const char *what, const std::string &value) {
        if (!value.empty()) {
            more.push_back(base::joined(what, value));
        }
    };
    add("one of ", listed(option.choices));
    add("default ", option.standard);
    add("or in the environment: ", option.variable);
    add("only with ", listed(option.needs));
    add("not with ", listed(option.excludes));
    std::string text = option.what;
    for (size_t index = 0; index < more.size(); index++) {
        text += base::joined(index == 0 ? " (" : "; ", more[index]);
    }
    return more.empty() ? text : text + ")";
}

std::string help_of(const described_command &one) {
    std::string text = base::joined(one.row->description, "\n\nUsage: ", usage_of(one), "\n\n", one.row->details, "\n");
    text += rows(one, "Arguments", true) + rows(one, "Options", false) + "\nExamples:\n";
    for (const example &shown : one.row->examples) {
        text += shown.words == nullptr ? "" : base::joined("  ribkit ", shown.words, "\n      ", shown.what, '\n');
    }
    text += "\nExit codes:\n";
    for (const exit_code &code : exit_codes) {
        text += base::joined("  ", code.number, "  ", code.what == nullptr ? one.row->failure : code.what, '\n');
    }
    return text;
}

std::string help_of(const std::vector<described_command> &all) {
    std::string text =
        base::joined(what_ribkit_is, "\n\nUsage: ribkit COMMAND [OPTION...] [ARGUMENT...]\n\nCommands:\n");
    for (const described_command &one : all) {
        text += row(one.row->name, one.row->description);
    }
    return text + base::joined("\nOptions:\n",
                               row("-h, --help", "this text; behind a COMMAND what it takes, with examples"),
                               row("--version", "the version, and the digest of all messages"));
}

} // namespace ribkit::cli
