// The ribkit command: a row for each of its commands, and the one place that knows how options are parsed.
#include "tools/client_command.h"
#include "tools/fabric.h"
#include "tools/fabric_generator.h"
#include "tools/input_error.h"
#include "tools/lab.h"
#include "tools/rib_command.h"
#include "tools/routes_command.h"
#include "tools/show.h"
#include "tools/text.h"

#include <cerrno>
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace ribkit {
namespace {

constexpr int wrong_input = 2;

using action = std::function<int()>;

void add_bus(CLI::App &app, bus_options &bus, const char *url) {
    bus.url = url;
    app.add_option("--bus", bus.url,
                   "local:[NAME] in this process, nats://HOST[:PORT][/FABRIC] or tls://... over a server")
        ->type_name("URL")
        ->capture_default_str();
    app.add_option("--faults", bus.faults_file, "script of what goes wrong on the bus")->type_name("FILE");
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

void add_json(CLI::App &app, std::string &file) {
    app.add_option("--json", file, "write the outcome for a program, - for standard output and nothing else")
        ->type_name("FILE");
}

void add_envelopes(CLI::App &app, bool &envelopes) {
    app.add_flag("--envelopes", envelopes, "send every request in a CMI envelope");
}

// What is the same for the client of the lab and the one by itself.
void add_run(CLI::App &app, run_options &options) {
    app.add_option("FABRIC", options.fabric_file, "fabric file, - for standard input")->required();
    app.add_flag("--trace", options.trace, "print every message sent to the RIB");
    add_json(app, options.json_file);
    app.add_option("--message-size", options.message_limit, "longest update message in bytes")
        ->check(CLI::Range(smallest_message_limit, size_t{1} << 20))
        ->type_name("BYTES")
        ->capture_default_str();
    app.add_flag("--real-time", options.real_time, "wait until an event is due");
    add_envelopes(app, options.envelopes);
}

/// JSON on standard output has it for itself.
void refuse_beside_json(const std::string &json_file, std::initializer_list<std::pair<bool, const char *>> printing) {
    for (const auto &[wanted, option] : printing) {
        if (json_file == "-" && wanted) {
            throw input_error(joined("--json - leaves no room for ", option, " on standard output"));
        }
    }
}

action declare_lab(CLI::App &app) {
    const auto options = std::make_shared<lab_options>();
    add_run(app, *options);
    add_bus(app, options->bus, "local:");
    add_tables(app, options->tables);
    app.add_flag("--memory", options->memory, "display at the end what the RIB's tables are made of");
    return [options] {
        refuse_beside_json(options->json_file, {{options->trace, "--trace"}, {options->memory, "--memory"}});
        return run_lab(*options);
    };
}

constexpr const char *server_here = "nats://127.0.0.1:4222";

action declare_rib(CLI::App &app) {
    const auto options = std::make_shared<rib_command_options>();
    app.add_option("FABRIC", options->fabric_file, "fabric file that gives the tables their sizes (64 VSANs without)");
    app.add_flag("--trace", options->trace, "print every route that moves in the hardware");
    add_bus(app, options->bus, server_here);
    add_tables(app, options->tables);
    add_json(app, options->json_file);
    app.add_flag("--memory", options->memory, "display at the end what the tables are made of");
    return [options] {
        refuse_beside_json(options->json_file, {{options->trace, "--trace"}, {options->memory, "--memory"}});
        return run_rib(*options);
    };
}

action declare_client(CLI::App &app) {
    const auto options = std::make_shared<client_command_options>();
    add_run(app, *options);
    add_bus(app, options->bus, server_here);
    app.add_option("--vsan", options->vsans, "serve these VSANs only")->type_name("VSAN");
    app.add_flag("--stay", options->stay, "go on after the last event, and bring a RIB that starts anew up to date");
    return [options] {
        refuse_beside_json(options->json_file, {{options->trace, "--trace"}});
        return run_client(*options);
    };
}

action declare_routes(CLI::App &app) {
    const auto options = std::make_shared<routes_command_options>();
    add_bus(app, options->bus, server_here);
    app.add_option("--vsan", options->vsan, "routes of this VSAN only")
        ->type_name("VSAN")
        ->check(CLI::Range(uint32_t{1}, last_vsan));
    add_json(app, options->json_file);
    add_envelopes(app, options->envelopes);
    return [options] { return run_routes(*options); };
}

int write_fabric(const fabric_plan &plan, const std::string &path) {
    const std::string text = generate_fabric(plan);
    if (path == "-") {
        std::fputs(text.c_str(), stdout);
        return 0;
    }
    std::FILE *file = std::fopen(path.c_str(), "w");
    bool written = file != nullptr && std::fputs(text.c_str(), file) >= 0;
    written = file != nullptr && std::fclose(file) == 0 && written;
    if (!written) {
        throw input_error(joined(path, ": cannot be written: ", std::strerror(errno)));
    }
    return 0;
}

action declare_fabric(CLI::App &app) {
    const auto plan = std::make_shared<fabric_plan>();
    const auto shape = std::make_shared<std::string>(shape_name(plan->shape));
    const auto path = std::make_shared<std::string>("-");
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
    app.add_option("--output", *path, "where to write it, - for standard output")
        ->type_name("FILE")
        ->capture_default_str();
    return [plan, shape, path] {
        plan->shape = shape_named(*shape);
        return write_fabric(*plan, *path);
    };
}

action declare_show(CLI::App &app) {
    const auto options = std::make_shared<show_options>();
    CLI::Option *list = app.add_flag("--list", options->list, "name the displays, and what a record of each is");
    app.add_flag("--json", options->json, "the list for a program")->needs(list);
    app.add_option("KIND", options->kind, "display: fcu, fcl, port, ...")->excludes(list);
    app.add_option("FILE", options->file, "records in network form, - for standard input")
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

action declare_text(CLI::App &app) {
    const auto options = std::make_shared<text_options>();
    app.add_option("VOCABULARY", options->vocabulary, "kind of number: rib_uuid, fib_oper, ...");
    app.add_option("VALUE", options->values, "decimal, or hexadecimal behind 0x");
    app.add_flag("--list", options->list, "every text of the vocabulary, or of all");
    app.add_flag("--json", options->json, "for a program");
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
    action (*declare)(CLI::App &app);
};

constexpr command commands[] = {
    {"lab", "Runs a whole fabric in this process: FSPF computes routes and keeps the RIB up to date", declare_lab},
    {"rib", "Runs the RIB by itself, for clients in other processes", declare_rib},
    {"client", "Runs a route client by itself: FSPF computes routes and keeps a RIB elsewhere up to date",
     declare_client},
    {"routes", "Displays the routes of a RIB that runs", declare_routes},
    {"fabric", "Generates a fabric file", declare_fabric},
    {"show", "Displays records of a file of network bytes, each checked before it is shown", declare_show},
    {"text", "Prints what numbers are called", declare_text},
};

/// One line, where CLI11 may say more.
input_error usage_error(const CLI::App &app, const CLI::ParseError &error) {
    const auto chosen = app.get_subcommands();
    if (chosen.empty()) {
        std::string names;
        for (const command &c : commands) {
            names += joined(names.empty() ? "" : ", ", c.name);
        }
        return input_error(joined("ribkit: the commands are ", names, " (see ribkit --help)"));
    }
    const std::string name = "ribkit " + chosen.front()->get_name();
    const std::string what = error.what();
    return input_error(joined(name, ": ", what.substr(0, what.find('\n')), " (see ", name, " --help)"));
}

int parse_and_run(int argc, char **argv) {
    CLI::App app("Routing information base of a Fibre Channel fabric, off the switch", "ribkit");
    app.require_subcommand(1);
    action chosen;
    for (const command &c : commands) {
        CLI::App *sub = app.add_subcommand(c.name, c.description);
        const action run = c.declare(*sub);
        sub->callback([&chosen, run] { chosen = run; });
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &help) {
        return app.exit(help); // prints it
    } catch (const CLI::ParseError &error) {
        throw usage_error(app, error);
    }
    return chosen();
}

/// A command whose output is lost has failed, whichever it is.
void require_output() {
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        const std::string why = errno != 0 ? joined(": ", std::strerror(errno)) : "";
        throw std::runtime_error(joined("standard output cannot be written", why));
    }
}

} // namespace
} // namespace ribkit

int main(int argc, char **argv) {
    try {
        const int exit_code = ribkit::parse_and_run(argc, argv);
        ribkit::require_output();
        return exit_code;
    } catch (const ribkit::input_error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return ribkit::wrong_input;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "ribkit: %s\n", error.what());
        return 1;
    }
}
