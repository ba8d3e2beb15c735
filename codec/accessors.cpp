// Single fields of messages in network form, read without converting anything.
#include "codec/messages/route.h"
#include "codec/view.h"
#include "rib_codec.h"

using namespace ribkit::codec;
using namespace ribkit::wire;

uint32_t rib_ntoh_fclrt_update_get_uuid(const void *msg) { return view<fclrt_update>(msg).get<"uuid">(); }
uint32_t rib_ntoh_fclrt_update_get_vsan(const void *msg) { return view<fclrt_update>(msg).get<"vsan">(); }
uint32_t rib_ntoh_fclrt_update_get_oper(const void *msg) { return view<fclrt_update>(msg).get<"oper">(); }
uint32_t rib_ntoh_fclrt_update_get_n_route(const void *msg) { return view<fclrt_update>(msg).get<"n_route">(); }

uint32_t rib_ntoh_fcurt_update_get_uuid(const void *msg) { return view<fcurt_update>(msg).get<"uuid">(); }
uint32_t rib_ntoh_fcurt_update_get_vsan(const void *msg) { return view<fcurt_update>(msg).get<"vsan">(); }
uint32_t rib_ntoh_fcurt_update_get_oper(const void *msg) { return view<fcurt_update>(msg).get<"oper">(); }
uint32_t rib_ntoh_fcurt_update_get_n_version(const void *msg) { return view<fcurt_update>(msg).get<"n_version">(); }
uint32_t rib_ntoh_fcurt_update_get_n_route(const void *msg) { return view<fcurt_update>(msg).get<"n_route">(); }

void rib_ntoh_fcurt_update_get_version(const void *msg, uint32_t *versions) {
    constexpr size_t room = fcurt_update.row_of("version").bound;
    const auto list = view<fcurt_update>(msg).list<"version">();
    for (size_t i = 0; i < list.size(); ++i) {
        versions[i] = list[i].get<"version">();
    }
    for (size_t i = list.size(); i < room; ++i) {
        versions[i] = 0;
    }
}

uint32_t rib_ntoh_fcurt_get_fcid(const void *record) {
    return view<fcurt>(record).get<"fcid">() & rib_ntoh_fcurt_get_mask(record);
}
uint32_t rib_ntoh_fcurt_get_mask(const void *record) { return view<fcurt>(record).get<"mask">(); }
uint32_t rib_ntoh_fcurt_get_action(const void *record) { return view<fcurt>(record).get<"action">(); }
uint32_t rib_ntoh_fcurt_get_metric(const void *record) { return view<fcurt>(record).get<"metric">(); }
uint32_t rib_ntoh_fcurt_get_flag(const void *record) { return view<fcurt>(record).get<"flag">(); }
uint32_t rib_ntoh_fcurt_get_n_hop(const void *record) { return view<fcurt>(record).get<"n_hop">(); }
uint32_t rib_ntoh_fcurt_route_get_intf(const void *hop) { return view<fcurt_hop>(hop).get<"intf">(); }
uint32_t rib_ntoh_fcurt_route_get_domain(const void *hop) { return view<fcurt_hop>(hop).get<"domain">(); }

uint32_t rib_ntoh_fclrt_get_type(const void *record) { return view<fclrt>(record).get<"type">(); }
uint32_t rib_ntoh_fclrt_get_vsan(const void *record) { return view<fclrt>(record).get<"vsan">(); }
uint32_t rib_ntoh_fclrt_get_action(const void *record) { return view<fclrt>(record).get<"action">(); }
uint32_t rib_ntoh_fclrt_get_n_match(const void *record) { return view<fclrt>(record).get<"n_match">(); }
uint32_t rib_ntoh_fclrt_get_n_src(const void *record) { return view<fclrt>(record).get<"n_src">(); }
uint32_t rib_ntoh_fclrt_get_n_intf(const void *record) { return view<fclrt>(record).get<"n_intf">(); }
uint32_t rib_ntoh_fclrt_get_src(const void *record) { return view<fclrt>(record).list<"src">()[0].get<"intf">(); }
uint32_t rib_ntoh_fclrt_intf_get_ctrl(const void *entry) { return view<fclrt_intf>(entry).get<"ctrl">(); }
uint32_t rib_ntoh_fclrt_intf_get_intf(const void *entry) { return view<fclrt_intf>(entry).get<"intf">(); }
