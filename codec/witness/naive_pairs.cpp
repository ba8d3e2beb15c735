// All pairs by name, and the way to call one.
#include "codec/witness/naive.h"

#include <algorithm>

namespace ribkit::witness {

namespace {

constexpr pair all_pairs[] = {
    {"rib_fclrt_update", route_update},
    {"rib_fcmrt_update", route_update},
    {"rib_fcurt_update", fcurt_update},
    {"rib_fcurt", fcurt, returns::size},
    {"rib_fcurt_rsp", table_rsp},
    {"rib_fclrt", fclrt, returns::size},
    {"rib_fclrt_intf", fclrt_intf, returns::size},
    {"rib_fclrt_rsp", table_rsp},
    {"rib_fcmrt", fcmrt, returns::size},
    {"rib_fcmrt_rsp", table_rsp},
    {"rib_fclrt_query", fclrt_query},
    {"rib_fcurt_query", fcurt_query},
    {"rib_fcmrt_query", fcmrt_query},
    {"rib_lbl_route", lbl_route, returns::size},
    {"rib_ucast_route", ucast_route},
    {"rib_mcast_route", mcast_route},
    {"rib_topo", topo},
    {"rib_sync_fcl", sync_fcl},
    {"rib_sync_fcm", sync_fcm},
    {"rib_sync_fcu", sync_fcu},
    {"rib_sync_query", sync_query},
    {"rib_sync_info", sync_info},
    {"rib_verify", verify},
    {"rib_reg_query", reg_query},
    {"rib_dm_query", state_query},
    {"rib_sys_query", state_query},
    {"rib_db_query", state_query},
    {"rib_in_query", state_query},
    {"rib_test_info", test_info},
    {"rib_node_query", node_query},
    {"rib_test_query", test_query},
    {"rib_register", registration},
    {"rib_fclrt_info", fclrt_info},
    {"rib_fcmrt_info", fcmrt_info},
    {"rib_fcurt_info", fcurt_info},
    {"rib_db_info", db_info},
    {"rib_dm_info", dm_info},
    {"rib_in_info", in_info, returns::kind},
    {"rib_reg_info", reg_info},
    {"rib_sys_info", sys_info},
    {"rib_node_info", node},
    {"rib_verf_query", verf_query},
    {"rib_verf_info", verf_info},
    {"fib_fcl_update", fib_update},
    {"fib_fcm_update", fib_update},
    {"fib_fcu_update", fib_update},
    {"fib_fcu_path", fcu_path},
    {"fib_fcl_path", fcl_path},
    {"fib_fcm_path", fcm_path},
    {"fib_fcl_rsp", fib_rsp},
    {"fib_fcm_rsp", fib_rsp},
    {"fib_fcu_rsp", fib_rsp},
    {"fib_sync", sync},
    {"fib_verf_fcu", verf_fcu},
    {"fib_verf_fcm", verf_fcm},
    {"fib_verf_fcl", verf_fcl},
    {"fib_fcu_rsp_path", fcu_rsp_path},
    {"fib_fcm_rsp_path", fcm_rsp_path},
    {"fib_fcl_rsp_path", fcl_rsp_path},
    {"fib_node", node},
    {"fib_port", port},
    {"fib_vsan", vsan},
    {"fib_vsan_update", vsan_update},
    {"fib_vsan_rewrite_update", vsan_rewrite_update},
    {"fib_vsan_rewrite_path", vsan_rewrite_path},
    {"fib_vsan_rewrite_rsp", vsan_rewrite_rsp},
    {"rib_fib_fcu_lb_query", fcu_lb_query},
    {"rib_fib_fcu_lb_rsp", fcu_lb_rsp},
    {"fcRouteEntry", route_entry},
    {"fcRouteFlowStatEntry", flow_stat_entry},
};

} // namespace

std::span<const pair> pairs() { return all_pairs; }

const pair *find_pair(std::string_view name) {
    const auto *found = std::find_if(std::begin(all_pairs), std::end(all_pairs),
                                     [name](const pair &candidate) { return candidate.name == name; });
    return found == std::end(all_pairs) ? nullptr : found;
}

outcome convert(const pair &what, direction way, order host, std::span<const uint8_t> src, std::span<uint8_t> dst) {
    buffers memory{src, dst};
    const uint32_t result = what.convert(transfer(way, host, memory));
    return {result, memory.reach};
}

} // namespace ribkit::witness
