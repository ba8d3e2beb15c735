// A page says what the declarations say, in the order that manuals have.
#include "cli/manual/manual_page.h"

#include "base/text.h"
#include "cli/manual/value_types.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace ribkit::cli {

namespace {

std::string section(const char *head, const std::string &text) {
    return text.empty() ? "" : base::joined("\n## ", head, "\n\n", text, text.ends_with('\n') ? "" : "\n");
}

std::string item(const std::string &name, const std::string &behind, const std::string &text) {
    return base::joined("- ", name, behind, ": ", text, '\n');
}

/// "`-o`, `--output`"
std::string marked(const std::vector<std::string> &names) {
    std::string text;
    for (const std::string &name : names) {
        text += base::joined(text.empty() ? "`" : ", `", name, '`');
    }
    return text;
}

std::string options_text(const described_command &one, bool arguments) {
    std::string text;
    for (const described_option &option : one.options) {
        const std::string value = option.is_argument || option.value.empty() ? "" : " " + option.value;
        if (option.is_argument == arguments) {
            text += item(marked(option.names), option.may_have_file ? optional_file : value, meaning_of(option));
        }
    }
    return text;
}

/// Of every type that the command's values have.
std::string values_text(const described_command &one) {
    std::string text;
    for (const value_type &type : value_types()) {
        if (std::any_of(one.options.begin(), one.options.end(),
                        [&](const described_option &option) { return option.value == type.name; })) {
            text += item(base::joined('`', type.name, '`'), "", type.what);
        }
    }
    return text;
}

std::string exit_text(const std::string &failure) {
    std::string text;
    for (const exit_code &code : exit_codes) {
        text += item(base::joined('`', code.number, '`'), "", code.what == nullptr ? failure : code.what);
    }
    return text;
}

bool has_value(const described_command &one, std::string_view type) {
    return std::any_of(one.options.begin(), one.options.end(),
                       [&](const auto &option) { return option.value == type; });
}

std::string environment_text(const described_command &one) {
    std::string text;
    for (const described_option &option : one.options) {
        if (!option.variable.empty()) {
            text += item(base::joined('`', option.variable, '`'), "",
                         base::joined(option.names.front(), ", where none is given"));
        }
    }
    if (has_value(one, "URL")) {
        text += item("`RIBKIT_NATS_...`", "", "who the program is to a server: qip_open(3) names them");
    }
    return text;
}

std::string files_text(const described_command &one) {
    std::string text;
    for (const file_type &type : file_types()) {
        if (std::any_of(one.options.begin(), one.options.end(), [&](const described_option &option) {
                return option.endings.find(type.ending) != std::string::npos;
            })) {
            text += item(base::joined("`*", type.ending, '`'), "", type.what);
        }
    }
    return text;
}

std::string examples_text(const described_command &one) {
    std::string text;
    for (const example &shown : one.row->examples) {
        if (shown.words != nullptr) {
            text += base::joined(text.empty() ? "" : "\n", shown.what, ":\n\n```sh\nribkit ", shown.words, "\n```\n");
        }
    }
    return text;
}

/// What the page names: other commands, files, functions.
std::string related_text(const described_command &one, const std::vector<described_command> &all,
                         const std::string &page) {
    std::string text = "`ribkit`(1)";
    for (const described_command &other : all) {
        const std::string name = base::joined("ribkit ", other.row->name);
        const size_t at = page.find(name);
        if (&other != &one && at != std::string::npos) {
            text += base::joined(", `ribkit-", other.row->name, "`(1)");
        }
    }
    for (const std::string_view name : {"qip_open(3)", "ribkit-fabric(5)", "ribkit-faults(5)"}) {
        if (page.find(name) != std::string::npos) {
            text += base::joined(", `", name.substr(0, name.size() - 3), '`', name.substr(name.size() - 3));
        }
    }
    return text;
}

} // namespace

std::string page_of(const described_command &one, const std::vector<described_command> &all) {
    std::string page = base::joined("# ribkit-", one.row->name, "(1): ", one.row->description, '\n');
    page += section("Synopsis", base::joined("```sh\n", usage_of(one), "\n```"));
    page += section("Description", one.row->details);
    page += section("Arguments", options_text(one, true));
    page += section("Options", options_text(one, false));
    page += section("Values", values_text(one));
    page += section("Exit status", exit_text(one.row->failure));
    page += section("Environment", environment_text(one));
    page += section("Files", files_text(one));
    page += section("Examples", examples_text(one));
    return page + section("See also", related_text(one, all, page));
}

std::string page_of(const std::vector<described_command> &all) {
    std::string commands;
    std::string related;
    for (const described_command &one : all) {
        commands += item(base::joined("`ribkit ", one.row->name, '`'), "", one.row->description);
        related += base::joined("`ribkit-", one.row->name, "`(1), ");
    }
    std::string files;
    for (const file_type &type : file_types()) {
        files += item(base::joined("`*", type.ending, '`'), "", type.what);
    }
    std::string page = base::joined("# ribkit(1): ", what_ribkit_is, '\n');
    page += section("Synopsis", "```sh\nribkit COMMAND [OPTION...] [ARGUMENT...]\nribkit --version\n```");
    page += section("Commands", commands);
    page +=
        section("Options", item("`-h`, `--help`", "", "what there is; behind a COMMAND what it takes, with examples") +
                               item("`--version`", "", "the version, and the digest of all messages"));
    page += section("Exit status", exit_text("something failed: each command says what"));
    page += section("Files", files);
    page += section("See also",
                    related + "`ribkit-fabric`(5), `ribkit-faults`(5), `rib_codec.h`(3), `ribkit_platform.h`(3)");
    return page;
}

} // namespace ribkit::cli
