// The exported checks: a line for each message.
#include "codec/check.h"

#include "codec/messages/info.h"
#include "codec/messages/query.h"
#include "codec/messages/route.h"

using namespace ribkit;
using namespace ribkit::wire;

uint32_t rib_check_fclrt_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fclrt_update, "rib_fclrt_update", message, size, report);
}
uint32_t rib_check_fcmrt_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcmrt_update, "rib_fcmrt_update", message, size, report);
}
uint32_t rib_check_fcurt_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcurt_update, "rib_fcurt_update", message, size, report);
}
uint32_t rib_check_fcurt(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcurt, "rib_fcurt", message, size, report);
}
uint32_t rib_check_fclrt(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fclrt, "rib_fclrt", message, size, report);
}
uint32_t rib_check_fclrt_intf(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fclrt_intf, "rib_fclrt_intf", message, size, report);
}
uint32_t rib_check_fcmrt(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcmrt, "rib_fcmrt", message, size, report);
}
uint32_t rib_check_fcurt_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(route_rsp, "rib_fcurt_rsp", message, size, report);
}
uint32_t rib_check_fclrt_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(route_rsp, "rib_fclrt_rsp", message, size, report);
}
uint32_t rib_check_fcmrt_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(route_rsp, "rib_fcmrt_rsp", message, size, report);
}
uint32_t rib_check_fclrt_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fclrt_query, "rib_fclrt_query", message, size, report);
}
uint32_t rib_check_fcurt_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcurt_query, "rib_fcurt_query", message, size, report);
}
uint32_t rib_check_fcmrt_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcmrt_query, "rib_fcmrt_query", message, size, report);
}
uint32_t rib_check_lbl_route(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(lbl_route, "rib_lbl_route", message, size, report);
}
uint32_t rib_check_ucast_route(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(ucast_route, "rib_ucast_route", message, size, report);
}
uint32_t rib_check_mcast_route(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(mcast_route, "rib_mcast_route", message, size, report);
}
uint32_t rib_check_topo(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(topo, "rib_topo", message, size, report);
}
uint32_t rib_check_sync_fcl(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(sync_fcl, "rib_sync_fcl", message, size, report);
}
uint32_t rib_check_sync_fcm(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(sync_fcm, "rib_sync_fcm", message, size, report);
}
uint32_t rib_check_sync_fcu(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(sync_fcu, "rib_sync_fcu", message, size, report);
}
uint32_t rib_check_sync_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(sync_query, "rib_sync_query", message, size, report);
}
uint32_t rib_check_sync_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(sync_info, "rib_sync_info", message, size, report);
}
uint32_t rib_check_verify(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(verify, "rib_verify", message, size, report);
}
uint32_t rib_check_reg_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(reg_query, "rib_reg_query", message, size, report);
}
uint32_t rib_check_dm_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(state_query, "rib_dm_query", message, size, report);
}
uint32_t rib_check_sys_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(state_query, "rib_sys_query", message, size, report);
}
uint32_t rib_check_db_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(state_query, "rib_db_query", message, size, report);
}
uint32_t rib_check_in_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(state_query, "rib_in_query", message, size, report);
}
uint32_t rib_check_test_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(test_info, "rib_test_info", message, size, report);
}
uint32_t rib_check_node_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(node_query, "rib_node_query", message, size, report);
}
uint32_t rib_check_test_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(test_query, "rib_test_query", message, size, report);
}
uint32_t rib_check_register(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(registration, "rib_register", message, size, report);
}
uint32_t rib_check_fclrt_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fclrt_info, "rib_fclrt_info", message, size, report);
}
uint32_t rib_check_fcmrt_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcmrt_info, "rib_fcmrt_info", message, size, report);
}
uint32_t rib_check_fcurt_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcurt_info, "rib_fcurt_info", message, size, report);
}
uint32_t rib_check_db_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(db_info, "rib_db_info", message, size, report);
}
uint32_t rib_check_dm_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(dm_info, "rib_dm_info", message, size, report);
}
uint32_t rib_check_in_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(in_info, "rib_in_info", message, size, report);
}
uint32_t rib_check_reg_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(reg_info, "rib_reg_info", message, size, report);
}
uint32_t rib_check_sys_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(sys_info, "rib_sys_info", message, size, report);
}
uint32_t rib_check_node_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(node, "rib_node_info", message, size, report);
}
uint32_t rib_check_verf_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(verf_query, "rib_verf_query", message, size, report);
}
uint32_t rib_check_verf_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(verf_info, "rib_verf_info", message, size, report);
}
uint32_t fib_check_fcl_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fib_update, "fib_fcl_update", message, size, report);
}
uint32_t fib_check_fcm_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fib_update, "fib_fcm_update", message, size, report);
}
uint32_t fib_check_fcu_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fib_update, "fib_fcu_update", message, size, report);
}
uint32_t fib_check_fcu_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcu_path, "fib_fcu_path", message, size, report);
}
uint32_t fib_check_fcl_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcl_path, "fib_fcl_path", message, size, report);
}
uint32_t fib_check_fcm_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcm_path, "fib_fcm_path", message, size, report);
}
uint32_t fib_check_fcl_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fib_rsp, "fib_fcl_rsp", message, size, report);
}
uint32_t fib_check_fcm_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fib_rsp, "fib_fcm_rsp", message, size, report);
}
uint32_t fib_check_fcu_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fib_rsp, "fib_fcu_rsp", message, size, report);
}
uint32_t fib_check_sync(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fib_sync, "fib_sync", message, size, report);
}
uint32_t fib_check_verf_fcu(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(verf_fcu, "fib_verf_fcu", message, size, report);
}
uint32_t fib_check_verf_fcm(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(verf_fcm, "fib_verf_fcm", message, size, report);
}
uint32_t fib_check_verf_fcl(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(verf_fcl, "fib_verf_fcl", message, size, report);
}
uint32_t fib_check_fcu_rsp_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcu_rsp_path, "fib_fcu_rsp_path", message, size, report);
}
uint32_t fib_check_fcm_rsp_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcm_rsp_path, "fib_fcm_rsp_path", message, size, report);
}
uint32_t fib_check_fcl_rsp_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcl_rsp_path, "fib_fcl_rsp_path", message, size, report);
}
uint32_t fib_check_node(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(node, "fib_node", message, size, report);
}
uint32_t fib_check_port(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(port, "fib_port", message, size, report);
}
uint32_t fib_check_vsan(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(vsan, "fib_vsan", message, size, report);
}
uint32_t fib_check_vsan_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(vsan_update, "fib_vsan_update", message, size, report);
}
uint32_t fib_check_vsan_rewrite_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(vsan_rewrite_update, "fib_vsan_rewrite_update", message, size, report);
}
uint32_t fib_check_vsan_rewrite_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(vsan_rewrite_path, "fib_vsan_rewrite_path", message, size, report);
}
uint32_t fib_check_vsan_rewrite_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(vsan_rewrite_rsp, "fib_vsan_rewrite_rsp", message, size, report);
}
uint32_t rib_fib_check_fcu_lb_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcu_lb_query, "rib_fib_fcu_lb_query", message, size, report);
}
uint32_t rib_fib_check_fcu_lb_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return check(fcu_lb_rsp, "rib_fib_fcu_lb_rsp", message, size, report);
}
