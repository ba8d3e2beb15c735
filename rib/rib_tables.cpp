// What the RIB does with an update: sizes first, then values, then the tables.
#include "rib/rib_tables.h"

#include "rib_codes.h"

#include <algorithm>
#include <new>

namespace ribkit::rib {

namespace {

constexpr uint32_t any_change = RIB_ACTION_CHANGE_FLAG | RIB_ACTION_CHANGE_METRIC;

bool is_known(uint32_t action) {
    const bool changes = (action & any_change) != 0 && (action & ~any_change) == 0;
    return action == RIB_ACTION_ADD || action == RIB_ACTION_DELETE || changes;
}

bool has_known_actions(protocol::update_view update) {
    const auto records = update.list<"route">();
    return std::all_of(records.begin(), records.end(),
                       [](protocol::record_view record) { return is_known(record.get<"action">()); });
}

uint32_t judge(protocol::update_view update) {
    const uint32_t oper = update.get<"oper">();
    if (oper != RIB_OPER_UPDATE && oper != RIB_OPER_UPDATE_RSP && oper != RIB_OPER_UPDATE_CMI) {
        return RIB_NOT_SUPPORTED;
    }
    const uint32_t vsan = update.get<"vsan">();
    return vsan >= 1 && vsan <= RIB_LAST_VSAN && has_known_actions(update) ? RIB_OK : RIB_BAD_PARAMETERS;
}

/// An answer that says as much about the update as its header tells.
protocol::fcurt_response refusal(uint32_t result, std::span<const uint8_t> message) {
    if (message.size() < wire::fcurt_update.size) {
        return {result, 0, 0, 0, 0};
    }
    const protocol::update_view update(message.data());
    return {result, update.get<"oper">(), update.get<"vsan">(), 0, 0};
}

} // namespace

rib_tables::rib_tables(const rib_spaces &spaces, const move_display &shown, const std::map<uint32_t, uint32_t> &quotas)
    : store_(spaces, shown) {
    for (const auto &[uuid, most] : quotas) {
        uses_.emplace(uuid, client_use{most});
    }
}

uint32_t rib_tables::held(uint32_t vsan) const {
    const auto found = store_.vsans().find(vsan);
    return found == store_.vsans().end() ? 0 : found->second.routes;
}

model::held_routes rib_tables::routes() const {
    model::held_routes all;
    for (const auto &[key, record] : index_) {
        const auto hops = store_.hops(*record);
        all.emplace_hint(all.end(), key,
                         model::held_route{record->uuid, {record->metric, record->flag, {hops.begin(), hops.end()}}});
    }
    return all;
}

model::route_values rib_tables::read(const route_record &record) const {
    return {record.metric, record.flag, store_.hops(record)};
}

// The first route says of which client all of them are.
std::vector<uint8_t> rib_tables::answer(protocol::query_view query) const {
    const model::route_key from = protocol::start_of(query);
    const auto first = index_.lower_bound(from);
    const bool any = first != index_.end();
    const uint32_t vsan = any && query.get<"type">() == RIBKIT_QUERY_ALL ? first->first.vsan : from.vsan;
    const uint32_t uuid = any ? first->second->uuid : 0;
    std::vector<uint8_t> bytes(RIBKIT_ANSWER_LIMIT);
    const protocol::update_writer routes(bytes);
    routes.set<"uuid">(uuid).set<"vsan">(vsan).set<"oper">(RIB_OPER_UPDATE);
    uint32_t left = query.get<"requested">();
    for (auto next = first; left != 0 && next != index_.end(); ++next, --left) {
        const auto &[key, record] = *next;
        if (key.vsan != vsan || record->uuid != uuid ||
            !protocol::add_route(routes, RIB_ACTION_ADD, key.to, read(*record))) {
            break;
        }
    }
    bytes.resize(routes.size());
    return bytes;
}

protocol::fcurt_response rib_tables::take_update(std::span<const uint8_t> message,
                                                 const std::function<bool(uint32_t)> &may_speak,
                                                 rib_check_report *why) {
    const uint32_t size = rib_check_fcurt_update(message.data(), static_cast<uint32_t>(message.size()), why);
    if (size != RIB_OK) {
        protocol::fcurt_response response = refusal(size, message);
        response.held = held(response.vsan);
        return response;
    }
    const protocol::update_view update(message.data());
    const uint32_t vsan = update.get<"vsan">();
    protocol::fcurt_response response{judge(update), update.get<"oper">(), vsan, 0, held(vsan)};
    if (response.result == RIB_OK && may_speak && !may_speak(update.get<"uuid">())) {
        response.result = RIB_BAD_PARAMETERS;
    }
    if (response.result != RIB_OK) {
        return response;
    }
    for (const protocol::record_view change : update.list<"route">()) {
        const uint32_t result = take(update, change);
        response.accepted += result == RIB_OK ? 1 : 0;
        response.result = response.result == RIB_OK ? result : response.result;
    }
    response.held = held(vsan);
    return response;
}

uint32_t rib_tables::take(protocol::update_view update, protocol::record_view change) {
    const model::route_key key{update.get<"vsan">(), protocol::destination_of(change)};
    const uint32_t uuid = update.get<"uuid">();
    const uint32_t action = change.get<"action">();
    const auto found = index_.find(key);
    if (action == RIB_ACTION_ADD) {
        return found == index_.end() ? add(key, uuid, change) : replace(*found->second, uuid, change);
    }
    if (found == index_.end()) {
        return RIB_NO_ENTRY;
    }
    route_record &held = *found->second;
    if (action == RIB_ACTION_DELETE) {
        index_.erase(found);
        count(held.uuid, -1);
        return store_.remove(held);
    }
    held.flag = (action & RIB_ACTION_CHANGE_FLAG) != 0 ? change.get<"flag">() : held.flag;
    held.metric = (action & RIB_ACTION_CHANGE_METRIC) != 0 ? change.get<"metric">() : held.metric;
    return RIB_OK;
}

// The place in the index comes first: once the store has the route, nothing can fail any more.
uint32_t rib_tables::add(const model::route_key &key, uint32_t uuid, protocol::record_view what) {
    if (!has_room(uuid)) {
        return RIB_HW_FULL;
    }
    auto place = index_.end();
    try {
        place = index_.emplace(key, nullptr).first;
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
    const uint32_t result = store_.add(key, uuid, what, place->second);
    if (result != RIB_OK) {
        index_.erase(place);
        return result;
    }
    count(uuid, 1);
    return RIB_OK;
}

uint32_t rib_tables::replace(route_record &held, uint32_t uuid, protocol::record_view what) {
    const uint32_t before = held.uuid;
    if (uuid != before && !has_room(uuid)) {
        return RIB_HW_FULL;
    }
    const uint32_t result = store_.replace(held, uuid, what);
    if (held.uuid != before) {
        count(before, -1);
        count(uuid, 1);
    }
    return result;
}

rib_tables::client_use *rib_tables::use_of(uint32_t uuid) {
    const auto found = uses_.find(uuid);
    return found == uses_.end() ? nullptr : &found->second;
}

bool rib_tables::has_room(uint32_t uuid) {
    const client_use *use = use_of(uuid);
    return use == nullptr || use->routes < use->most;
}

void rib_tables::count(uint32_t uuid, int32_t more) {
    if (client_use *use = use_of(uuid); use != nullptr) {
        use->routes += static_cast<uint32_t>(more);
    }
}

} // namespace ribkit::rib
