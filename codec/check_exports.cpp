// The exported checks: a line for each message.
#include "codec/check.h"
#include "codec/check_core.h"

using namespace ribkit::codec;
using namespace ribkit::wire;

template <const layout &L>
static uint32_t checked_as(const char *name, const void *message, uint32_t size, rib_check_report *report) {
    return check(core_checks::tables, core_checks::plan<L>(), name, message, size, report);
}

uint32_t rib_check_fclrt_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fclrt_update>("rib_fclrt_update", message, size, report);
}
uint32_t rib_check_fcmrt_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcmrt_update>("rib_fcmrt_update", message, size, report);
}
uint32_t rib_check_fcurt_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcurt_update>("rib_fcurt_update", message, size, report);
}
uint32_t rib_check_fcurt(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcurt>("rib_fcurt", message, size, report);
}
uint32_t rib_check_fclrt(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fclrt>("rib_fclrt", message, size, report);
}
uint32_t rib_check_fclrt_intf(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fclrt_intf>("rib_fclrt_intf", message, size, report);
}
uint32_t rib_check_fcmrt(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcmrt>("rib_fcmrt", message, size, report);
}
uint32_t rib_check_fcurt_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<route_rsp>("rib_fcurt_rsp", message, size, report);
}
uint32_t rib_check_fclrt_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<route_rsp>("rib_fclrt_rsp", message, size, report);
}
uint32_t rib_check_fcmrt_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<route_rsp>("rib_fcmrt_rsp", message, size, report);
}
uint32_t rib_check_fclrt_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fclrt_query>("rib_fclrt_query", message, size, report);
}
uint32_t rib_check_fcurt_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcurt_query>("rib_fcurt_query", message, size, report);
}
uint32_t rib_check_fcmrt_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcmrt_query>("rib_fcmrt_query", message, size, report);
}
uint32_t rib_check_lbl_route(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<lbl_route>("rib_lbl_route", message, size, report);
}
uint32_t rib_check_ucast_route(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<ucast_route>("rib_ucast_route", message, size, report);
}
uint32_t rib_check_mcast_route(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<mcast_route>("rib_mcast_route", message, size, report);
}
uint32_t rib_check_topo(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<topo>("rib_topo", message, size, report);
}
uint32_t rib_check_sync_fcl(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<sync_fcl>("rib_sync_fcl", message, size, report);
}
uint32_t rib_check_sync_fcm(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<sync_fcm>("rib_sync_fcm", message, size, report);
}
uint32_t rib_check_sync_fcu(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<sync_fcu>("rib_sync_fcu", message, size, report);
}
uint32_t rib_check_sync_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<sync_query>("rib_sync_query", message, size, report);
}
uint32_t rib_check_sync_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<sync_info>("rib_sync_info", message, size, report);
}
uint32_t rib_check_verify(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<verify>("rib_verify", message, size, report);
}
uint32_t rib_check_reg_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<reg_query>("rib_reg_query", message, size, report);
}
uint32_t rib_check_dm_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<dm_query>("rib_dm_query", message, size, report);
}
uint32_t rib_check_sys_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<sys_query>("rib_sys_query", message, size, report);
}
uint32_t rib_check_db_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<db_query>("rib_db_query", message, size, report);
}
uint32_t rib_check_in_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<in_query>("rib_in_query", message, size, report);
}
uint32_t rib_check_test_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<test_info>("rib_test_info", message, size, report);
}
uint32_t rib_check_node_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<node_query>("rib_node_query", message, size, report);
}
uint32_t rib_check_test_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<test_query>("rib_test_query", message, size, report);
}
uint32_t rib_check_register(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<registration>("rib_register", message, size, report);
}
uint32_t rib_check_fclrt_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fclrt_info>("rib_fclrt_info", message, size, report);
}
uint32_t rib_check_fcmrt_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcmrt_info>("rib_fcmrt_info", message, size, report);
}
uint32_t rib_check_fcurt_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcurt_info>("rib_fcurt_info", message, size, report);
}
uint32_t rib_check_db_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<db_info>("rib_db_info", message, size, report);
}
uint32_t rib_check_dm_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<dm_info>("rib_dm_info", message, size, report);
}
uint32_t rib_check_in_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<in_info>("rib_in_info", message, size, report);
}
uint32_t rib_check_reg_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<reg_info>("rib_reg_info", message, size, report);
}
uint32_t rib_check_sys_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<sys_info>("rib_sys_info", message, size, report);
}
uint32_t rib_check_node_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<node>("rib_node_info", message, size, report);
}
uint32_t rib_check_verf_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<verf_query>("rib_verf_query", message, size, report);
}
uint32_t rib_check_verf_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<verf_info>("rib_verf_info", message, size, report);
}
uint32_t fib_check_fcl_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fib_update>("fib_fcl_update", message, size, report);
}
uint32_t fib_check_fcm_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fib_update>("fib_fcm_update", message, size, report);
}
uint32_t fib_check_fcu_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fib_update>("fib_fcu_update", message, size, report);
}
uint32_t fib_check_fcu_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcu_path>("fib_fcu_path", message, size, report);
}
uint32_t fib_check_fcl_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcl_path>("fib_fcl_path", message, size, report);
}
uint32_t fib_check_fcm_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcm_path>("fib_fcm_path", message, size, report);
}
uint32_t fib_check_fcl_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fib_rsp>("fib_fcl_rsp", message, size, report);
}
uint32_t fib_check_fcm_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fib_rsp>("fib_fcm_rsp", message, size, report);
}
uint32_t fib_check_fcu_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fib_rsp>("fib_fcu_rsp", message, size, report);
}
uint32_t fib_check_sync(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fib_sync>("fib_sync", message, size, report);
}
uint32_t fib_check_verf_fcu(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<verf_fcu>("fib_verf_fcu", message, size, report);
}
uint32_t fib_check_verf_fcm(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<verf_fcm>("fib_verf_fcm", message, size, report);
}
uint32_t fib_check_verf_fcl(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<verf_fcl>("fib_verf_fcl", message, size, report);
}
uint32_t fib_check_fcu_rsp_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcu_rsp_path>("fib_fcu_rsp_path", message, size, report);
}
uint32_t fib_check_fcm_rsp_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcm_rsp_path>("fib_fcm_rsp_path", message, size, report);
}
uint32_t fib_check_fcl_rsp_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcl_rsp_path>("fib_fcl_rsp_path", message, size, report);
}
uint32_t fib_check_node(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<node>("fib_node", message, size, report);
}
uint32_t fib_check_port(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<port>("fib_port", message, size, report);
}
uint32_t fib_check_vsan(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<vsan>("fib_vsan", message, size, report);
}
uint32_t fib_check_vsan_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<vsan_update>("fib_vsan_update", message, size, report);
}
uint32_t fib_check_vsan_rewrite_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<vsan_rewrite_update>("fib_vsan_rewrite_update", message, size, report);
}
uint32_t fib_check_vsan_rewrite_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<vsan_rewrite_path>("fib_vsan_rewrite_path", message, size, report);
}
uint32_t fib_check_vsan_rewrite_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<vsan_rewrite_rsp>("fib_vsan_rewrite_rsp", message, size, report);
}
uint32_t rib_fib_check_fcu_lb_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcu_lb_query>("rib_fib_fcu_lb_query", message, size, report);
}
uint32_t rib_fib_check_fcu_lb_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked_as<fcu_lb_rsp>("rib_fib_fcu_lb_rsp", message, size, report);
}
