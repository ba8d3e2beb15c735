// A message is laid out in host order first and converted in place, header and records one after the other, as every
// client does it.
#include "tools/fcurt_message.h"

#include "rib_codec.h"
#include "rib_codes.h"

#include <cstring>
#include <type_traits>

namespace ribkit::tools {

namespace {

struct header_words {
    uint32_t uuid, vsan, oper, n_version, n_route;
    uint32_t version[240];
};
static_assert(sizeof(header_words) == RIBKIT_FCURT_UPDATE_SIZE);

struct record_words {
    std::array<uint8_t, 4> fcid;
    uint32_t mask;
    uint8_t control[8];
    uint32_t action, metric, flag, n_hop;
};
static_assert(sizeof(record_words) == RIBKIT_FCURT_SIZE);

struct hop_words {
    uint32_t intf, domain;
};
static_assert(sizeof(hop_words) == RIBKIT_FCURT_HOP_SIZE);

template <typename Words> void append(std::vector<uint8_t> &bytes, const Words &words) {
    static_assert(std::is_trivially_copyable_v<Words>);
    const size_t at = bytes.size();
    bytes.resize(at + sizeof words);
    std::memcpy(bytes.data() + at, &words, sizeof words);
}

size_t record_size(const route_change &change) { return fcurt_record_size(change.what.hops.size()); }

void append_record(std::vector<uint8_t> &bytes, const route_change &change) {
    const auto &[action, to, what] = change;
    const auto n_hop = static_cast<uint32_t>(what.hops.size());
    append(bytes, record_words{fcid_bytes(to.fcid), to.mask, {}, action, what.metric, what.flag, n_hop});
    for (const next_hop &hop : what.hops) {
        append(bytes, hop_words{hop.if_index, hop.domain});
    }
}

std::vector<uint8_t> encode_one(const fcurt_update &update, std::span<const route_change> changes) {
    std::vector<uint8_t> bytes;
    append(bytes, header_words{update.uuid, update.vsan, update.oper, 0, static_cast<uint32_t>(changes.size()), {}});
    for (const route_change &change : changes) {
        append_record(bytes, change);
    }
    rib_hton_fcurt_update(bytes.data(), bytes.data());
    uint8_t *record = bytes.data() + sizeof(header_words);
    for (size_t i = 0; i < changes.size(); i++) {
        record += rib_hton_fcurt(record, record);
    }
    return bytes;
}

route_change decode_record(const uint8_t *record) {
    route_change change{rib_ntoh_fcurt_get_action(record),
                        {rib_ntoh_fcurt_get_fcid(record), rib_ntoh_fcurt_get_mask(record)},
                        {rib_ntoh_fcurt_get_metric(record), rib_ntoh_fcurt_get_flag(record), {}}};
    const uint8_t *hop = record + sizeof(record_words);
    for (uint32_t left = rib_ntoh_fcurt_get_n_hop(record); left > 0; left--) {
        change.what.hops.push_back({rib_ntoh_fcurt_route_get_intf(hop), rib_ntoh_fcurt_route_get_domain(hop)});
        hop += sizeof(hop_words);
    }
    return change;
}

} // namespace

std::vector<uint8_t> encode_whole(const fcurt_update &update) { return encode_one(update, update.changes); }

std::vector<fcurt_update_message> encode(const fcurt_update &update, size_t limit) {
    std::vector<fcurt_update_message> messages;
    std::span<const route_change> left = update.changes;
    while (!left.empty()) {
        size_t size = sizeof(header_words) + record_size(left[0]);
        size_t count = 1;
        while (count < left.size() && size + record_size(left[count]) <= limit) {
            size += record_size(left[count++]);
        }
        messages.push_back({encode_one(update, left.first(count)), count});
        left = left.subspan(count);
    }
    return messages;
}

fcurt_update decode_fcurt_update(std::span<const uint8_t> message) {
    const uint8_t *bytes = message.data();
    fcurt_update update{rib_ntoh_fcurt_update_get_uuid(bytes),
                        rib_ntoh_fcurt_update_get_vsan(bytes),
                        rib_ntoh_fcurt_update_get_oper(bytes),
                        {}};
    const uint8_t *record = bytes + sizeof(header_words);
    for (uint32_t left = rib_ntoh_fcurt_update_get_n_route(bytes); left > 0; left--) {
        update.changes.push_back(decode_record(record));
        record += record_size(update.changes.back());
    }
    return update;
}

std::array<uint8_t, RIBKIT_FCURT_RSP_SIZE> encode(const fcurt_response &response) {
    static_assert(sizeof response == RIBKIT_FCURT_RSP_SIZE);
    std::array<uint8_t, RIBKIT_FCURT_RSP_SIZE> bytes{};
    rib_hton_fcurt_rsp(&response, bytes.data());
    return bytes;
}

fcurt_response decode_fcurt_response(std::span<const uint8_t, RIBKIT_FCURT_RSP_SIZE> bytes) {
    fcurt_response response{};
    rib_ntoh_fcurt_rsp(bytes.data(), &response);
    return response;
}

} // namespace ribkit::tools
