// What the commands print, and every route as `ribkit decode` prints a rib_ucast_route.
#include "cli/fabrics/run_json.h"

#include "cli/json_document.h"
#include "decode/decoder.h"
#include "protocol/route_messages.h"

#include <cmath>

namespace ribkit::cli {

namespace {

using decode::json_text;

double rounded(double seconds) { return std::round(seconds * 1e6) / 1e6; }

void traffic_members(json_text &json, const clients::client_traffic &t) {
    json.member("routes_sent").number(t.sent());
    json.member("added").number(t.added);
    json.member("deleted").number(t.deleted);
    json.member("changed").number(t.changed);
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

void event_value(json_text &json, const lab::fabric &f, const lab::fabric_event &event) {
    json.open('{');
    json.member("link").text(f.link_name(f.links()[event.link]));
    if (event.up) {
        json.member("state").text(*event.up ? "up" : "down");
    }
    if (event.cost) {
        json.member("cost").number(*event.cost);
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
    json.close('}');
}

void run_members(json_text &json, const lab::fabric_run &run) {
    fabric_member(json, run.now());
    json.member("steps").list(run.record().steps,
                              [&](const lab::run_step &step) { step_value(json, run.now(), step); });
}

/// An array of messages.
void routes_value(const json_text &json, const model::held_routes &routes) {
    const decode::kind &entry = *decode::find_kind("rib_ucast_route");
    decode::json_writer written(json);
    decode::decoder messages(entry, nullptr, nullptr, &written);
    for (const auto &[key, held] : routes) {
        const std::vector<uint8_t> bytes = protocol::ucast_entry(key, held); // and room behind it, for displays
        rib_check_report report{};
        messages.take(std::span(bytes).first(decode::message_size(entry, bytes, report)), false);
    }
    written.finish();
}

void held_members(json_text &json, const rib::rib_state &rib) {
    json.member("routes_held").number(rib.routes.size());
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

void print_lab_json(command_output &out, const lab::fabric_run &run, const rib::rib_state &rib) {
    print_object(out, [&](json_text &json) {
        run_members(json, run);
        routes_value(json.member("routes"), rib.routes);
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
        routes_value(json.member("routes"), rib.routes);
        json.member("summary").open('{');
        json.member("messages_answered").number(rib.answered);
        held_members(json, rib);
        json.close('}');
    });
}

} // namespace ribkit::cli
