// What the RIB does with an update: sizes first, then values, then the tables.
#include "tools/rib_tables.h"

#include "rib_codec.h"
#include "rib_codes.h"
#include "tools/fabric.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace ribkit::tools {

namespace {

constexpr uint32_t any_change = RIB_ACTION_CHANGE_FLAG | RIB_ACTION_CHANGE_METRIC;

bool is_known_action(const route_change &change) {
    const bool changes = (change.action & any_change) != 0 && (change.action & ~any_change) == 0;
    return change.action == RIB_ACTION_ADD || change.action == RIB_ACTION_DELETE || changes;
}

uint32_t judge(const fcurt_update &update) {
    if (update.oper != RIB_OPER_UPDATE && update.oper != RIB_OPER_UPDATE_RSP && update.oper != RIB_OPER_UPDATE_CMI) {
        return RIB_NOT_SUPPORTED;
    }
    const bool sound = update.vsan >= 1 && update.vsan <= last_vsan &&
                       std::all_of(update.changes.begin(), update.changes.end(), is_known_action);
    return sound ? RIB_OK : RIB_BAD_PARAMETERS;
}

/// An answer that says as much about the update as its header tells.
fcurt_response refusal(uint32_t result, std::span<const uint8_t> message) {
    if (message.size() < RIBKIT_FCURT_UPDATE_SIZE) {
        return {result, 0, 0, 0, 0};
    }
    return {result, rib_ntoh_fcurt_update_get_oper(message.data()), rib_ntoh_fcurt_update_get_vsan(message.data()), 0,
            0};
}

struct entry_words {
    uint32_t uuid, vsan;
    std::array<uint8_t, 4> fcid;
    uint32_t mask;
    uint8_t control[8];
    uint32_t cost, flag, n_hop;
};
static_assert(sizeof(entry_words) == 36);

struct entry_hop {
    uint32_t control, intf;
};

constexpr size_t label_area = 12; // the converter clears it behind the last hop too

// The displays read a hop's domain from bits 12 to 5 of its control word.
uint32_t control_of(const next_hop &hop) { return (hop.domain & 0xff) << 5; }

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

held_routes rib_tables::routes() const {
    held_routes all;
    for (const auto &[key, record] : index_) {
        all.emplace_hint(all.end(), key, held_route{record->uuid, read(*record)});
    }
    return all;
}

route rib_tables::read(const route_record &record) const {
    const auto hops = store_.hops(record);
    return {record.metric, record.flag, {hops.begin(), hops.end()}};
}

fcurt_update rib_tables::answer(const fcurt_query &query) const {
    fcurt_update routes{0, query.vsan, RIB_OPER_UPDATE, {}};
    size_t size = RIBKIT_FCURT_UPDATE_SIZE;
    for (auto next = index_.lower_bound({query.vsan, {query.fcid, query.mask}}); next != index_.end(); ++next) {
        const auto &[key, record] = *next;
        size += fcurt_record_size(record->hops);
        if (routes.changes.empty() && query.type == RIBKIT_QUERY_ALL) {
            routes.vsan = key.vsan;
        }
        routes.uuid = routes.changes.empty() ? record->uuid : routes.uuid;
        if (key.vsan != routes.vsan || record->uuid != routes.uuid || routes.changes.size() == query.count ||
            size > RIBKIT_ANSWER_LIMIT) {
            break;
        }
        routes.changes.push_back({RIB_ACTION_ADD, key.to, read(*record)});
    }
    return routes;
}

fcurt_response rib_tables::take_update(std::span<const uint8_t> message, const std::function<bool(uint32_t)> &may_speak,
                                       rib_check_report *why) {
    const uint32_t size = rib_check_fcurt_update(message.data(), static_cast<uint32_t>(message.size()), why);
    if (size != RIB_OK) {
        fcurt_response response = refusal(size, message);
        response.held = held(response.vsan);
        return response;
    }
    const fcurt_update update = decode_fcurt_update(message);
    fcurt_response response{judge(update), update.oper, update.vsan, 0, held(update.vsan)};
    if (response.result == RIB_OK && may_speak && !may_speak(update.uuid)) {
        response.result = RIB_BAD_PARAMETERS;
    }
    if (response.result != RIB_OK) {
        return response;
    }
    for (const route_change &change : update.changes) {
        const uint32_t result = take(update, change);
        response.accepted += result == RIB_OK ? 1 : 0;
        response.result = response.result == RIB_OK ? result : response.result;
    }
    response.held = held(update.vsan);
    return response;
}

uint32_t rib_tables::take(const fcurt_update &update, const route_change &change) {
    const route_key key{update.vsan, change.to};
    const auto found = index_.find(key);
    if (change.action == RIB_ACTION_ADD) {
        return found == index_.end() ? add(key, update.uuid, change.what)
                                     : replace(*found->second, update.uuid, change.what);
    }
    if (found == index_.end()) {
        return RIB_NO_ENTRY;
    }
    route_record &held = *found->second;
    if (change.action == RIB_ACTION_DELETE) {
        index_.erase(found);
        count(held.uuid, -1);
        return store_.remove(held);
    }
    held.flag = (change.action & RIB_ACTION_CHANGE_FLAG) != 0 ? change.what.flag : held.flag;
    held.metric = (change.action & RIB_ACTION_CHANGE_METRIC) != 0 ? change.what.metric : held.metric;
    return RIB_OK;
}

// The place in the index comes first: once the store has the route, nothing can fail any more.
uint32_t rib_tables::add(const route_key &key, uint32_t uuid, const route &what) {
    if (!has_room(uuid)) {
        return RIB_HW_FULL;
    }
    auto place = index_.end();
    try {
        place = index_.emplace(key, nullptr).first;
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
    const uint32_t result = store_.add(key.vsan, key.to, uuid, what, place->second);
    if (result != RIB_OK) {
        index_.erase(place);
        return result;
    }
    count(uuid, 1);
    return RIB_OK;
}

uint32_t rib_tables::replace(route_record &held, uint32_t uuid, const route &what) {
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

std::vector<uint8_t> ucast_entry(const route_key &key, const held_route &held) {
    const auto &[metric, flag, hops] = held.what;
    const auto n_hop = static_cast<uint32_t>(hops.size());
    const entry_words words{held.uuid, key.vsan, fcid_bytes(key.to.fcid), key.to.mask, {}, metric, flag, n_hop};
    std::vector<uint8_t> host(sizeof words + sizeof(entry_hop) * hops.size() + label_area);
    std::memcpy(host.data(), &words, sizeof words);
    for (size_t i = 0; i < hops.size(); i++) {
        const entry_hop hop{control_of(hops[i]), hops[i].if_index};
        std::memcpy(host.data() + sizeof words + sizeof hop * i, &hop, sizeof hop);
    }
    std::vector<uint8_t> network(host.size());
    rib_hton_ucast_route(host.data(), network.data());
    return network;
}

} // namespace ribkit::tools
