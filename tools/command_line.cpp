// A row for each command, and the one place that knows how options are parsed.
#include "tools/command_line.h"

#include "tools/client_command.h"
#include "tools/command_output.h"
#include "tools/fabric.h"
#include "tools/fabric_generator.h"
#include "tools/input_error.h"
#include "tools/lab.h"
#include "tools/rib_command.h"
#include "tools/routes_command.h"
#include "tools/show.h"
#include "tools/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ribkit {
namespace {

using action = std::function<int()>;

/// The words of the command line behind the command's name.
using words = std::vector<std::string>;

constexpr const char *json_spelling = "--json alone writes to standard output, --json=FILE to a file";

/// A variable that a script has left empty names no file.
const CLI::Validator
    file_name([](const std::string &name) { return name.empty() ? "the name of the file is empty" : ""; }, "");

void add_bus(CLI::App &app, bus_options &bus, const char *url) {
    bus.url = url;
    app.add_option("--bus", bus.url,
                   "local:[NAME] in this process, nats://HOST[:PORT][/FABRIC] or tls://... over a server")
        ->type_name("URL")
        ->capture_default_str();
    app.add_option("--faults", bus.faults_file, "script of what goes wrong on the bus")
        ->type_name("FILE")
        ->check(file_name);
    app.add_option("--wait", bus.wait, "how long a server or the RIB's answer is waited for")
        ->check(CLI::Range(0U, 86400U))
        ->type_name("SECONDS")
        ->capture_default_str();
}

void add_tables(CLI::App &app, std::string &tables) {
    app.add_option("--tables", tables,
                   "display the RIB's tables at the end: all, none, or those of one VSAN (auto: all up to 64 routes)")
        ->type_name("WHICH")
        ->capture_default_str();
}

void add_file(CLI::App &app, output_options &output) {
    app.add_option("-o,--output", output.file, "put what the command prints into FILE, - for standard output")
        ->type_name("FILE")
        ->check(file_name)
        ->capture_default_str();
}

/// The file that `--json=FILE` names, or an empty name where it stands alone. A word of its own behind it is none of
/// its: no option's value can be left out and be a word of its own.
std::string json_file(const words &given) {
    constexpr std::string_view with_file = "--json=";
    const auto end = std::find(given.begin(), given.end(), "--");
    const auto named = std::find_if(given.begin(), end, [=](const auto &word) { return word.starts_with(with_file); });
    if (named == end) {
        return "";
    }
    const std::string file = named->substr(with_file.size());
    if (file.empty() || file == "-") {
        throw input_error(joined(*named, ": names no file: ", json_spelling));
    }
    return file;
}

CLI::Option *add_json(CLI::App &app, output_options &output, const words &given) {
    const char *const what = "the outcome for a program, and nothing else; with =FILE into FILE beside what is printed";
    return app.add_flag("--json", what)->each([&output, &given](const std::string &) {
        output.json = json_file(given);
    });
}

void add_output(CLI::App &app, output_options &output, const words &given) {
    add_file(app, output);
    add_json(app, output, given);
}

void add_envelopes(CLI::App &app, bool &envelopes) {
    app.add_flag("--envelopes", envelopes, "send every request in a CMI envelope");
}

// What is the same for the client of the lab and the one by itself.
void add_run(CLI::App &app, run_options &options, const words &given) {
    app.add_option("FABRIC", options.fabric_file, "fabric file, - for standard input")
        ->required()
        ->envname("RIBKIT_FABRIC")
        ->check(file_name);
    app.add_flag("--trace", options.output.traces, "print every message sent to the RIB");
    add_output(app, options.output, given);
    app.add_option("--message-size", options.message_limit, "longest update message in bytes")
        ->check(CLI::Range(smallest_message_limit, size_t{1} << 20))
        ->type_name("BYTES")
        ->capture_default_str();
    app.add_flag("--real-time", options.real_time, "wait until an event is due");
    add_envelopes(app, options.envelopes);
}

/// JSON has the output for itself.
void refuse_beside_json(const output_options &output, std::initializer_list<std::pair<bool, const char *>> printing) {
    for (const auto &[wanted, option] : printing) {
        if (output.json && output.json->empty() && wanted) {
            throw input_error(joined("--json alone leaves no room for ", option, "; --json=FILE does"));
        }
    }
}

action declare_lab(CLI::App &app, const words &given) {
    const auto options = std::make_shared<lab_options>();
    add_run(app, *options, given);
    add_bus(app, options->bus, "local:");
    add_tables(app, options->tables);
    app.add_flag("--memory", options->memory, "display at the end what the RIB's tables are made of");
    return [options] {
        refuse_beside_json(options->output, {{options->output.traces, "--trace"}, {options->memory, "--memory"}});
        return run_lab(*options);
    };
}

constexpr const char *server_here = "nats://127.0.0.1:4222";

action declare_rib(CLI::App &app, const words &given) {
    const auto options = std::make_shared<rib_command_options>();
    app.add_option("FABRIC", options->fabric_file, "fabric file that gives the tables their sizes (64 VSANs without)")
        ->check(file_name);
    app.add_option("--who", options->who_file, "file of [[who]] and [[quota]] tables, instead of the fabric file's")
        ->check(file_name)
        ->type_name("FILE");
    app.add_flag("--trace", options->output.traces, "print every route that moves in the hardware");
    add_bus(app, options->bus, server_here);
    add_tables(app, options->tables);
    add_output(app, options->output, given);
    app.add_flag("--memory", options->memory, "display at the end what the tables are made of");
    return [options] {
        refuse_beside_json(options->output, {{options->output.traces, "--trace"}, {options->memory, "--memory"}});
        return run_rib(*options);
    };
}

action declare_client(CLI::App &app, const words &given) {
    const auto options = std::make_shared<client_command_options>();
    add_run(app, *options, given);
    add_bus(app, options->bus, server_here);
    app.add_option("--vsan", options->vsans, "serve these VSANs only")->type_name("VSAN");
    app.add_flag("--stay", options->stay, "go on after the last event, and bring a RIB that starts anew up to date");
    return [options] {
        refuse_beside_json(options->output, {{options->output.traces, "--trace"}});
        return run_client(*options);
    };
}

action declare_routes(CLI::App &app, const words &given) {
    const auto options = std::make_shared<routes_command_options>();
    add_bus(app, options->bus, server_here);
    app.add_option("--vsan", options->vsan, "routes of this VSAN only")
        ->type_name("VSAN")
        ->check(CLI::Range(uint32_t{1}, last_vsan));
    add_output(app, options->output, given);
    add_envelopes(app, options->envelopes);
    return [options] { return run_routes(*options); };
}

int write_fabric(const fabric_plan &plan, const output_options &output) {
    command_output out(output);
    out.print(generate_fabric(plan));
    out.finish();
    return 0;
}

action declare_fabric(CLI::App &app, const words & /*given*/) {
    const auto plan = std::make_shared<fabric_plan>();
    const auto shape = std::make_shared<std::string>(shape_name(plan->shape));
    const auto output = std::make_shared<output_options>();
    const auto count = [&app](const char *name, uint32_t &value, uint32_t least, uint32_t most, const char *what) {
        app.add_option(name, value, what)->check(CLI::Range(least, most))->type_name("N")->capture_default_str();
    };
    count("--switches", plan->switches, 2, last_domain, "how many switches");
    count("--vsans", plan->vsans, 1, last_vsan, "how many VSANs");
    count("--events", plan->events, 0, 10'000, "how many links fail and come back");
    app.add_option("--shape", *shape, "how they are linked")
        ->check(CLI::IsMember(std::vector<std::string>(shape_names.begin(), shape_names.end())))
        ->type_name("SHAPE")
        ->capture_default_str();
    app.add_option("--seed", plan->seed, "draws what is left to chance")->type_name("N")->capture_default_str();
    add_file(app, *output);
    return [plan, shape, output] {
        plan->shape = shape_named(*shape);
        return write_fabric(*plan, *output);
    };
}

action declare_show(CLI::App &app, const words &given) {
    const auto options = std::make_shared<show_options>();
    CLI::Option *list = app.add_flag("--list", options->list, "name the displays, and what a record of each is");
    add_file(app, options->output);
    add_json(app, options->output, given)->needs(list);
    app.add_option("KIND", options->kind, "display: fcu, fcl, port, ...")->excludes(list);
    app.add_option("FILE", options->file, "records in network form, - for standard input")
        ->check(file_name)
        ->excludes(list)
        ->capture_default_str();
    CLI::Option *hex = app.add_flag_callback(
        "--hex", [options] { options->form = byte_form::hex; },
        "the file is hexadecimal text (found out where not said)");
    app.add_flag_callback(
           "--raw", [options] { options->form = byte_form::raw; }, "the file is the bytes themselves")
        ->excludes(hex);
    return [options] {
        if (!options->list && options->kind.empty()) {
            throw input_error("ribkit show: KIND is required (see ribkit show --list)");
        }
        return run_show(*options);
    };
}

action declare_text(CLI::App &app, const words &given) {
    const auto options = std::make_shared<text_options>();
    app.add_option("VOCABULARY", options->vocabulary, "kind of number: rib_uuid, fib_oper, ...");
    app.add_option("VALUE", options->values, "decimal, or hexadecimal behind 0x");
    app.add_flag("--list", options->list, "every text of the vocabulary, or of all");
    add_output(app, options->output, given);
    return [options] {
        const bool asks = !options->vocabulary.empty() && !options->values.empty();
        if (options->list ? !options->values.empty() : !asks) {
            throw input_error("ribkit text: either a VOCABULARY with a VALUE, or --list (see ribkit text --help)");
        }
        return run_text(*options);
    };
}

struct command {
    const char *name;
    const char *description;
    action (*declare)(CLI::App &app, const words &given);
    /// Whether what stands behind `--json` may be meant as the command's first argument.
    bool has_own_word;
};

constexpr command commands[] = {
    {"lab", "Runs a whole fabric in this process: FSPF computes routes and keeps the RIB up to date", declare_lab,
     true},
    {"rib", "Runs the RIB by itself, for clients in other processes", declare_rib, false},
    {"client", "Runs a route client by itself: FSPF computes routes and keeps a RIB elsewhere up to date",
     declare_client, true},
    {"routes", "Displays the routes of a RIB that runs", declare_routes, false},
    {"fabric", "Generates a fabric file", declare_fabric, false},
    {"show", "Displays records of a file of network bytes, each checked before it is shown", declare_show, false},
    {"text", "Prints what numbers are called", declare_text, true},
};

bool is_option(const std::string &word) { return word.starts_with('-') && word != "-"; }

/// A file's name behind `--json` that is not its own: taken for an argument that can be left out, or for one too many.
void refuse_json_in_two_words(const command &c, const words &given, bool left_over) {
    const auto end = std::find(given.begin(), given.end(), "--");
    const auto alone = std::find(given.begin(), end, "--json");
    if (alone == end || alone + 1 == end || is_option(alone[1]) || (alone[1] != "-" && c.has_own_word && !left_over)) {
        return;
    }
    throw input_error(
        joined("ribkit ", c.name, ": ",
               alone[1] == "-" ? json_spelling
                               : joined("--json=", alone[1], " writes to that file, --json alone to standard output")));
}

const command &command_named(const std::string &name) {
    return *std::find_if(std::begin(commands), std::end(commands), [&](const command &c) { return c.name == name; });
}

constexpr CLI::ExitCodes one_too_many[] = {CLI::ExitCodes::ExtrasError, CLI::ExitCodes::ExcludesError};

/// One line, where CLI11 may say more.
input_error usage_error(const CLI::App &app, const CLI::ParseError &error, const words &given) {
    const auto chosen = app.get_subcommands();
    if (chosen.empty()) {
        std::string names;
        for (const command &c : commands) {
            names += joined(names.empty() ? "" : ", ", c.name);
        }
        return input_error(joined("ribkit: the commands are ", names, " (see ribkit --help)"));
    }
    const bool left_over = std::any_of(std::begin(one_too_many), std::end(one_too_many),
                                       [&](auto code) { return error.get_exit_code() == static_cast<int>(code); });
    refuse_json_in_two_words(command_named(chosen.front()->get_name()), given, left_over);
    const std::string name = "ribkit " + chosen.front()->get_name();
    const std::string what = error.what();
    return input_error(joined(name, ": ", what.substr(0, what.find('\n')), " (see ", name, " --help)"));
}

struct parsed_line {
    CLI::App app{"Routing information base of a Fibre Channel fabric, off the switch", "ribkit"};
    const command *chosen = nullptr;
    action run;
};

void declare(parsed_line &line, const words &given) {
    line.app.require_subcommand(1);
    for (const command &c : commands) {
        CLI::App *sub = line.app.add_subcommand(c.name, c.description);
        const action run = c.declare(*sub, given);
        sub->callback([&line, &c, run] {
            line.chosen = &c;
            line.run = run;
        });
    }
}

int print_help(const CLI::App &app) {
    command_output out({});
    out.print(app.help());
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
    } catch (const CLI::Success &) {
        return print_help(line.app);
    } catch (const CLI::ParseError &error) {
        throw usage_error(line.app, error, given);
    }
    refuse_json_in_two_words(*line.chosen, given, false);
    return line.run();
}

} // namespace ribkit
