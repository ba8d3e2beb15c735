// What the commands print, and every route. Keys keep the order in which they are written here.
#include "cli/fabrics/run_json.h"

#include "base/text.h"
#include "rib_codes.h"
#include "rib_text.h"

#include <array>
#include <cmath>
#include <iomanip>
#include <nlohmann/json.hpp>

namespace ribkit::cli {

namespace {

using json = nlohmann::ordered_json;

std::string hex24(uint32_t value) { return base::joined("0x", std::hex, std::setfill('0'), std::setw(6), value); }

double rounded(double seconds) { return std::round(seconds * 1e6) / 1e6; }

json traffic_json(const clients::client_traffic &t) {
    return {{"routes_sent", t.sent()},    {"added", t.added},
            {"deleted", t.deleted},       {"changed", t.changed},
            {"refused", t.refused},       {"round_trips", t.messages},
            {"bytes_sent", t.bytes_sent}, {"bytes_received", t.bytes_received}};
}

json fabric_json(const lab::fabric &f) {
    json vsans = json::array();
    for (const lab::fabric_vsan &vsan : f.vsans()) {
        vsans.push_back({{"id", vsan.id}, {"name", vsan.name}});
    }
    return {{"name", f.name},
            {"switches", f.switches().size()},
            {"links", f.links().size()},
            {"vsans", vsans},
            {"local", {{"name", f.local().name}, {"domain", f.local().domain}}}};
}

json event_json(const lab::fabric &f, const lab::fabric_event &event) {
    json value{{"link", f.link_name(f.links()[event.link])}};
    if (event.up) {
        value["state"] = *event.up ? "up" : "down";
    }
    if (event.cost) {
        value["cost"] = *event.cost;
    }
    return value;
}

json step_json(const lab::fabric &f, const lab::run_step &step) {
    json events = json::array();
    for (const lab::fabric_event &event : step.events) {
        events.push_back(event_json(f, event));
    }
    json unreachable = json::array();
    for (const auto &[vsan, domains] : step.lost) {
        unreachable.push_back({{"vsan", vsan}, {"domains", domains}});
    }
    json value{{"at_ms", step.at.count()}, {"events", events}, {"unreachable", unreachable}};
    value.update(traffic_json(step.traffic));
    return value;
}

json hop_json(const model::next_hop &hop) {
    std::array<char, 64> name{};
    rib_if_index_to_str(hop.if_index, name.data());
    return {{"interface", name.data()}, {"domain", hop.domain}};
}

json route_json(const model::route_key &key, const model::held_route &held) {
    const model::route &what = held.what;
    json hops = json::array();
    for (const model::next_hop &hop : what.hops) {
        hops.push_back(hop_json(hop));
    }
    return {{"vsan", key.vsan},
            {"fcid", hex24(key.to.fcid)},
            {"mask", hex24(key.to.mask)},
            {"client", held.uuid},
            {"metric", what.metric},
            {"direct", (what.flag & RIB_FLAG_DIRECT) != 0},
            {"active", (what.flag & RIB_FLAG_ACTIVE) != 0},
            {"hops", hops}};
}

json list_of(const model::held_routes &routes) {
    json list = json::array();
    for (const auto &[key, held] : routes) {
        list.push_back(route_json(key, held));
    }
    return list;
}

json run_json(const lab::fabric_run &run) {
    json steps = json::array();
    for (const lab::run_step &step : run.record().steps) {
        steps.push_back(step_json(run.now(), step));
    }
    return {{"fabric", fabric_json(run.now())}, {"steps", steps}};
}

json held_json(const rib::rib_state &rib) {
    return {
        {"routes_held", rib.routes.size()}, {"path_units", rib.memory.path_units}, {"positions", rib.memory.positions}};
}

json times_json(const lab::run_record &run) {
    return {{"seconds", rounded(run.seconds())},
            {"seconds_computing", rounded(run.total.computing.count())},
            {"seconds_exchanging", rounded(run.total.exchanging.count())},
            {"routes_per_second", std::llround(run.routes_per_second())}};
}

std::string text_of(const json &value) { return value.dump(2, ' ', false, json::error_handler_t::replace) + "\n"; }

} // namespace

std::string lab_json(const lab::fabric_run &run, const rib::rib_state &rib) {
    json value = run_json(run);
    value["routes"] = list_of(rib.routes);
    json summary = traffic_json(run.record().total);
    summary.update(held_json(rib));
    summary.update(times_json(run.record()));
    value["summary"] = summary;
    return text_of(value);
}

std::string client_json(const lab::fabric_run &run) {
    json value = run_json(run);
    value["summary"] = traffic_json(run.record().total);
    value["summary"].update(times_json(run.record()));
    return text_of(value);
}

std::string rib_json(const rib::rib_state &rib) {
    json summary{{"messages_answered", rib.answered}};
    summary.update(held_json(rib));
    return text_of({{"routes", list_of(rib.routes)}, {"summary", summary}});
}

std::string routes_json(const model::held_routes &routes) { return text_of(list_of(routes)); }

} // namespace ribkit::cli
