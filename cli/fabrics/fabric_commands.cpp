// The options of the commands of fabrics.
#include "cli/fabrics/bus_declaration.h"
#include "cli/fabrics/client_command.h"
#include "cli/fabrics/fabric_command.h"
#include "cli/fabrics/lab.h"
#include "cli/fabrics/module_command.h"
#include "cli/fabrics/rib_command.h"
#include "cli/fabrics/routes_command.h"
#include "lab/fabric.h"
#include "rib_codes.h"
#include "ribkit_rib.h"

namespace ribkit::cli {
namespace {

void add_tables(CLI::App &app, std::string &tables) {
    app.add_option("--tables", tables,
                   "display the RIB's tables at the end: all, none, or those of one VSAN (auto: all up to 64 routes)")
        ->type_name("WHICH")
        ->capture_default_str();
}

// What is the same for the client of the lab and the one by itself.
void add_run(CLI::App &app, run_options &options, const words &given) {
    app.add_option("FABRIC", options.fabric_file, "fabric file, - for standard input")
        ->required()
        ->envname("RIBKIT_FABRIC")
        ->check(file_name, fabric_files);
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
    app.add_option("--role", options.roles, "run this client; repeat it for more (those of the fabric)")
        ->check(CLI::IsMember(std::vector<std::string>(lab::role_names.begin(), lab::role_names.end())))
        ->allow_extra_args(false)
        ->type_name("ROLE");
    add_envelopes(app, options.envelopes);
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

action declare_rib(CLI::App &app, const words &given) {
    const auto options = std::make_shared<rib_command_options>();
    app.add_option("FABRIC", options->fabric_file, "fabric file that gives the tables their sizes (64 VSANs without)")
        ->check(file_name, fabric_files);
    app.add_option("--who", options->who_file, "file of [[who]] and [[quota]] tables, instead of the fabric file's")
        ->check(file_name, fabric_files)
        ->type_name("FILE");
    app.add_flag("--trace", options->output.traces, "print every route that moves in the hardware");
    add_number(app, "--hold", options->hold, 0, 3'600'000,
               "how long modules keep what they have at the start, until clients have brought their routes back")
        ->type_name("MILLISECONDS")
        ->capture_default_str();
    add_bus(app, options->bus, server_here)->check(shared_bus);
    add_tables(app, options->tables);
    add_output(app, options->output, given);
    app.add_flag("--memory", options->memory, "display at the end what the tables are made of");
    return [options] {
        refuse_beside_json(options->output, {{options->output.traces, "--trace"}, {options->memory, "--memory"}});
        return run_rib(*options);
    };
}

action declare_module(CLI::App &app, const words &given) {
    const auto options = std::make_shared<module_command_options>();
    app.add_option("NAME", options->name, "what the module is called in what it prints")->required();
    const auto number = [&](const char *name, uint32_t &value, uint32_t least, uint32_t most, const char *what) {
        return add_number(app, name, value, least, most, what)->type_name("N")->capture_default_str();
    };
    number("--number", options->number, 1, RIBKIT_MOST_MODULES, "which module it is");
    number("--ports", options->ports, 0, 64, "how many ports it has");
    number("--unicast", options->sizes.unicast, 0, UINT32_MAX, "how many unicast entries it has room for");
    number("--multicast", options->sizes.multicast, 0, UINT32_MAX, "how many multicast entries");
    number("--label", options->sizes.label, 0, UINT32_MAX, "how many label entries");
    number("--per-vsan", options->sizes.per_vsan, 0, UINT32_MAX, "how many entries a VSAN may have, 0: any number");
    add_number(app, "--slow", options->slow, 0, 3'600'000, "how long each of its answers takes")
        ->type_name("MILLISECONDS")
        ->capture_default_str();
    app.add_flag("--trace", options->output.traces, "print every message that it takes");
    add_bus(app, options->bus, server_here)->check(shared_bus);
    add_output(app, options->output, given);
    return [options] {
        refuse_beside_json(options->output, {{options->output.traces, "--trace"}});
        return run_module(*options);
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
                            ->check(file_name, fabric_files)
                            ->needs(dot);
    const auto count = [&](const char *name, uint32_t &value, uint32_t least, uint32_t most, const char *what) {
        file->excludes(add_number(app, name, value, least, most, what)->type_name("N")->capture_default_str());
    };
    count("--switches", plan.switches, 2, RIB_LAST_DOMAIN, "how many switches");
    count("--vsans", plan.vsans, 1, RIB_LAST_VSAN, "how many VSANs");
    count("--events", plan.events, 0, 10'000, "how often something happens");
    count("--groups", plan.groups, 0, 256, "how many multicast groups");
    count("--labels", plan.labels, 0, 10'000, "how many label tunnels");
    count("--statics", plan.statics, 0, 10'000, "how many static routes");
    count("--modules", plan.modules, 0, RIBKIT_MOST_MODULES, "how many modules the local switch has");
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

constexpr command commands[] = {
    {"lab",
     "Runs a whole fabric in this process: its route clients, the RIB and its modules",
     declare_lab,
     true,
     "Reads a fabric file, starts the RIB, the modules and the route clients of its local switch, and lets links fail "
     "and\n"
     "come back as the file says. Every message travels over the bus and is checked, as between processes. In the end "
     "the\n"
     "command displays the RIB's tables and a summary.",
     {{{"lab --trace examples/fabrics/small.toml", "The sample fabric, with every message"},
       {"lab --trace --faults examples/faults/rough.faults examples/fabrics/small.toml",
        "The same on a bus that loses and delays messages"},
       {"lab --check examples/fabrics/small.toml", "Whether the file is good"}}},
     "the RIB refused something or did not answer, or the output cannot be written"},
    {"rib",
     "Runs the RIB by itself, for clients in other processes",
     declare_rib,
     false,
     "Answers clients and modules on the bus until SIGINT or SIGTERM, and then displays its tables. What it refuses it "
     "says\n"
     "on standard error. A second RIB on the same bus is refused.",
     {{{"rib --bus unix:/tmp/fabric", "For clients on this machine, which say the same --bus"},
       {"rib --bus nats://127.0.0.1:4222 examples/fabrics/small.toml",
        "Over a server, with the tables that a fabric needs"}}},
     "the bus cannot be opened, another RIB is there, or the output cannot be written"},
    {"module",
     "Runs a module by itself: what a RIB elsewhere programs, and who answers it",
     declare_module,
     true,
     "Takes what the RIB programs, as far as it has room, until SIGINT or SIGTERM, and then says what it had. "
     "Meanwhile\n"
     "ribkit show KIND --module N displays it.",
     {{{"module left --number 1 --bus unix:/tmp/fabric", "The first module of the RIB on that bus"},
       {"module small --unicast 4 --trace --bus unix:/tmp/fabric",
        "One that is soon full, with every message that it takes"}}},
     "the bus cannot be opened, or the output cannot be written"},
    {"client",
     "Runs the route clients of a fabric by themselves: they keep the routes of a RIB elsewhere up to date",
     declare_client,
     true,
     "Reads what the RIB has, sends what is different, follows the fabric through its events, and ends; with --stay "
     "it\n"
     "goes on until SIGINT or SIGTERM.",
     {{{"client --bus unix:/tmp/fabric examples/fabrics/small.toml",
        "The routes of the sample fabric, for a RIB on this machine"},
       {"client --vsan 1 --vsan 20 examples/fabrics/small.toml",
        "Those of two VSANs, over the server of this machine"}}},
     "the RIB refused something or did not answer, the client was stopped, or the output cannot be written"},
    {"routes",
     "Displays the routes of a RIB that runs",
     declare_routes,
     false,
     "Unicast routes, of all clients. ribkit show has a display for everything else that the RIB tells, and filters.",
     {{{"routes --vsan 1 --json", "For a program"}, {"routes --wait-for 16", "As soon as there are 16"}}},
     "the RIB did not answer, or the output cannot be written"},
    {"fabric",
     "Generates a fabric file, or draws one",
     declare_fabric,
     false,
     "The same options give the same file everywhere; its first line says which they were. ribkit lab runs it.",
     {{{"fabric --shape ring --switches 20 --events 5 -o ring.toml",
        "Twenty switches in a ring, of which five links fail"},
       {"fabric --dot examples/fabrics/small.toml", "A drawing for Graphviz: ribkit fabric --dot FABRIC | dot -Tsvg"}}},
     output_lost},
};

} // namespace

std::span<const command> fabric_commands() { return commands; }

} // namespace ribkit::cli
