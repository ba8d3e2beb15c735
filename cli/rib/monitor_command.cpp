// A line for each route that changes, or as JSON one for each message that tells of some.
#include "cli/rib/monitor_command.h"

#include "base/stop_signals.h"
#include "base/text.h"
#include "cli/fabrics/run_options.h"
#include "cli/messages/message_kinds.h"
#include "cli/rib/route_request.h"
#include "cli/rib/words.h"
#include "clients/change_reader.h"
#include "clients/question.h"
#include "clients/wire_agreement.h"
#include "decode/decoder.h"
#include "protocol/route_changes.h"
#include "rib_codes.h"
#include "rib_text.h"

#include <array>
#include <ios>

namespace ribkit::cli {

namespace {

std::string action_text(uint32_t action) {
    std::array<char, 64> text{};
    rib_action_to_str(action, text.data());
    return text.data();
}

std::string ways_text(const model::route_values &what) {
    std::array<char, 64> flags{};
    rib_fcurt_flag_to_str(what.flag, flags.data());
    std::string text = base::joined(" cost ", what.metric, ", ", flags.data());
    for (const model::next_hop &hop : what.hops) {
        text += base::joined(", by ", interface_text(hop.if_index));
        text += hop.domain == 0 ? "" : base::joined(" to domain ", hop.domain);
    }
    return text;
}

std::string ways_text(const model::multicast_values &what) {
    std::string text;
    for (const uint32_t member : what.members) {
        text += base::joined(text.empty() ? " by " : ", by ", interface_text(member));
    }
    return text;
}

std::string ways_text(const model::label_values &what) {
    std::string text;
    for (auto left = what.hops; !left.empty();) {
        const auto hop = model::take_label_hop(left);
        text += base::joined(text.empty() ? " by " : ", by ", interface_text(hop[1]));
        for (const uint32_t label : hop.subspan(2)) {
            text += base::joined("+0x", std::hex, label);
        }
    }
    return text;
}

std::string where_of(uint32_t vsan, const model::destination &to) { return where_text(model::route_key{vsan, to}); }

/// "add unicast route 0x650000/0xff0000 of VSAN 1, fspf: cost 500, ..."
template <class View, class Changes> void print_changes(command_output &out, View update, const char *table) {
    const uint32_t vsan = update.template get<"vsan">();
    const std::string owner = client_text(update.template get<"uuid">());
    for (const auto &one : Changes(update)) {
        std::string where;
        if constexpr (requires { one.key; }) {
            where = where_text(one.key);
        } else {
            where = where_of(vsan, one.to);
        }
        out.print_line(
            base::joined(action_text(one.action), ' ', table, ' ', where, ", ", owner, ':', ways_text(one.what)));
    }
}

void print_text(command_output &out, uint32_t opcode, std::span<const uint8_t> update) {
    if (opcode == RIBKIT_OPCODE_FCURT_NOTE) {
        print_changes<codec::view<wire::fcurt_update>, protocol::unicast_changes>(
            out, codec::view<wire::fcurt_update>(update.data()), "unicast");
    } else if (opcode == RIBKIT_OPCODE_FCMRT_NOTE) {
        print_changes<codec::view<wire::fcmrt_update>, protocol::multicast_changes>(
            out, codec::view<wire::fcmrt_update>(update.data()), "multicast");
    } else {
        print_changes<codec::view<wire::fclrt_update>, protocol::label_changes>(
            out, codec::view<wire::fclrt_update>(update.data()), "label");
    }
}

void print_json(command_output &out, uint32_t opcode, std::span<const uint8_t> update) {
    if (!out.wants_json()) {
        return;
    }
    const char *message = opcode == RIBKIT_OPCODE_FCURT_NOTE   ? "rib_fcurt_update"
                          : opcode == RIBKIT_OPCODE_FCMRT_NOTE ? "rib_fcmrt_update"
                                                               : "rib_fclrt_update";
    decode::output pieces([&out](std::string_view piece) { out.print_json(piece); });
    decode::json_writer json(pieces, decode::json_form::lines);
    decode::decoder(kind_named(message), nullptr, nullptr, &json).take(update, false);
    json.finish();
    pieces.flush();
}

/// An object on a line of its own.
template <class Print> void print_event(command_output &out, const Print &print) {
    if (out.wants_json()) {
        decode::output pieces([&out](std::string_view piece) { out.print_json(piece); });
        decode::json_text json(pieces, true);
        json.object([&] { print(json); });
        json.end_line();
        pieces.flush();
    }
}

void print_read(command_output &out, const clients::held_counts &held) {
    out.print_line(base::joined("the RIB holds ", held.unicast, " unicast, ", held.multicast, " multicast and ",
                                held.label, " label routes"));
    print_event(out, [&](decode::json_text &json) {
        json.member("read").object([&] {
            json.member("unicast").number(held.unicast);
            json.member("multicast").number(held.multicast);
            json.member("label").number(held.label);
        });
    });
}

void print_missed(command_output &out, const std::string &why) {
    out.print_line(base::joined("something may have been missed: ", why, "; reading again"));
    print_event(out, [&](decode::json_text &json) { json.member("missed").text(why); });
}

} // namespace

int run_monitor(const monitor_options &options) {
    load_faults(options.bus);
    command_output out(options.output, {options.bus.faults_file});
    const base::stop_signals signals;
    bus::rib_link link(options.bus.url, RIB_CLIENT_OPERATOR, {options.envelopes, options.bus.patience()});
    const base::stop_call stopping(signals, [&link] { link.close(); });
    clients::change_reader changes(link, RIB_CLIENT_OPERATOR,
                                   {[&out](uint32_t opcode, std::span<const uint8_t> update) {
                                        print_text(out, opcode, update);
                                        print_json(out, opcode, update);
                                    },
                                    [&out](const auto &held) { print_read(out, held); },
                                    [&out](const std::string &why) { print_missed(out, why); }});
    try {
        clients::find_rib(link);
        clients::patiently(link, [&] { changes.start(); });
        changes.follow();
    } catch (const bus::link_closed &) {
        out.finish();
    }
    return 0;
}

} // namespace ribkit::cli
