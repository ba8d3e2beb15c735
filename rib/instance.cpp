// What is told of the whole is counted when somebody asks.
#include "rib/instance.h"

#include <algorithm>

namespace ribkit::rib {

namespace {

// As rib_mem_to_str has them.
enum memory_kind : uint32_t {
    domain_reach = 2,
    distribution_trees = 3,
    label_routes = 4,
    multicast_routes = 5,
    active_routes = 6,
    versions = 7,
    labelled_routes = 8,
    unicast_routes = 9,
    registrations = 11,
    verifications = 14,
    vsan_attributes = 15
};

uint32_t count_trees(const state &routes) {
    const auto &all = routes.routes<multicast>().all();
    return static_cast<uint32_t>(std::count_if(routes.vsans().begin(), routes.vsans().end(), [&](const auto &vsan) {
        const auto first = all.lower_bound(multicast::first_of(vsan.first));
        return first != all.end() && first->first.vsan == vsan.first && first->first.to.fcid == 0;
    }));
}

/// Label routes that say which labels to push for a unicast destination.
uint32_t count_labelled(const state &routes) {
    const auto &all = routes.routes<label>().all();
    return static_cast<uint32_t>(std::count_if(all.begin(), all.end(), [](const auto &route) {
        return route.first.type == RIB_ROUTE_FC_LABEL && route.first.match_count == 0;
    }));
}

template <class T> model::memory_pool pool_of(uint32_t kind, size_t count) {
    return {kind, sizeof(T), static_cast<uint32_t>(count)};
}

} // namespace

uint32_t instance::enter(const registration &said, uint64_t heard, uint32_t now) {
    const uint32_t result = clients.take(said, heard);
    if (result == RIB_OK) {
        routes.set_distance(said.client, said.distance, now);
    }
    return result;
}

std::optional<registration> instance::lose(uint64_t heard, uint32_t now) {
    const auto lost = clients.forget_one(heard);
    if (lost) {
        routes.set_distance(lost->client, {}, now);
    }
    return lost;
}

std::vector<model::vsan_summary> instance::summaries(uint32_t first, size_t most) const {
    std::vector<model::vsan_summary> found;
    for (auto at = routes.vsans().lower_bound(first); at != routes.vsans().end() && found.size() < most; ++at) {
        const vsan_use &use = at->second;
        const auto held = [&](table_id table) { return use.routes[static_cast<size_t>(table)]; };
        found.push_back(
            {at->first, use.changed, held(table_id::unicast), held(table_id::multicast), held(table_id::label)});
    }
    return found;
}

// What waits for answers of modules or clients is nothing yet: there are no modules.
uint32_t instance::held_in(uint32_t structure) const {
    constexpr uint32_t label_updates = 3; // then as table_id
    constexpr uint32_t multicast_updates = 4;
    constexpr uint32_t unicast_updates = 5;
    constexpr uint32_t requests = 6;
    constexpr uint32_t pending = 7;
    constexpr uint32_t switchover_log = 8;
    switch (structure) {
    case label_updates:
    case multicast_updates:
    case unicast_updates:
        return unanswered[structure - label_updates];
    case requests:
        return waiting;
    case pending:
        return unsent;
    case switchover_log:
        return logs.of<unicast>().held() + logs.of<multicast>().held() + logs.of<label>().held();
    default:
        return 0;
    }
}

std::array<model::memory_pool, model::memory_pools> instance::memory() const {
    std::array<model::memory_pool, model::memory_pools> pools{};
    for (uint32_t i = 0; i < pools.size(); i++) {
        pools[i].pool = i + 1;
    }
    const auto reported =
        std::count_if(reports.begin(), reports.end(), [](const auto &report) { return report.type != 0; });
    for (const model::memory_pool &used :
         {pool_of<vsan_use>(domain_reach, routes.vsans().size()),
          pool_of<table<multicast>::record>(distribution_trees, count_trees(routes)),
          pool_of<table<label>::record>(label_routes, routes.routes<label>().count()),
          pool_of<table<multicast>::record>(multicast_routes, routes.routes<multicast>().count()),
          pool_of<table<unicast>::index::value_type>(active_routes, routes.routes<unicast>().all().size()),
          pool_of<std::pair<version_key, std::vector<uint32_t>>>(versions, routes.versions().all().size()),
          pool_of<table<label>::record>(labelled_routes, count_labelled(routes)),
          pool_of<table<unicast>::record>(unicast_routes, routes.routes<unicast>().count()),
          pool_of<registration>(registrations, clients.size()),
          pool_of<model::verification>(verifications, static_cast<size_t>(reported)),
          pool_of<model::vsan_attributes>(vsan_attributes, described.size() + routes.suspended().size())}) {
        pools[used.pool - 1] = used;
    }
    return pools;
}

} // namespace ribkit::rib
