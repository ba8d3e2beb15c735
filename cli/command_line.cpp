// A row for each command, and the one place that knows how options are parsed.
#include "cli/command_line.h"

#include "base/input_error.h"
#include "base/text.h"
#include "cli/command_output.h"
#include "cli/fabrics/client_command.h"
#include "cli/fabrics/fabric_command.h"
#include "cli/fabrics/lab.h"
#include "cli/fabrics/rib_command.h"
#include "cli/fabrics/routes_command.h"
#include "cli/messages/decode_command.h"
#include "cli/messages/encode_command.h"
#include "cli/messages/show.h"
#include "cli/messages/text.h"
#include "cli/usage_errors.h"
#include "lab/fabric.h"
#include "rib_codes.h"

#include <algorithm>
#include <charconv>
#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ribkit::cli {
namespace {

using action = std::function<int()>;

/// A variable that a script has left empty names no file, nor does an option that follows it then.
const CLI::Validator file_name(
    [](const std::string &name) {
        if (name.empty()) {
            return std::string("the name of the file is empty");
        }
        return name.size() > 1 && name[0] == '-' ? base::joined(name, " is no name of a file (./", name, " is)") : "";
    },
    "");

/// Digits, and within its limits; said with both where it is not.
CLI::Validator whole_number(uint64_t least, uint64_t most) {
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

/// What runs by itself has its partners in other processes.
const CLI::Validator shared_bus(
    [](const std::string &url) {
        return url.starts_with("local:") ? url + " stays in this process, where nobody could reach it" : "";
    },
    "");

CLI::Option *add_bus(CLI::App &app, bus_options &bus, const char *url) {
    bus.url = url;
    CLI::Option *added = app.add_option("--bus", bus.url,
                                        "local:[NAME] in this process, unix:DIRECTORY on this machine, "
                                        "nats://HOST[:PORT][/FABRIC] or tls://... over a server")
                             ->type_name("URL")
                             ->capture_default_str();
    app.add_option("--faults", bus.faults_file, "script of what goes wrong on the bus")
        ->type_name("FILE")
        ->check(file_name);
    add_number(app, "--wait", bus.wait, 0, 86400, "how long a server, the RIB and its answers are waited for, together")
        ->type_name("SECONDS")
        ->capture_default_str();
    return added;
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
    add_number(app, "--message-size", options.message_limit, protocol::smallest_message_limit, size_t{1} << 20,
               "longest update message in bytes")
        ->type_name("BYTES")
        ->capture_default_str();
    app.add_flag("--real-time", options.real_time, "wait until an event is due");
    app.add_option("--local", options.local, "compute the routes of this switch, not of the file's local one")
        ->type_name("SWITCH");
    add_number(app, "--vsan", options.vsans, 1, RIB_LAST_VSAN, "serve this VSAN only; repeat it for more")
        ->allow_extra_args(false)
        ->type_name("VSAN");
    add_envelopes(app, options.envelopes);
}

/// JSON has the output for itself.
void refuse_beside_json(const output_options &output, std::initializer_list<std::pair<bool, const char *>> printing) {
    for (const auto &[wanted, option] : printing) {
        if (output.json && output.json->empty() && wanted) {
            throw base::input_error(base::joined("--json alone leaves no room for ", option, "; --json=FILE does"));
        }
    }
}

action declare_lab(CLI::App &app, const words &given) {
    const auto options = std::make_shared<lab_options>();
    add_run(app, *options, given);
    add_bus(app, options->bus, "local:");
    add_tables(app, options->tables);
    app.add_flag("--memory", options->memory, "display at the end what the RIB's tables are made of");
    app.add_flag("--check", options->check, "read all that is given, say what the fabric is, and run nothing")
        ->excludes("--json");
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
    add_bus(app, options->bus, server_here)->check(shared_bus);
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
    add_bus(app, options->bus, server_here)->check(shared_bus);
    app.add_flag("--stay", options->stay, "go on after the last event, and bring a RIB that starts anew up to date");
    return [options] {
        refuse_beside_json(options->output, {{options->output.traces, "--trace"}});
        return run_client(*options);
    };
}

action declare_routes(CLI::App &app, const words &given) {
    const auto options = std::make_shared<routes_command_options>();
    add_bus(app, options->bus, server_here)->check(shared_bus);
    add_number(app, "--vsan", options->vsan, 1, RIB_LAST_VSAN, "routes of this VSAN only")->type_name("VSAN");
    add_number(app, "--wait-for", options->least, 0, UINT32_MAX, "wait until the RIB holds so many routes")
        ->type_name("NUMBER");
    add_output(app, options->output, given);
    add_envelopes(app, options->envelopes);
    return [options] { return run_routes(*options); };
}

action declare_fabric(CLI::App &app, const words & /*given*/) {
    const auto options = std::make_shared<fabric_command_options>();
    lab::fabric_plan &plan = options->plan;
    CLI::Option *dot = app.add_flag("--dot", options->dot, "draw it, for Graphviz: ribkit fabric --dot | dot -Tsvg");
    CLI::Option *file = app.add_option("FABRIC", options->fabric_file, "draw this fabric file, - for standard input")
                            ->check(file_name)
                            ->needs(dot);
    const auto count = [&](const char *name, uint32_t &value, uint32_t least, uint32_t most, const char *what) {
        file->excludes(add_number(app, name, value, least, most, what)->type_name("N")->capture_default_str());
    };
    count("--switches", plan.switches, 2, RIB_LAST_DOMAIN, "how many switches");
    count("--vsans", plan.vsans, 1, RIB_LAST_VSAN, "how many VSANs");
    count("--events", plan.events, 0, 10'000, "how many links fail and come back");
    count("--seed", plan.seed, 0, UINT32_MAX, "draws what is left to chance");
    const auto shape = std::make_shared<std::string>(lab::shape_name(plan.shape));
    file->excludes(
        app.add_option("--shape", *shape, "how they are linked")
            ->check(CLI::IsMember(std::vector<std::string>(lab::shape_names.begin(), lab::shape_names.end())))
            ->type_name("SHAPE")
            ->capture_default_str());
    add_file(app, options->output);
    return [options, shape] {
        options->plan.shape = lab::shape_named(*shape);
        return run_fabric(*options);
    };
}

/// A guess needs no message: the only word is the file.
void place_words(decode_options &options) {
    if (options.guess && !options.message.empty()) {
        if (options.file != "-") {
            throw base::input_error("ribkit decode: --guess takes one FILE and no MESSAGE (see ribkit decode --help)");
        }
        if (const std::string wrong = file_name(options.message); !wrong.empty()) {
            throw base::input_error("ribkit decode: " + wrong);
        }
        options.file = options.message;
    } else if (!options.list && !options.guess && options.message.empty()) {
        throw base::input_error("ribkit decode: MESSAGE is required (see ribkit decode --list)");
    }
}

/// Of the form in which network bytes are read.
void add_form(CLI::App &app, byte_form &form) {
    CLI::Option *hex = app.add_flag_callback(
        "--hex", [&form] { form = byte_form::hex; }, "the file is hexadecimal text (found out where not said)");
    app.add_flag_callback(
           "--raw", [&form] { form = byte_form::raw; }, "the file is the bytes themselves")
        ->excludes(hex);
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
    add_form(app, options->form);
    return [options] {
        if (!options->list && options->kind.empty()) {
            throw base::input_error("ribkit show: KIND is required (see ribkit show --list)");
        }
        return run_show(*options);
    };
}

action declare_decode(CLI::App &app, const words &given) {
    const auto options = std::make_shared<decode_options>();
    CLI::Option *list = app.add_flag("--list", options->list, "name all messages");
    app.add_option("MESSAGE", options->message, "message: rib_fcurt_update, fcurt, ...")->excludes(list);
    app.add_option("FILE", options->file, "messages in network form, - for standard input")
        ->check(file_name)
        ->excludes(list)
        ->capture_default_str();
    CLI::Option *guess =
        app.add_flag("--guess", options->guess, "only say which messages' checks accept the bytes of FILE")
            ->excludes(list);
    app.add_option("--carries", options->carries, "what an envelope carries, where its operation code does not tell")
        ->type_name("MESSAGE")
        ->excludes(list)
        ->excludes(guess);
    app.add_flag("--offsets", options->offsets, "begin each line with where its field stands")
        ->excludes(list)
        ->excludes(guess);
    add_form(app, options->form);
    add_output(app, options->output, given);
    app.add_flag("--lines", options->lines, "JSON with one message a line, instead of an array")
        ->excludes(list)
        ->excludes(guess);
    return [options] {
        place_words(*options);
        options->output.json = options->lines && !options->output.json ? "" : options->output.json;
        refuse_beside_json(options->output, {{options->offsets, "--offsets"}});
        return run_decode(*options);
    };
}

action declare_encode(CLI::App &app, const words & /*given*/) {
    const auto options = std::make_shared<encode_options>();
    CLI::Option *start =
        app.add_option("--template", options->template_for, "only print JSON to start from")->type_name("MESSAGE");
    app.add_option("FILE", options->file,
                   "messages as ribkit decode --json or --lines prints them, - for standard input")
        ->check(file_name)
        ->excludes(start)
        ->capture_default_str();
    app.add_flag("--hex", options->hex, "hexadecimal text, instead of the bytes themselves")->excludes(start);
    add_file(app, options->output);
    return [options] { return run_encode(*options); };
}

action declare_text(CLI::App &app, const words &given) {
    const auto options = std::make_shared<text_options>();
    app.add_option("VOCABULARY", options->vocabulary, "kind of number: rib_uuid, fib_oper, ...");
    app.add_option("VALUE", options->values,
                   "decimal, or hexadecimal behind 0x, or a text; without one, all are listed");
    const auto list = std::make_shared<bool>(false);
    app.add_flag("--list", *list, "every text of the vocabulary, or of all");
    add_output(app, options->output, given);
    return [options, list] {
        if (*list ? !options->values.empty() : options->vocabulary.empty()) {
            throw base::input_error(
                "ribkit text: either a VOCABULARY, with or without a VALUE, or --list (see ribkit text --help)");
        }
        return run_text(*options);
    };
}

struct command {
    const char *name;
    const char *description;
    action (*declare)(CLI::App &app, const words &given);
    /// Whether it has to have an argument, so that what stands behind `--json` may be meant as that.
    bool has_own_word;
    const char *example;
    const char *failure; ///< when its exit code is 1
};

constexpr const char *output_lost = "the output cannot be written";

constexpr command commands[] = {
    {"lab", "Runs a whole fabric in this process: FSPF computes routes and keeps the RIB up to date", declare_lab, true,
     "lab --trace examples/fabrics/small.toml",
     "the RIB refused something or did not answer, or the output cannot be written"},
    {"rib", "Runs the RIB by itself, for clients in other processes", declare_rib, false,
     "rib --bus nats://127.0.0.1:4222 examples/fabrics/small.toml",
     "the bus cannot be opened, another RIB is there, or the output cannot be written"},
    {"client", "Runs a route client by itself: FSPF computes routes and keeps a RIB elsewhere up to date",
     declare_client, true, "client --vsan 1 --vsan 20 examples/fabrics/small.toml",
     "the RIB refused something or did not answer, the client was stopped, or the output cannot be written"},
    {"routes", "Displays the routes of a RIB that runs", declare_routes, false, "routes --vsan 1 --json",
     "the RIB did not answer, or the output cannot be written"},
    {"fabric", "Generates a fabric file, or draws one", declare_fabric, false,
     "fabric --shape ring --switches 20 --events 5 -o ring.toml", output_lost},
    {"show", "Displays records of a file of network bytes, each checked before it is shown", declare_show, false,
     "show fcu examples/messages/fcu.hex", output_lost},
    {"decode", "Prints messages of network bytes field by field, each checked before it is shown", declare_decode, true,
     "decode rib_fcurt_update update.bin", output_lost},
    {"encode", "Writes network bytes from JSON, as ribkit decode prints it", declare_encode, false,
     "encode --template rib_fcurt_update", output_lost},
    {"text", "Prints what numbers are called", declare_text, true, "text rib_uuid 12 fspf", output_lost},
};

const command &command_named(const std::string &name) {
    return *std::find_if(std::begin(commands), std::end(commands), [&](const command &c) { return name == c.name; });
}

std::vector<std::string> option_names(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::Option *option : app.get_options()) {
        for (const std::string &name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

/// One line, where CLI11 may say more.
base::input_error usage_error(const CLI::App &app, const CLI::ParseError &error, const words &given) {
    const auto chosen = app.get_subcommands();
    if (chosen.empty()) {
        std::vector<std::string_view> names;
        std::transform(std::begin(commands), std::end(commands), std::back_inserter(names),
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

struct parsed_line {
    CLI::App app{"Routing information base of a Fibre Channel fabric, off the switch", "ribkit"};
    const command *chosen = nullptr;
    action run;
};

void declare(parsed_line &line, const words &given) {
    line.app.require_subcommand(1);
    line.app.set_version_flag("--version", "ribkit " RIBKIT_VERSION);
    line.app.footer("ribkit COMMAND --help says what a command takes, with an example and its exit codes.");
    for (const command &c : commands) {
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
