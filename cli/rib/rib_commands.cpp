// The options of the commands that ask and change a RIB that runs.
#include "cli/fabrics/bus_declaration.h"
#include "cli/rib/monitor_command.h"
#include "cli/rib/route_command.h"
#include "cli/rib/status_command.h"

namespace ribkit::cli {
namespace {

/// What stands behind `ribkit route`, and on a line of a file.
void add_route_words(CLI::App &app, route_words &words) {
    app.add_option("ACTION", words.action, "add, del, get or load")->required();
    app.add_option("WHERE", words.where,
                   "FC ID/MASK of the route (0xffffff without a mask); of load the file, - for standard input");
    app.add_flag("--mcast", words.multicast, "a route of the multicast table; FC ID 0 is the distribution tree");
    app.add_flag("--label", words.label, "a route of the label table: to WHERE, from --source, or of --match alone");
    app.add_option("--vsan", words.vsan, "VSAN of the route")->type_name("VSAN");
    const auto list = [&](const char *name, std::vector<std::string> &values, const char *type, const char *what) {
        app.add_option(name, values, what)->allow_extra_args(false)->type_name(type);
    };
    list("--via", words.vias, "INTERFACE",
         "interface by which frames leave; repeat it for more; with +LABEL a label is pushed there");
    list("--domain", words.domains, "DOMAIN", "of the switch behind --via, for each of them");
    app.add_option("--cost", words.cost, "of a unicast route")->type_name("COST");
    app.add_flag("--direct", words.direct, "a unicast route of this switch's own");
    app.add_flag("--volatile", words.is_volatile, "a unicast route that is not permanent");
    list("--match", words.matches, "LABEL", "label word that a frame carries; repeat it for the second");
    list("--source", words.sources, "INTERFACE", "interface that a frame comes in at; repeat it for more");
}

std::function<route_words(const std::string &)> line_reader() {
    const auto words = std::make_shared<route_words>();
    const auto line_app = std::make_shared<CLI::App>();
    line_app->set_help_flag();
    add_route_words(*line_app, *words);
    return [words, line_app](const std::string &line) {
        *words = {};
        try {
            line_app->parse(line);
        } catch (const CLI::ExtrasError &) {
            throw unexpected("ribkit route", line_app->remaining(true), option_names(*line_app));
        } catch (const CLI::ParseError &error) {
            const std::string what = error.what();
            throw base::input_error(what.substr(0, what.find('\n')));
        }
        return *words;
    };
}

action declare_route(CLI::App &app, const words &given) {
    const auto options = std::make_shared<route_command_options>();
    add_route_words(app, options->words);
    add_bus(app, options->bus, server_here)->check(shared_bus);
    add_output(app, options->output, given);
    add_envelopes(app, options->envelopes);
    return [options] {
        options->read_line = line_reader();
        return run_route(*options);
    };
}

action declare_monitor(CLI::App &app, const words &given) {
    const auto options = std::make_shared<monitor_options>();
    add_bus(app, options->bus, server_here)->check(shared_bus);
    add_file(app, options->output);
    add_json(app, options->output, given)
        ->description("a line of JSON for each message, and nothing else; with =FILE into FILE beside the text");
    add_envelopes(app, options->envelopes);
    return [options] { return run_monitor(*options); };
}

action declare_status(CLI::App &app, const words &given) {
    const auto options = std::make_shared<status_options>();
    add_bus(app, options->bus, server_here)->check(shared_bus);
    add_output(app, options->output, given);
    add_envelopes(app, options->envelopes);
    return [options] { return run_status(*options); };
}

constexpr command commands[] = {
    {"route",
     "Adds, deletes and looks for routes of a RIB that runs, as the static client",
     declare_route,
     true,
     "Each route travels in an update of its own, so that its answer is known to be its. ACTION load reads a file in "
     "which\n"
     "each line is what would stand behind ribkit route; # begins a comment line, and a mistake anywhere sends "
     "nothing.",
     {{{"route add --vsan 1 0x650000/0xff0000 --via fc1/1 --domain 101 --cost 500", "A route to domain 101"},
       {"route get --vsan 1 0x650001", "Every route that a frame to there could take, whoever owns it"},
       {"route load --bus unix:/tmp/fabric routes.txt", "All routes of a file"}}},
     "the RIB refused something, has no such route or did not answer, or the output cannot be written"},
    {"monitor",
     "Prints what changes in a RIB that runs, as it changes, until SIGINT or SIGTERM",
     declare_monitor,
     false,
     "A line for each route that is added, changed or deleted, by whom. Where something may have been missed, the "
     "command\n"
     "says so, reads the tables again and prints what is different.",
     {{{"monitor --bus unix:/tmp/fabric", "Of the RIB on that bus"},
       {"monitor --json=changes.json", "And for a program beside, a message a line"}}},
     "the RIB did not answer, or the output cannot be written"},
    {"status",
     "Prints how a RIB that runs is: its role, what it holds, who has registered, what waits",
     declare_status,
     false,
     "What it has refused since it started stands there, too: how often with which result, and to which clients.",
     {{{"status --bus unix:/tmp/fabric", "Of the RIB on that bus"}}},
     "the RIB did not answer, or the output cannot be written"},
};

} // namespace

std::span<const command> rib_commands() { return commands; }

} // namespace ribkit::cli
