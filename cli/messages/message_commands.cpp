// The options of the commands of messages.
#include "cli/messages/decode_command.h"
#include "cli/messages/encode_command.h"
#include "cli/messages/show.h"
#include "cli/messages/text.h"
#include "cli/options.h"
#include "cli/rib/show_declaration.h"

namespace ribkit::cli {
namespace {

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
    const auto running = std::make_shared<show_running_options>();
    CLI::Option *list = app.add_flag("--list", options->list, "name the displays, and what a record of each is");
    add_output(app, options->output, given);
    app.add_option("KIND", options->kind, "display: fcu, fcl, port, ...")->excludes(list);
    app.add_option("FILE", options->file, "records in network form, - for standard input")
        ->check(file_name, network_files)
        ->excludes(list)
        ->capture_default_str();
    add_form(app, options->form);
    for (CLI::Option *option : add_show_running(app, *running)) {
        option->excludes(list);
        option->excludes("FILE");
        option->excludes("--hex");
        option->excludes("--raw");
    }
    return [options, running] {
        if (!options->list && options->kind.empty()) {
            throw base::input_error("ribkit show: KIND is required (see ribkit show --list)");
        }
        return running->bus.url.empty() ? run_show(*options)
                                        : run_show_running(display_named(options->kind), *running, options->output);
    };
}

action declare_decode(CLI::App &app, const words &given) {
    const auto options = std::make_shared<decode_options>();
    CLI::Option *list = app.add_flag("--list", options->list, "name all messages");
    app.add_option("MESSAGE", options->message, "message: rib_fcurt_update, fcurt, ...")->excludes(list);
    app.add_option("FILE", options->file, "messages in network form, - for standard input")
        ->check(file_name, network_files)
        ->excludes(list)
        ->capture_default_str();
    CLI::Option *guess =
        app.add_flag("--guess", options->guess, "only say which messages' checks accept the bytes of FILE")
            ->excludes(list);
    app.add_option("--carries", options->carries, "what an envelope carries, where its operation code does not tell")
        ->type_name("MESSAGE")
        ->excludes(list)
        ->excludes(guess);
    app.add_flag("--offsets", options->offsets,
                 "say where each field stands: in front of its line, or in a member of their own")
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
        return run_decode(*options);
    };
}

action declare_encode(CLI::App &app, const words & /*given*/) {
    const auto options = std::make_shared<encode_options>();
    CLI::Option *start =
        app.add_option("--template", options->template_for, "only print JSON to start from")->type_name("MESSAGE");
    app.add_option("FILE", options->file,
                   "messages as ribkit decode --json or --lines prints them, - for standard input")
        ->check(file_name, json_files)
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

constexpr command commands[] = {
    {"show",
     "Displays records of a file of network bytes, each checked before it is shown, or those of a RIB that runs",
     declare_show,
     true,
     "A file holds the bytes themselves, or hexadecimal text in which # begins a comment. With --bus the records come "
     "from a\n"
     "RIB, with --module from one of its modules. --list names the kinds.",
     {{{"show fcu examples/messages/fcu.hex", "Unicast routes of a file"},
       {"show fcu --bus unix:/tmp/fabric --vsan 1", "Those that a RIB has in VSAN 1"},
       {"show node --bus unix:/tmp/fabric --module 1", "What a module says of itself"}}},
     "the output cannot be written, or the RIB did not answer"},
    {"decode",
     "Prints messages of network bytes field by field, each checked before it is shown",
     declare_decode,
     true,
     "Every field has a line: its name, its number, and what that means. ribkit encode makes the bytes again from "
     "what\n"
     "--json prints. --guess tells which messages the bytes may be.",
     {{{"decode rib_fcurt_update update.bin", "A unicast route update"},
       {"decode --guess examples/messages/fcu.hex", "Which messages a file may hold"},
       {"decode --list", "All messages that there are"}}},
     output_lost},
    {"encode",
     "Writes network bytes from JSON, as ribkit decode prints it",
     declare_encode,
     false,
     "Every field has to be there, but for counts, which are those of the lists: --template prints all of a message. "
     "A\n"
     "mistake is told with its place, and nothing is written.",
     {{{"encode --template rib_fcurt_update", "JSON to start from"},
       {"encode --hex update.json -o update.hex", "The bytes of a file's messages, as text"}}},
     output_lost},
    {"text",
     "Prints what numbers are called",
     declare_text,
     true,
     "A vocabulary is a kind of number that has texts, such as client identities. Of a text its number is printed.",
     {{{"text rib_uuid 12 fspf", "A client's name, and a client's number"}, {"text rib_rtn", "All result codes"}}},
     output_lost},
};

} // namespace

std::span<const command> message_commands() { return commands; }

} // namespace ribkit::cli
