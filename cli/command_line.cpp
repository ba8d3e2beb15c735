// The command line as a whole: which command it names, and what is wrong with it.
#include "cli/command_line.h"

#include "base/input_error.h"
#include "base/text.h"
#include "catalogue/wire_digest.h"
#include "cli/command.h"
#include "cli/command_output.h"
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

/// All of them, in the order in which they are listed.
const std::vector<command> &commands() {
    static const std::vector<command> all = [] {
        std::vector<command> listed;
        for (const auto group : {fabric_commands(), rib_commands(), message_commands()}) {
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
    CLI::App app{"Routing information base of a Fibre Channel fabric, off the switch", "ribkit"};
    const command *chosen = nullptr;
    action run;
};

void declare(parsed_line &line, const words &given) {
    line.app.require_subcommand(1);
    line.app.set_version_flag("--version", version_text());
    line.app.footer("ribkit COMMAND --help says what a command takes, with an example and its exit codes.");
    for (const command &c : commands()) {
        CLI::App *sub = line.app.add_subcommand(c.name, c.description);
        sub->footer(
            base::joined("Example:\n  ribkit ", c.example, "\n\nExit codes:\n  0  all went well\n  1  ", c.failure,
                         "\n  2  the command line or an input is wrong: one line says where, and nothing was run"));
        const action run = c.declare(*sub, given);
        sub->callback([&line, &c, run] {
            line.chosen = &c;
            line.run = run;
        });
    }
}

int print_asked(const std::string &text) {
    command_output out({});
    out.print(text);
    out.finish();
    return 0;
}

} // namespace

int run_command_line(int argc, char **argv) {
    const words given(argv + std::min(argc, 1), argv + argc);
    parsed_line line;
    declare(line, given);
    try {
        line.app.parse(argc, argv);
    } catch (const CLI::CallForVersion &version) {
        return print_asked(base::joined(version.what(), '\n'));
    } catch (const CLI::Success &) {
        return print_asked(line.app.help());
    } catch (const CLI::ParseError &error) {
        throw usage_error(line.app, error, given);
    }
    refuse_json_in_two_words(base::joined("ribkit ", line.chosen->name), given, line.chosen->has_own_word, false);
    return line.run();
}

} // namespace ribkit::cli
