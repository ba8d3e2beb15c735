// The command line as a whole: which command it names, and what is wrong with it.
#include "cli/command_line.h"

#include "base/input_error.h"
#include "base/text.h"
#include "catalogue/wire_digest.h"
#include "cli/command.h"
#include "cli/command_output.h"
#include "cli/manual/app_description.h"
#include "cli/manual/completion.h"
#include "cli/manual/manual_page.h"
#include "cli/options.h"
#include "cli/usage_errors.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

namespace ribkit::cli {
namespace {

int print_asked(const std::string &text, const output_options &options = {}) {
    command_output out(options);
    out.print(text);
    out.finish();
    return 0;
}

struct manual_options {
    std::string command;
    bool all = false;
    output_options output;
};

int run_manual(const manual_options &options) {
    const auto described = described_commands();
    if (!options.command.empty()) {
        return print_asked(page_of(described_named(described, options.command), described), options.output);
    }
    std::string text = page_of(described);
    if (options.all) {
        for (const described_command &one : described) {
            text += '\n';
            text += page_of(one, described);
        }
    }
    return print_asked(text, options.output);
}

action declare_manual(CLI::App &app, const words & /*given*/) {
    const auto options = std::make_shared<manual_options>();
    CLI::Option *all = app.add_flag("--all", options->all, "the pages of ribkit and of every command");
    app.add_option("COMMAND", options->command, "whose page; ribkit's own without")->excludes(all);
    add_file(app, options->output);
    return [options] { return run_manual(*options); };
}

action declare_completion(CLI::App &app, const words & /*given*/) {
    const auto shell = std::make_shared<std::string>();
    const auto typed = std::make_shared<words>();
    app.add_option("SHELL", *shell, "whose script; or words, which is what the scripts ask")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish", "words"}));
    app.add_option("WORD", *typed, "of words: all that is typed behind ribkit, up to the word at the cursor");
    return [shell, typed] {
        return print_asked(*shell == "words" ? completion_lines(completed(described_commands(), *typed))
                                             : completion_script(*shell));
    };
}

constexpr command own_commands[] = {
    {"manual",
     "Prints the manual of a command, as Markdown",
     declare_manual,
     false,
     "The pages that man shows are made of it, where ribkit is installed: man ribkit-lab.",
     {{{"manual lab", "What man ribkit-lab shows"}}},
     output_lost},
    {"completion",
     "Prints what a shell reads to complete the words of ribkit",
     declare_completion,
     true,
     "Where ribkit is installed, shells find it by themselves; else: eval \"$(ribkit completion bash)\". What is "
     "completed\n"
     "comes from the command itself: options, displays, messages, vocabularies and their texts, switches of the "
     "fabric,\n"
     "names of files by their endings. SHELL words is what the scripts ask: it prints the endings of the files that "
     "may\n"
     "stand there, then a line for each word, and behind a tab what it is.",
     {{{"completion bash", "What bash reads"}, {"completion words -- text rib_u", "What rib_u may become"}}},
     output_lost},
};

/// All of them, in the order in which they are listed.
const std::vector<command> &commands() {
    static const std::vector<command> all = [] {
        std::vector<command> listed;
        for (const auto group :
             {fabric_commands(), rib_commands(), message_commands(), std::span<const command>(own_commands)}) {
            listed.insert(listed.end(), group.begin(), group.end());
        }
        return listed;
    }();
    return all;
}

const command &command_named(const std::string &name) {
    return *std::find_if(commands().begin(), commands().end(), [&](const command &c) { return name == c.name; });
}

/// One line, where CLI11 may say more.
base::input_error usage_error(const CLI::App &app, const CLI::ParseError &error, const words &given) {
    const auto chosen = app.get_subcommands();
    if (chosen.empty()) {
        std::vector<std::string_view> names;
        std::transform(commands().begin(), commands().end(), std::back_inserter(names),
                       [](const command &c) { return c.name; });
        return no_command(given, names);
    }
    const CLI::App &sub = *chosen.front();
    const std::string name = "ribkit " + sub.get_name();
    const bool left_over = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
    refuse_json_in_two_words(name, given, command_named(sub.get_name()).has_own_word, left_over);
    if (left_over) {
        return unexpected(name, app.remaining(true), option_names(sub));
    }
    const std::string what = error.what();
    return base::input_error(base::joined(name, ": ", what.substr(0, what.find('\n')), " (see ", name, " --help)"));
}

/// The version, and the digest of what its messages look like.
std::string version_text() {
    char digest[9];
    std::snprintf(digest, sizeof digest, "%08x", catalogue::wire_digest());
    return base::joined("ribkit ", RIBKIT_VERSION, " (messages ", digest, ")");
}

struct parsed_line {
    CLI::App app{what_ribkit_is, "ribkit"};
    const command *chosen = nullptr;
    action run;
};

action declare(const command &c, CLI::App &app, const words &given) {
    app.set_help_flag("-h,--help", "what the command takes, with examples, and its exit codes");
    return c.declare(app, given);
}

void declare(parsed_line &line, const words &given) {
    line.app.require_subcommand(1);
    line.app.set_version_flag("--version", version_text());
    for (const command &c : commands()) {
        CLI::App *sub = line.app.add_subcommand(c.name, c.description);
        const action run = declare(c, *sub, given);
        sub->callback([&line, &c, run] {
            line.chosen = &c;
            line.run = run;
        });
    }
}

std::string help_asked(const CLI::App &app) {
    const auto chosen = app.get_subcommands();
    const auto described = described_commands();
    return chosen.empty() ? help_of(described) : help_of(described_named(described, chosen.front()->get_name()));
}

} // namespace

std::vector<described_command> described_commands() {
    const words nothing_given;
    std::vector<described_command> all;
    for (const command &c : commands()) {
        CLI::App app(c.description, c.name);
        declare(c, app, nothing_given);
        all.push_back(described(c, app));
    }
    return all;
}

int run_command_line(int argc, char **argv) {
    const words given(argv + std::min(argc, 1), argv + argc);
    parsed_line line;
    declare(line, given);
    try {
        line.app.parse(argc, argv);
    } catch (const CLI::CallForVersion &version) {
        return print_asked(base::joined(version.what(), '\n'));
    } catch (const CLI::Success &) {
        return print_asked(help_asked(line.app));
    } catch (const CLI::ParseError &error) {
        throw usage_error(line.app, error, given);
    }
    refuse_json_in_two_words(base::joined("ribkit ", line.chosen->name), given, line.chosen->has_own_word, false);
    return line.run();
}

} // namespace ribkit::cli
