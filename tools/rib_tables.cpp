// What the RIB does with an update: sizes first, then values, then the tables.
#include "tools/rib_tables.h"

#include "rib_codec.h"
#include "rib_codes.h"
#include "tools/fabric.h"

#include <algorithm>
#include <cstring>

namespace ribkit {

namespace {

constexpr uint32_t any_change = RIB_ACTION_CHANGE_FLAG | RIB_ACTION_CHANGE_METRIC;

bool is_known_action(const route_change &change) {
    const bool changes = (change.action & any_change) != 0 && (change.action & ~any_change) == 0;
    return change.action == RIB_ACTION_ADD || change.action == RIB_ACTION_DELETE || changes;
}

uint32_t judge(const fcurt_update &update) {
    if (update.oper != RIB_OPER_UPDATE && update.oper != RIB_OPER_UPDATE_RSP) {
        return RIB_NOT_SUPPORTED;
    }
    const bool sound = update.vsan >= 1 && update.vsan <= last_vsan &&
                       std::all_of(update.changes.begin(), update.changes.end(), is_known_action);
    return sound ? RIB_OK : RIB_BAD_PARAMETERS;
}

/// An answer that says as much about the update as its header tells.
fcurt_response refusal(uint32_t result, std::span<const uint8_t> message) {
    if (message.size() < fcurt_update_header_size) {
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

uint32_t rib_tables::held(uint32_t vsan) const {
    const auto found = held_.find(vsan);
    return found == held_.end() ? 0 : found->second;
}

fcurt_response rib_tables::take_update(std::span<const uint8_t> message, rib_check_report *why) {
    const uint32_t size = rib_check_fcurt_update(message.data(), static_cast<uint32_t>(message.size()), why);
    if (size != RIB_OK) {
        fcurt_response response = refusal(size, message);
        response.held = held(response.vsan);
        return response;
    }
    const fcurt_update update = decode_fcurt_update(message);
    fcurt_response response{judge(update), update.oper, update.vsan, 0, held(update.vsan)};
    if (response.result != RIB_OK) {
        return response;
    }
    for (const route_change &change : update.changes) {
        response.accepted += take(update, change) ? 1 : 0;
    }
    response.held = held(update.vsan);
    response.result = response.accepted == update.changes.size() ? RIB_OK : RIB_NO_ENTRY;
    return response;
}

bool rib_tables::take(const fcurt_update &update, const route_change &change) {
    const route_key key{update.vsan, change.to};
    if (change.action == RIB_ACTION_ADD) {
        held_[update.vsan] += routes_.insert_or_assign(key, held_route{update.uuid, change.what}).second ? 1 : 0;
        return true;
    }
    const auto found = routes_.find(key);
    if (found == routes_.end()) {
        return false;
    }
    if (change.action == RIB_ACTION_DELETE) {
        routes_.erase(found);
        held_[update.vsan]--;
        return true;
    }
    route &what = found->second.what;
    what.flag = (change.action & RIB_ACTION_CHANGE_FLAG) != 0 ? change.what.flag : what.flag;
    what.metric = (change.action & RIB_ACTION_CHANGE_METRIC) != 0 ? change.what.metric : what.metric;
    return true;
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

} // namespace ribkit
