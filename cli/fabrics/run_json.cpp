// What the commands print, and every route as `ribkit decode` prints a rib_ucast_route.
#include "cli/fabrics/run_json.h"

#include "cli/json_document.h"
#include "cli/rib/route_records.h"
#include "decode/decoder.h"
#include "protocol/table_messages.h"
#include "rib_text.h"

#include <array>
#include <cmath>
#include <functional>
#include <optional>

namespace ribkit::cli {

namespace {

using decode::json_text;

double rounded(double seconds) { return std::round(seconds * 1e6) / 1e6; }

void traffic_members(json_text &json, const clients::client_traffic &t) {
    json.member("routes_sent").number(t.sent());
    json.member("added").number(t.added);
    json.member("deleted").number(t.deleted);
    json.member("changed").number(t.changed);
    json.member("merged").number(t.merged);
    json.member("refused").number(t.refused);
    json.member("round_trips").number(t.messages);
    json.member("bytes_sent").number(t.bytes_sent);
    json.member("bytes_received").number(t.bytes_received);
}

void fabric_member(json_text &json, const lab::fabric &f) {
    json.member("fabric").open('{');
    json.member("name").text(f.name);
    json.member("switches").number(f.switches().size());
    json.member("links").number(f.links().size());
    json.member("vsans").list(f.vsans(), [&](const lab::fabric_vsan &vsan) {
        json.open('{');
        json.member("id").number(vsan.id);
        json.member("name").text(vsan.name);
        json.close('}');
    });
    json.member("local").open('{');
    json.member("name").text(f.local().name);
    json.member("domain").number(f.local().domain);
    json.close('}');
    json.close('}');
}

/// What it happens to: a link, or what is declared by its name.
void subject_member(json_text &json, const lab::fabric &f, const lab::fabric_event &event) {
    switch (event.subject) {
    case lab::event_subject::link:
        json.member("link").text(f.link_name(f.links()[event.index]));
        return;
    case lab::event_subject::static_route:
        json.member("static").text(f.declared.statics()[event.index].name);
        return;
    case lab::event_subject::group:
        json.member("group").text(f.declared.groups()[event.index].name);
        return;
    case lab::event_subject::label:
        json.member("label").text(f.declared.labels()[event.index].name);
        return;
    case lab::event_subject::distance:
        json.member("client").number(event.index);
        return;
    case lab::event_subject::module:
        json.member("module").number(f.modules[event.index].number);
        return;
    }
}

void room_member(json_text &json, const lab::module_room &room) {
    json.member("room").open('{');
    const auto add = [&](const char *name, std::optional<uint32_t> count) {
        if (count) {
            json.member(name).number(*count);
        }
    };
    add("unicast", room.unicast);
    add("multicast", room.multicast);
    add("label", room.label);
    add("per_vsan", room.per_vsan);
    json.close('}');
}

void event_value(json_text &json, const lab::fabric &f, const lab::fabric_event &event) {
    json.open('{');
    subject_member(json, f, event);
    if (event.subject == lab::event_subject::module) {
        json.member("state").text(std::string(lab::module_turn_name(event.turn)));
    }
    if (event.room.says_something()) {
        room_member(json, event.room);
    }
    if (event.up) {
        json.member("state").text(*event.up ? "up" : "down");
    }
    if (event.cost) {
        json.member(event.subject == lab::event_subject::distance ? "distance" : "cost").number(*event.cost);
    }
    if (event.leaves) {
        json.member("leave").text(f.port_text(*event.leaves));
    }
    if (event.joins) {
        json.member("join").text(f.port_text(*event.joins));
    }
    if (event.to) {
        json.member("to").text(f.port_text(*event.to));
    }
    json.close('}');
}

/// @param more adds what else is known of it
void module_value(json_text &json, const lab::fabric_module &about, const lab::module_now &is,
                  const std::function<void()> &more = {}) {
    std::array<char, 64> state{};
    fib_state_to_str(static_cast<uint32_t>(is.state), state.data());
    json.open('{');
    json.member("module").number(about.number);
    json.member("name").text(about.name);
    json.member("state").text(state.data());
    json.member("unicast").number(is.unicast);
    json.member("multicast").number(is.multicast);
    json.member("label").number(is.label);
    if (more) {
        more();
    }
    json.close('}');
}

void step_value(json_text &json, const lab::fabric &f, const lab::run_step &step) {
    json.open('{');
    json.member("at_ms").number(static_cast<uint64_t>(step.at.count()));
    json.member("events").list(step.events, [&](const lab::fabric_event &event) { event_value(json, f, event); });
    json.member("unreachable").list(step.lost, [&](const auto &lost) {
        const auto &[vsan, domains] = lost;
        json.open('{');
        json.member("vsan").number(vsan);
        json.member("domains").list(domains, [&](uint32_t domain) { json.number(domain); });
        json.close('}');
    });
    traffic_members(json, step.traffic);
    json.member("clients").list(step.by_role, [&](const lab::role_traffic &one) {
        json.open('{');
        json.member("role").text(std::string(one.name));
        traffic_members(json, one.traffic);
        json.close('}');
    });
    if (!step.modules.empty()) {
        json.member("modules").list(
            step.modules, [&](const lab::moved_module &one) { module_value(json, f.modules[one.index], one.is); });
    }
    json.close('}');
}

void run_members(json_text &json, const lab::fabric_run &run) {
    fabric_member(json, run.now());
    json.member("steps").list(run.record().steps,
                              [&](const lab::run_step &step) { step_value(json, run.now(), step); });
}

/// A route as the record that its table's kind is shown as, with the room that its size is found in.
std::vector<uint8_t> entry_of(uint32_t owner, const model::route_key &key, const model::route_values &what) {
    return protocol::ucast_entry(key,
                                 {owner, {what.metric, what.flag, {what.hops.begin(), what.hops.end()}, what.carried}});
}
template <class Key, class Values> std::vector<uint8_t> entry_of(uint32_t owner, const Key &key, const Values &what) {
    record_list one;
    add_record(one, owner, key, what);
    return {one[0].begin(), one[0].end()};
}

/// A table as an array of messages.
template <class Kind> void table_value(const json_text &json, const rib::state &tables, const char *record) {
    const decode::kind &entry = *decode::find_kind(record);
    decode::json_writer written(json);
    decode::decoder messages(entry, nullptr, nullptr, &written);
    const auto &table = tables.routes<Kind>();
    for (const auto &[key, active] : table.all()) {
        const auto bytes = entry_of(active->of->uuid, key, table.read(*active));
        rib_check_report report{};
        messages.take(std::span(bytes).first(decode::message_size(entry, bytes, report)), false);
    }
    written.finish();
}

void tables_members(json_text &json, const rib::state &tables) {
    table_value<rib::unicast>(json.member("routes"), tables, "rib_ucast_route");
    table_value<rib::multicast>(json.member("multicast_routes"), tables, "rib_mcast_route");
    table_value<rib::label>(json.member("label_routes"), tables, "rib_lbl_route");
}

void modules_member(json_text &json, const rib::state &wanted, const lab::running_modules &modules,
                    const std::vector<lab::module_now> &at_end) {
    json.member("modules").list(at_end, [&](const lab::module_now &is) {
        const auto index = static_cast<size_t>(&is - at_end.data());
        module_value(json, modules.about(index), is, [&] {
            const lab::routes_in_hardware found = modules.compare(index, wanted);
            json.member("routes_right").number(found.right);
            json.member("routes_wanted").number(found.wanted);
            json.member("entries_extra").number(found.extra);
            json.member("answered").number(is.answered);
        });
    });
}

void held_members(json_text &json, const rib::rib_state &rib) {
    json.member("routes_held").number(rib.held());
    json.member("path_units").number(rib.memory.path_units);
    json.member("positions").number(rib.memory.positions);
}

void times_members(json_text &json, const lab::run_record &run) {
    json.member("seconds").real(rounded(run.seconds()));
    json.member("seconds_computing").real(rounded(run.total.computing.count()));
    json.member("seconds_exchanging").real(rounded(run.total.exchanging.count()));
    json.member("routes_per_second").number(static_cast<uint64_t>(std::llround(run.routes_per_second())));
}

/// An object with what `print` prints, where one is wanted.
template <typename Print> void print_object(command_output &out, const Print &print) {
    if (!out.wants_json()) {
        return;
    }
    json_document document(out);
    json_text &json = document.text();
    json.open('{');
    print(json);
    json.close('}');
    document.finish();
}

} // namespace

void print_lab_json(command_output &out, const lab::fabric_run &run, const rib::rib_state &rib,
                    const lab::running_modules &modules, const std::vector<lab::module_now> &modules_at_end) {
    print_object(out, [&](json_text &json) {
        run_members(json, run);
        tables_members(json, rib.tables);
        if (modules.size() != 0) {
            modules_member(json, rib.tables, modules, modules_at_end);
        }
        json.member("summary").open('{');
        traffic_members(json, run.record().total);
        held_members(json, rib);
        times_members(json, run.record());
        json.close('}');
    });
}

void print_client_json(command_output &out, const lab::fabric_run &run) {
    print_object(out, [&](json_text &json) {
        run_members(json, run);
        json.member("summary").open('{');
        traffic_members(json, run.record().total);
        times_members(json, run.record());
        json.close('}');
    });
}

void print_rib_json(command_output &out, const rib::rib_state &rib) {
    print_object(out, [&](json_text &json) {
        tables_members(json, rib.tables);
        json.member("summary").open('{');
        json.member("messages_answered").number(rib.answered);
        held_members(json, rib);
        json.close('}');
    });
}

} // namespace ribkit::cli
