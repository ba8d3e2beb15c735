// Every converter pair that the codec exports.
#include "codec/witness/exported.h"

#include "fib_codec.h"
#include "rib_codec.h"

#include <type_traits>

namespace ribkit::witness {

namespace {

template <auto function> uint32_t call(const void *src, void *dst) {
    if constexpr (std::is_void_v<decltype(function(src, dst))>) {
        function(src, dst);
        return 0;
    } else {
        return function(src, dst);
    }
}

constexpr exported_pair all_exported[] = {
    {"rib_fclrt_update", call<rib_hton_fclrt_update>, call<rib_ntoh_fclrt_update>},
    {"rib_fcmrt_update", call<rib_hton_fcmrt_update>, call<rib_ntoh_fcmrt_update>},
    {"rib_fcurt_update", call<rib_hton_fcurt_update>, call<rib_ntoh_fcurt_update>},
    {"rib_fcurt", call<rib_hton_fcurt>, call<rib_ntoh_fcurt>},
    {"rib_fcurt_rsp", call<rib_hton_fcurt_rsp>, call<rib_ntoh_fcurt_rsp>},
    {"rib_fclrt", call<rib_hton_fclrt>, call<rib_ntoh_fclrt>},
    {"rib_fclrt_intf", call<rib_hton_fclrt_intf>, call<rib_ntoh_fclrt_intf>},
    {"rib_fclrt_rsp", call<rib_hton_fclrt_rsp>, call<rib_ntoh_fclrt_rsp>},
    {"rib_fcmrt", call<rib_hton_fcmrt>, call<rib_ntoh_fcmrt>},
    {"rib_fcmrt_rsp", call<rib_hton_fcmrt_rsp>, call<rib_ntoh_fcmrt_rsp>},
    {"rib_fclrt_query", call<rib_hton_fclrt_query>, call<rib_ntoh_fclrt_query>},
    {"rib_fcurt_query", call<rib_hton_fcurt_query>, call<rib_ntoh_fcurt_query>},
    {"rib_fcmrt_query", call<rib_hton_fcmrt_query>, call<rib_ntoh_fcmrt_query>},
    {"rib_lbl_route", call<rib_hton_lbl_route>, call<rib_ntoh_lbl_route>},
    {"rib_ucast_route", call<rib_hton_ucast_route>, call<rib_ntoh_ucast_route>},
    {"rib_mcast_route", call<rib_hton_mcast_route>, call<rib_ntoh_mcast_route>},
    {"rib_topo", call<rib_hton_topo>, call<rib_ntoh_topo>},
    {"rib_sync_fcl", call<rib_hton_sync_fcl>, call<rib_ntoh_sync_fcl>},
    {"rib_sync_fcm", call<rib_hton_sync_fcm>, call<rib_ntoh_sync_fcm>},
    {"rib_sync_fcu", call<rib_hton_sync_fcu>, call<rib_ntoh_sync_fcu>},
    {"rib_sync_query", call<rib_hton_sync_query>, call<rib_ntoh_sync_query>},
    {"rib_sync_info", call<rib_hton_sync_info>, call<rib_ntoh_sync_info>},
    {"rib_verify", call<rib_hton_verify>, call<rib_ntoh_verify>},
    {"rib_reg_query", call<rib_hton_reg_query>, call<rib_ntoh_reg_query>},
    {"rib_dm_query", call<rib_hton_dm_query>, call<rib_ntoh_dm_query>},
    {"rib_sys_query", call<rib_hton_sys_query>, call<rib_ntoh_sys_query>},
    {"rib_db_query", call<rib_hton_db_query>, call<rib_ntoh_db_query>},
    {"rib_in_query", call<rib_hton_in_query>, call<rib_ntoh_in_query>},
    {"rib_test_info", call<rib_hton_test_info>, call<rib_ntoh_test_info>},
    {"rib_node_query", call<rib_hton_node_query>, call<rib_ntoh_node_query>},
    {"rib_test_query", call<rib_hton_test_query>, call<rib_ntoh_test_query>},
    {"rib_register", call<rib_hton_register>, call<rib_ntoh_register>},
    {"rib_fclrt_info", call<rib_hton_fclrt_info>, call<rib_ntoh_fclrt_info>},
    {"rib_fcmrt_info", call<rib_hton_fcmrt_info>, call<rib_ntoh_fcmrt_info>},
    {"rib_fcurt_info", call<rib_hton_fcurt_info>, call<rib_ntoh_fcurt_info>},
    {"rib_db_info", call<rib_hton_db_info>, call<rib_ntoh_db_info>},
    {"rib_dm_info", call<rib_hton_dm_info>, call<rib_ntoh_dm_info>},
    {"rib_in_info", call<rib_hton_in_info>, call<rib_ntoh_in_info>},
    {"rib_reg_info", call<rib_hton_reg_info>, call<rib_ntoh_reg_info>},
    {"rib_sys_info", call<rib_hton_sys_info>, call<rib_ntoh_sys_info>},
    {"rib_node_info", call<rib_hton_node_info>, call<rib_ntoh_node_info>},
    {"rib_verf_query", call<rib_hton_verf_query>, call<rib_ntoh_verf_query>},
    {"rib_verf_info", call<rib_hton_verf_info>, call<rib_ntoh_verf_info>},
    {"fib_fcl_update", call<fib_hton_fcl_update>, call<fib_ntoh_fcl_update>},
    {"fib_fcm_update", call<fib_hton_fcm_update>, call<fib_ntoh_fcm_update>},
    {"fib_fcu_update", call<fib_hton_fcu_update>, call<fib_ntoh_fcu_update>},
    {"fib_fcu_path", call<fib_hton_fcu_path>, call<fib_ntoh_fcu_path>},
    {"fib_fcl_path", call<fib_hton_fcl_path>, call<fib_ntoh_fcl_path>},
    {"fib_fcm_path", call<fib_hton_fcm_path>, call<fib_ntoh_fcm_path>},
    {"fib_fcl_rsp", call<fib_hton_fcl_rsp>, call<fib_ntoh_fcl_rsp>},
    {"fib_fcm_rsp", call<fib_hton_fcm_rsp>, call<fib_ntoh_fcm_rsp>},
    {"fib_fcu_rsp", call<fib_hton_fcu_rsp>, call<fib_ntoh_fcu_rsp>},
    {"fib_sync", call<fib_hton_sync>, call<fib_ntoh_sync>},
    {"fib_verf_fcu", call<fib_hton_verf_fcu>, call<fib_ntoh_verf_fcu>},
    {"fib_verf_fcm", call<fib_hton_verf_fcm>, call<fib_ntoh_verf_fcm>},
    {"fib_verf_fcl", call<fib_hton_verf_fcl>, call<fib_ntoh_verf_fcl>},
    {"fib_fcu_rsp_path", call<fib_hton_fcu_rsp_path>, call<fib_ntoh_fcu_rsp_path>},
    {"fib_fcm_rsp_path", call<fib_hton_fcm_rsp_path>, call<fib_ntoh_fcm_rsp_path>},
    {"fib_fcl_rsp_path", call<fib_hton_fcl_rsp_path>, call<fib_ntoh_fcl_rsp_path>},
    {"fib_node", call<fib_hton_node>, call<fib_ntoh_node>},
    {"fib_port", call<fib_hton_port>, call<fib_ntoh_port>},
    {"fib_vsan", call<fib_hton_vsan>, call<fib_ntoh_vsan>},
    {"fib_vsan_update", call<fib_hton_vsan_update>, call<fib_ntoh_vsan_update>},
    {"fib_vsan_rewrite_update", call<fib_hton_vsan_rewrite_update>, call<fib_ntoh_vsan_rewrite_update>},
    {"fib_vsan_rewrite_path", call<fib_hton_vsan_rewrite_path>, call<fib_ntoh_vsan_rewrite_path>},
    {"fib_vsan_rewrite_rsp", call<fib_hton_vsan_rewrite_rsp>, call<fib_ntoh_vsan_rewrite_rsp>},
    {"rib_fib_fcu_lb_query", call<rib_fib_hton_fcu_lb_query>, call<rib_fib_ntoh_fcu_lb_query>},
    {"rib_fib_fcu_lb_rsp", call<rib_fib_hton_fcu_lb_rsp>, call<rib_fib_ntoh_fcu_lb_rsp>},
};

} // namespace

std::span<const exported_pair> exported_pairs() { return all_exported; }

} // namespace ribkit::witness
