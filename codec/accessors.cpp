// Single fields of messages in network form, read without converting anything.
#include "codec/bytes.h"
#include "codec/messages/route.h"
#include "rib_codec.h"

using namespace ribkit::codec;
using namespace ribkit::wire;

static uint32_t word_at(const void *message, uint32_t offset) {
    return be32(static_cast<const uint8_t *>(message) + offset);
}

uint32_t rib_ntoh_fclrt_update_get_uuid(const void *msg) { return word_at(msg, fclrt_update.at("uuid")); }
uint32_t rib_ntoh_fclrt_update_get_vsan(const void *msg) { return word_at(msg, fclrt_update.at("vsan")); }
uint32_t rib_ntoh_fclrt_update_get_oper(const void *msg) { return word_at(msg, fclrt_update.at("oper")); }
uint32_t rib_ntoh_fclrt_update_get_n_route(const void *msg) { return word_at(msg, fclrt_update.at("n_route")); }

uint32_t rib_ntoh_fcurt_update_get_uuid(const void *msg) { return word_at(msg, fcurt_update.at("uuid")); }
uint32_t rib_ntoh_fcurt_update_get_vsan(const void *msg) { return word_at(msg, fcurt_update.at("vsan")); }
uint32_t rib_ntoh_fcurt_update_get_oper(const void *msg) { return word_at(msg, fcurt_update.at("oper")); }
uint32_t rib_ntoh_fcurt_update_get_n_version(const void *msg) { return word_at(msg, fcurt_update.at("n_version")); }
uint32_t rib_ntoh_fcurt_update_get_n_route(const void *msg) { return word_at(msg, fcurt_update.at("n_route")); }

void rib_ntoh_fcurt_update_get_version(const void *msg, uint32_t *versions) {
    constexpr uint32_t room = fcurt_update.row_of("version").bound;
    const auto *list = static_cast<const uint8_t *>(msg) + fcurt_update.at("version");
    const uint32_t n = rib_ntoh_fcurt_update_get_n_version(msg);
    for (size_t i = 0; i < n; ++i) {
        versions[i] = be32(list + 4 * i);
    }
    for (size_t i = n; i < room; ++i) {
        versions[i] = 0;
    }
}

uint32_t rib_ntoh_fcurt_get_fcid(const void *record) {
    return word_at(record, fcurt.at("fcid")) & rib_ntoh_fcurt_get_mask(record);
}
uint32_t rib_ntoh_fcurt_get_mask(const void *record) { return word_at(record, fcurt.at("mask")); }
uint32_t rib_ntoh_fcurt_get_action(const void *record) { return word_at(record, fcurt.at("action")); }
uint32_t rib_ntoh_fcurt_get_metric(const void *record) { return word_at(record, fcurt.at("metric")); }
uint32_t rib_ntoh_fcurt_get_flag(const void *record) { return word_at(record, fcurt.at("flag")); }
uint32_t rib_ntoh_fcurt_get_n_hop(const void *record) { return word_at(record, fcurt.at("n_hop")); }
uint32_t rib_ntoh_fcurt_route_get_intf(const void *hop) { return word_at(hop, fcurt_hop.at("intf")); }
uint32_t rib_ntoh_fcurt_route_get_domain(const void *hop) { return word_at(hop, fcurt_hop.at("domain")); }

uint32_t rib_ntoh_fclrt_get_type(const void *record) { return word_at(record, fclrt.at("type")); }
uint32_t rib_ntoh_fclrt_get_vsan(const void *record) { return word_at(record, fclrt.at("vsan")); }
uint32_t rib_ntoh_fclrt_get_action(const void *record) { return word_at(record, fclrt.at("action")); }
uint32_t rib_ntoh_fclrt_get_n_match(const void *record) { return word_at(record, fclrt.at("n_match")); }
uint32_t rib_ntoh_fclrt_get_n_src(const void *record) { return word_at(record, fclrt.at("n_src")); }
uint32_t rib_ntoh_fclrt_get_n_intf(const void *record) { return word_at(record, fclrt.at("n_intf")); }
uint32_t rib_ntoh_fclrt_get_src(const void *record) { return word_at(record, fclrt.at("src")); }
uint32_t rib_ntoh_fclrt_intf_get_ctrl(const void *entry) { return word_at(entry, fclrt_intf.at("ctrl")); }
uint32_t rib_ntoh_fclrt_intf_get_intf(const void *entry) { return word_at(entry, fclrt_intf.at("intf")); }
