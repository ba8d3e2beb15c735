// What is searched and what is shown of the naive model.
#include "rib/naive/naive_state.h"

#include "rib_codes.h"

#include <algorithm>
#include <iterator>
#include <tuple>

namespace ribkit::rib {

namespace {

uint32_t vsan_of(const naive_route &route) { return route.what.key[0]; }

uint32_t own_distance(uint32_t uuid) {
    const std::map<uint32_t, uint32_t> known{
        {RIB_CLIENT_PORT_MANAGER, 0}, {RIB_CLIENT_FLOGI, 0},     {RIB_CLIENT_TLPORT, 0}, {RIB_CLIENT_CONFIG, 5},
        {RIB_CLIENT_OPERATOR, 5},     {RIB_CLIENT_FCDOMAIN, 10}, {RIB_CLIENT_FSPF, 110}};
    const auto found = known.find(uuid);
    return found == known.end() ? 200 : found->second;
}

} // namespace

std::vector<words> naive_state::take_told() { return std::exchange(told_, {}); }

naive_route *naive_state::find(size_t table, const words &key, uint32_t uuid) {
    for (naive_route &route : routes_) {
        if (route.table == table && route.uuid == uuid && route.what.key == key) {
            return &route;
        }
    }
    return nullptr;
}

const naive_route *naive_state::active(size_t table, const words &key) const {
    const naive_route *best = nullptr;
    for (const naive_route &route : routes_) {
        if (route.table == table && route.what.key == key && (best == nullptr || precedes(route, *best))) {
            best = &route;
        }
    }
    return best;
}

bool naive_state::precedes(const naive_route &a, const naive_route &b) const {
    return std::tuple(distance_of(a.uuid), a.what.metric, a.uuid) <
           std::tuple(distance_of(b.uuid), b.what.metric, b.uuid);
}

uint32_t naive_state::distance_of(uint32_t uuid) const {
    const auto registered = distances_.find(uuid);
    return registered == distances_.end() ? own_distance(uuid) : registered->second;
}

std::vector<naive_route> naive_state::in_order(const condition &which) const {
    std::vector<naive_route> some;
    std::copy_if(routes_.begin(), routes_.end(), std::back_inserter(some), which);
    std::sort(some.begin(), some.end(), [this](const naive_route &a, const naive_route &b) {
        return a.table != b.table         ? a.table < b.table
               : a.what.key != b.what.key ? by_number()(a.what.key, b.what.key)
                                          : precedes(a, b);
    });
    return some;
}

size_t naive_state::count(const condition &which) const {
    return static_cast<size_t>(std::count_if(routes_.begin(), routes_.end(), which));
}

words naive_state::line(const naive_route &route) const {
    const naive_record &what = route.what;
    const bool is_active = active(route.table, what.key)->uuid == route.uuid;
    words all{static_cast<uint32_t>(route.table)};
    all.insert(all.end(), what.key.begin(), what.key.end());
    all.push_back(route.uuid);
    if (route.table == naive_unicast) {
        all.insert(all.end(), {what.metric, (what.flag & ~RIB_FLAG_ACTIVE) | (is_active ? RIB_FLAG_ACTIVE : 0)});
    }
    for (const words &list : {what.carried, what.ways}) {
        all.push_back(static_cast<uint32_t>(list.size()));
        all.insert(all.end(), list.begin(), list.end());
    }
    return all;
}

std::vector<words> naive_state::all() const {
    std::vector<words> lines;
    for (const naive_route &route : in_order([](const naive_route &) { return true; })) {
        lines.push_back(line(route));
    }
    return lines;
}

std::map<uint32_t, words> naive_state::vsans() const {
    std::map<uint32_t, words> all;
    for (const naive_route &route : routes_) {
        words &one = all[vsan_of(route)];
        one.resize(4);
        one[route.table]++;
        one[3] = changed_.at(vsan_of(route));
    }
    return all;
}

std::map<uint32_t, words> naive_state::clients() const {
    std::map<uint32_t, words> all;
    for (const naive_route &route : routes_) {
        words &one = all[route.uuid];
        one.resize(3);
        one[route.table]++;
    }
    return all;
}

std::map<uint32_t, std::set<words, by_number>> naive_state::destinations() const {
    std::map<uint32_t, std::set<words, by_number>> all;
    for (const naive_route &route : routes_) {
        words one{static_cast<uint32_t>(route.table)};
        one.insert(one.end(), route.what.key.begin(), route.what.key.end());
        all[vsan_of(route)].insert(one);
    }
    return all;
}

words naive_state::in_use() const {
    uint32_t ways = 0;
    for (const naive_route &route : routes_) {
        ways += route.what.interfaces;
    }
    size_t places = 0;
    for (const auto &[vsan, some] : destinations()) {
        places += some.size();
    }
    return {static_cast<uint32_t>(routes_.size()), ways, static_cast<uint32_t>(places)};
}

} // namespace ribkit::rib
