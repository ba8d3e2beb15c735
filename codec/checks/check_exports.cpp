// The exported checks: a line for each message.
#include "codec/checks/check.h"
#include "codec/checks/checked_messages.h"

using namespace ribkit::codec;
using namespace ribkit::wire;

// Out of line: what an exported function adds is two small numbers.
[[gnu::noinline]] static uint32_t check_numbered(const void *message, uint32_t size, rib_check_report *report,
                                                 uint8_t plan, uint16_t name_at) {
    return check(core_checks::tables, plan, checked_names.text + name_at, message, size, report);
}

template <message_name Name> static uint32_t checked(const void *message, uint32_t size, rib_check_report *report) {
    constexpr size_t number = number_of(Name);
    constexpr auto name_at = static_cast<uint16_t>(size_of_names(number));
    return check_numbered(message, size, report, checked_messages[number].plan, name_at);
}

uint32_t rib_check_fclrt_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fclrt_update">(message, size, report);
}
uint32_t rib_check_fcmrt_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fcmrt_update">(message, size, report);
}
uint32_t rib_check_fcurt_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fcurt_update">(message, size, report);
}
uint32_t rib_check_fcurt(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fcurt">(message, size, report);
}
uint32_t rib_check_fclrt(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fclrt">(message, size, report);
}
uint32_t rib_check_fclrt_intf(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fclrt_intf">(message, size, report);
}
uint32_t rib_check_fcmrt(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fcmrt">(message, size, report);
}
uint32_t rib_check_fcurt_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fcurt_rsp">(message, size, report);
}
uint32_t rib_check_fclrt_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fclrt_rsp">(message, size, report);
}
uint32_t rib_check_fcmrt_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fcmrt_rsp">(message, size, report);
}
uint32_t rib_check_fclrt_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fclrt_query">(message, size, report);
}
uint32_t rib_check_fcurt_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fcurt_query">(message, size, report);
}
uint32_t rib_check_fcmrt_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fcmrt_query">(message, size, report);
}
uint32_t rib_check_lbl_route(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_lbl_route">(message, size, report);
}
uint32_t rib_check_ucast_route(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_ucast_route">(message, size, report);
}
uint32_t rib_check_mcast_route(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_mcast_route">(message, size, report);
}
uint32_t rib_check_topo(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_topo">(message, size, report);
}
uint32_t rib_check_sync_fcl(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_sync_fcl">(message, size, report);
}
uint32_t rib_check_sync_fcm(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_sync_fcm">(message, size, report);
}
uint32_t rib_check_sync_fcu(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_sync_fcu">(message, size, report);
}
uint32_t rib_check_sync_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_sync_query">(message, size, report);
}
uint32_t rib_check_sync_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_sync_info">(message, size, report);
}
uint32_t rib_check_verify(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_verify">(message, size, report);
}
uint32_t rib_check_reg_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_reg_query">(message, size, report);
}
uint32_t rib_check_dm_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_dm_query">(message, size, report);
}
uint32_t rib_check_sys_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_sys_query">(message, size, report);
}
uint32_t rib_check_db_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_db_query">(message, size, report);
}
uint32_t rib_check_in_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_in_query">(message, size, report);
}
uint32_t rib_check_test_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_test_info">(message, size, report);
}
uint32_t rib_check_node_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_node_query">(message, size, report);
}
uint32_t rib_check_test_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_test_query">(message, size, report);
}
uint32_t rib_check_register(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_register">(message, size, report);
}
uint32_t rib_check_fclrt_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fclrt_info">(message, size, report);
}
uint32_t rib_check_fcmrt_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fcmrt_info">(message, size, report);
}
uint32_t rib_check_fcurt_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fcurt_info">(message, size, report);
}
uint32_t rib_check_db_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_db_info">(message, size, report);
}
uint32_t rib_check_dm_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_dm_info">(message, size, report);
}
uint32_t rib_check_in_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_in_info">(message, size, report);
}
uint32_t rib_check_reg_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_reg_info">(message, size, report);
}
uint32_t rib_check_sys_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_sys_info">(message, size, report);
}
uint32_t rib_check_node_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_node_info">(message, size, report);
}
uint32_t rib_check_verf_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_verf_query">(message, size, report);
}
uint32_t rib_check_verf_info(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_verf_info">(message, size, report);
}
uint32_t fib_check_fcl_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcl_update">(message, size, report);
}
uint32_t fib_check_fcm_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcm_update">(message, size, report);
}
uint32_t fib_check_fcu_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcu_update">(message, size, report);
}
uint32_t fib_check_fcu_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcu_path">(message, size, report);
}
uint32_t fib_check_fcl_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcl_path">(message, size, report);
}
uint32_t fib_check_fcm_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcm_path">(message, size, report);
}
uint32_t fib_check_fcl_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcl_rsp">(message, size, report);
}
uint32_t fib_check_fcm_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcm_rsp">(message, size, report);
}
uint32_t fib_check_fcu_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcu_rsp">(message, size, report);
}
uint32_t fib_check_sync(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_sync">(message, size, report);
}
uint32_t fib_check_verf_fcu(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_verf_fcu">(message, size, report);
}
uint32_t fib_check_verf_fcm(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_verf_fcm">(message, size, report);
}
uint32_t fib_check_verf_fcl(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_verf_fcl">(message, size, report);
}
uint32_t fib_check_fcu_rsp_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcu_rsp_path">(message, size, report);
}
uint32_t fib_check_fcm_rsp_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcm_rsp_path">(message, size, report);
}
uint32_t fib_check_fcl_rsp_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_fcl_rsp_path">(message, size, report);
}
uint32_t fib_check_node(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_node">(message, size, report);
}
uint32_t fib_check_port(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_port">(message, size, report);
}
uint32_t fib_check_vsan(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_vsan">(message, size, report);
}
uint32_t fib_check_vsan_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_vsan_update">(message, size, report);
}
uint32_t fib_check_vsan_rewrite_update(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_vsan_rewrite_update">(message, size, report);
}
uint32_t fib_check_vsan_rewrite_path(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_vsan_rewrite_path">(message, size, report);
}
uint32_t fib_check_vsan_rewrite_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"fib_vsan_rewrite_rsp">(message, size, report);
}
uint32_t rib_fib_check_fcu_lb_query(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fib_fcu_lb_query">(message, size, report);
}
uint32_t rib_fib_check_fcu_lb_rsp(const void *message, uint32_t size, struct rib_check_report *report) {
    return checked<"rib_fib_fcu_lb_rsp">(message, size, report);
}
