// The first route says of which client all of an answer are.
#include "rib/service/answers.h"

#include "rib_codes.h"

namespace ribkit::rib {

namespace {

using unicast_table = table<unicast>;

const unicast_table::record &route_for(uint32_t client, const unicast_table::record &active) {
    const auto *one = &active;
    while (one != nullptr && one->of->uuid != client) {
        one = one->next;
    }
    return one == nullptr ? active : *one;
}

} // namespace

std::vector<uint8_t> answer(const state &rib, protocol::query_view query) {
    const unicast_table &routes = rib.routes<unicast>();
    const uint32_t client = query.get<"uuid">();
    const model::route_key from = protocol::start_of(query);
    const auto first = routes.all().lower_bound(from);
    const bool any = first != routes.all().end();
    const uint32_t vsan = any && query.get<"type">() == RIBKIT_QUERY_ALL ? first->first.vsan : from.vsan;
    const uint32_t uuid = any ? route_for(client, *first->second).of->uuid : 0;
    std::vector<uint8_t> bytes(RIBKIT_ANSWER_LIMIT);
    const protocol::update_writer update(bytes);
    update.set<"uuid">(uuid).set<"vsan">(vsan).set<"oper">(RIB_OPER_UPDATE);
    uint32_t left = query.get<"requested">();
    for (auto next = first; left != 0 && next != routes.all().end(); ++next, --left) {
        const auto &[key, active] = *next;
        const auto &route = route_for(client, *active);
        if (key.vsan != vsan || route.of->uuid != uuid ||
            !protocol::add_route(update, RIB_ACTION_ADD, key.to, routes.read(route))) {
            break;
        }
    }
    bytes.resize(update.size());
    return bytes;
}

model::held_routes active_routes(const state &rib) {
    const unicast_table &routes = rib.routes<unicast>();
    model::held_routes all;
    for (const auto &[key, active] : routes.all()) {
        const auto what = routes.read(*active);
        all.emplace_hint(
            all.end(), key,
            model::held_route{active->of->uuid,
                              {what.metric, what.flag, {what.hops.begin(), what.hops.end()}, what.carried}});
    }
    return all;
}

} // namespace ribkit::rib
