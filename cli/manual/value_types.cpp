// Values are known where a program has a list of them: displays, messages, vocabularies, clients, and what stands in
// the fabric file that the command line names.
#include "cli/manual/value_types.h"

#include "base/text.h"
#include "cli/manual/description.h"
#include "cli/messages/displays.h"
#include "cli/messages/text.h"
#include "cli/rib/route_command.h"
#include "decode/kinds.h"
#include "diag/text/client_rows.h"
#include "lab/fabric.h"
#include "lab/files/fabric_file.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <optional>

namespace ribkit::cli {

namespace {

using candidates = std::vector<candidate>;

template <class Rows, class Make> candidates from(const Rows &rows, const Make &make) {
    candidates all;
    std::transform(std::begin(rows), std::end(rows), std::back_inserter(all), make);
    return all;
}

candidates known_commands(const words & /*given*/) {
    return from(described_commands(), [](const described_command &one) {
        return candidate{one.row->name, one.row->description};
    });
}

candidates known_displays(const words & /*given*/) {
    return from(displays(), [](const display &one) { return candidate{std::string(one.short_name()), one.what}; });
}

candidates known_messages(const words & /*given*/) {
    return from(decode::kinds(), [](const decode::kind &one) { return candidate{one.name, one.what}; });
}

candidates known_vocabularies(const words & /*given*/) {
    return from(diag::vocabularies, [](const diag::vocabulary &one) { return candidate{std::string(one.name), ""}; });
}

/// The texts of the vocabulary that stands in front of it.
candidates known_texts(const words &given) {
    const auto named = std::find_if(given.begin(), given.end(),
                                    [](const std::string &word) { return find_vocabulary(word) != nullptr; });
    if (named == given.end()) {
        return {};
    }
    return from(find_vocabulary(*named)->rows, [](const diag::text_row &row) {
        return candidate{row.text, shown(row.value)};
    });
}

candidates known_clients(const words & /*given*/) {
    return from(diag::client_rows, [](const diag::text_row &row) { return candidate{row.text, shown(row.value)}; });
}

candidates known_actions(const words & /*given*/) {
    return from(route_actions, [](const char *action) { return candidate{action, ""}; });
}

candidates known_buses(const words & /*given*/) {
    return {{"local:", "in this process"},
            {"unix:", "a directory of this machine"},
            {"nats://", "over a server"},
            {"tls://", "over a server, encrypted"}};
}

/// The fabric that the words or the environment name.
std::optional<lab::fabric> fabric_of(const words &given) {
    const auto named =
        std::find_if(given.rbegin(), given.rend(), [](const auto &word) { return word.ends_with(".toml"); });
    const char *variable = std::getenv("RIBKIT_FABRIC");
    try {
        if (named != given.rend()) {
            return lab::read_fabric_file(*named);
        }
        return variable == nullptr ? std::nullopt : std::optional(lab::read_fabric_file(variable));
    } catch (const std::exception &) { // whoever is still typing is told nothing
        return {};
    }
}

candidates known_switches(const words &given) {
    const auto fabric = fabric_of(given);
    return !fabric ? candidates{} : from(fabric->switches(), [](const lab::fabric_switch &one) {
        return candidate{one.name, base::joined("domain ", one.domain)};
    });
}

candidates known_vsans(const words &given) {
    const auto fabric = fabric_of(given);
    return !fabric ? candidates{} : from(fabric->vsans(), [](const lab::fabric_vsan &one) {
        return candidate{base::joined(one.id), one.name};
    });
}

candidates known_tables(const words &given) {
    candidates all{{"auto", "all up to 64 routes"}, {"all", ""}, {"none", ""}};
    const candidates vsans = known_vsans(given);
    all.insert(all.end(), vsans.begin(), vsans.end());
    return all;
}

constexpr value_type rows[] = {
    {"ACTION", "what is done to routes", known_actions},
    {"BYTES", "a number of bytes", nullptr},
    {"CLIENT", "a client identity: its name or its number (`ribkit text rib_uuid` lists them)", known_clients},
    {"COMMAND", "a command of ribkit", known_commands},
    {"COST", "a number; the lowest is best", nullptr},
    {"DOMAIN", "the number of a switch's domain, 1 to 239", nullptr},
    {"FABRIC", "a fabric file: ribkit-fabric(5)", nullptr},
    {"FCID[/MASK]", "an FC ID of 24 bits, as 0x650000, and the mask of those bits of it that count", nullptr},
    {"FILE", "the name of a file; - is standard input or output", nullptr},
    {"INTERFACE", "an interface by its name: fcSLOT/PORT, port-channel NUMBER, fc-tunnelNUMBER", nullptr},
    {"KIND", "a display (`ribkit show --list` names them)", known_displays},
    {"LABEL", "a label word: label in bits 31 to 12, experimental bits, bottom of stack in bit 8, time to live",
     nullptr},
    {"MESSAGE", "a message, with or without rib_ or fib_ (`ribkit decode --list` names them)", known_messages},
    {"MILLISECONDS", "a whole number", nullptr},
    {"N", "a whole number", nullptr},
    {"NAME", "any text", nullptr},
    {"NUMBER", "a whole number", nullptr},
    {"ROLE", "a route client of the lab", nullptr},
    {"SECONDS", "a whole number", nullptr},
    {"SHAPE", "how the switches of a fabric are linked", nullptr},
    {"SHELL", "a shell that completes words", nullptr},
    {"SWITCH", "the name of a switch of the fabric", known_switches},
    {"URL", "a bus: qip_open(3) says of each kind what it does, and which variables of the environment it reads",
     known_buses},
    {"VALUE", "a number, decimal or behind 0x, or its text", known_texts},
    {"VOCABULARY", "a kind of number that has texts (`ribkit text --list` prints all)", known_vocabularies},
    {"VSAN", "the number of a VSAN, 1 to 4095", known_vsans},
    {"WHERE", "an FC ID and its mask, as 0x650000/0xff0000, or a file", nullptr},
    {"WHICH", "all, none, auto, or the number of a VSAN", known_tables},
    {"WORD", "what has been typed, word for word", nullptr},
};

constexpr file_type types[] = {
    {".toml", "a fabric: ribkit-fabric(5)"},
    {".faults", "what goes wrong on the bus: ribkit-faults(5)"},
    {".hex", "messages or records in network form, as hexadecimal text; # begins a comment"},
    {".bin", "the bytes of messages or records in network form"},
    {".json", "messages as `ribkit decode` prints them"},
};

} // namespace

std::span<const value_type> value_types() { return rows; }

const value_type *value_type_named(std::string_view name) {
    const auto *const found =
        std::find_if(std::begin(rows), std::end(rows), [&](const value_type &row) { return row.name == name; });
    return found == std::end(rows) ? nullptr : found;
}

std::span<const file_type> file_types() { return types; }

} // namespace ribkit::cli
