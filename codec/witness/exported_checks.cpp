// Every check of a message that the library exports.
#include "codec/witness/naive_check.h"

#include <algorithm>
#include <iterator>

namespace ribkit::witness {

namespace {

constexpr exported_check all_checks[] = {
    {"rib_fclrt_update", rib_check_fclrt_update},
    {"rib_fcmrt_update", rib_check_fcmrt_update},
    {"rib_fcurt_update", rib_check_fcurt_update},
    {"rib_fcurt", rib_check_fcurt},
    {"rib_fclrt", rib_check_fclrt},
    {"rib_fclrt_intf", rib_check_fclrt_intf},
    {"rib_fcmrt", rib_check_fcmrt},
    {"rib_fcurt_rsp", rib_check_fcurt_rsp},
    {"rib_fclrt_rsp", rib_check_fclrt_rsp},
    {"rib_fcmrt_rsp", rib_check_fcmrt_rsp},
    {"rib_fclrt_query", rib_check_fclrt_query},
    {"rib_fcurt_query", rib_check_fcurt_query},
    {"rib_fcmrt_query", rib_check_fcmrt_query},
    {"rib_lbl_route", rib_check_lbl_route},
    {"rib_ucast_route", rib_check_ucast_route},
    {"rib_mcast_route", rib_check_mcast_route},
    {"rib_topo", rib_check_topo},
    {"rib_sync_fcl", rib_check_sync_fcl},
    {"rib_sync_fcm", rib_check_sync_fcm},
    {"rib_sync_fcu", rib_check_sync_fcu},
    {"rib_sync_query", rib_check_sync_query},
    {"rib_sync_info", rib_check_sync_info},
    {"rib_verify", rib_check_verify},
    {"rib_reg_query", rib_check_reg_query},
    {"rib_dm_query", rib_check_dm_query},
    {"rib_sys_query", rib_check_sys_query},
    {"rib_db_query", rib_check_db_query},
    {"rib_in_query", rib_check_in_query},
    {"rib_test_info", rib_check_test_info},
    {"rib_node_query", rib_check_node_query},
    {"rib_test_query", rib_check_test_query},
    {"rib_register", rib_check_register},
    {"rib_fclrt_info", rib_check_fclrt_info},
    {"rib_fcmrt_info", rib_check_fcmrt_info},
    {"rib_fcurt_info", rib_check_fcurt_info},
    {"rib_db_info", rib_check_db_info},
    {"rib_dm_info", rib_check_dm_info},
    {"rib_in_info", rib_check_in_info},
    {"rib_reg_info", rib_check_reg_info},
    {"rib_sys_info", rib_check_sys_info},
    {"rib_node_info", rib_check_node_info},
    {"rib_verf_query", rib_check_verf_query},
    {"rib_verf_info", rib_check_verf_info},
    {"fib_fcl_update", fib_check_fcl_update},
    {"fib_fcm_update", fib_check_fcm_update},
    {"fib_fcu_update", fib_check_fcu_update},
    {"fib_fcu_path", fib_check_fcu_path},
    {"fib_fcl_path", fib_check_fcl_path},
    {"fib_fcm_path", fib_check_fcm_path},
    {"fib_fcl_rsp", fib_check_fcl_rsp},
    {"fib_fcm_rsp", fib_check_fcm_rsp},
    {"fib_fcu_rsp", fib_check_fcu_rsp},
    {"fib_sync", fib_check_sync},
    {"fib_verf_fcu", fib_check_verf_fcu},
    {"fib_verf_fcm", fib_check_verf_fcm},
    {"fib_verf_fcl", fib_check_verf_fcl},
    {"fib_fcu_rsp_path", fib_check_fcu_rsp_path},
    {"fib_fcm_rsp_path", fib_check_fcm_rsp_path},
    {"fib_fcl_rsp_path", fib_check_fcl_rsp_path},
    {"fib_node", fib_check_node},
    {"fib_port", fib_check_port},
    {"fib_vsan", fib_check_vsan},
    {"fib_vsan_update", fib_check_vsan_update},
    {"fib_vsan_rewrite_update", fib_check_vsan_rewrite_update},
    {"fib_vsan_rewrite_path", fib_check_vsan_rewrite_path},
    {"fib_vsan_rewrite_rsp", fib_check_vsan_rewrite_rsp},
    {"rib_fib_fcu_lb_query", rib_fib_check_fcu_lb_query},
    {"rib_fib_fcu_lb_rsp", rib_fib_check_fcu_lb_rsp},
};

} // namespace

std::span<const exported_check> exported_checks() { return all_checks; }

const exported_check *find_check(std::string_view name) {
    const auto *found = std::find_if(std::begin(all_checks), std::end(all_checks),
                                     [name](const exported_check &candidate) { return candidate.name == name; });
    return found == std::end(all_checks) ? nullptr : found;
}

} // namespace ribkit::witness
