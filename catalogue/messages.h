// One row a message: its name, its layout, its converters and its check, and what it has beside them: a size function,
// a trace, a display, a sentence on what its layout cannot say. Every other list of all messages is made from this one
// or compared with it by the compiler.
#pragma once

#include "catalogue/displays.h"
#include "catalogue/row.h"
#include "codec/messages/forms.h"
#include "codec/messages/snmp.h"
#include "fib_codec.h"
#include "rib_check.h"
#include "rib_codec.h"
#include "rib_trace.h"

namespace ribkit::catalogue {

/// New messages come last: inputs of fuzzers name a message by its number.
inline constexpr row messages[] = {
    message_of<wire::fclrt_update, rib_hton_fclrt_update, rib_ntoh_fclrt_update, rib_check_fclrt_update>(
        "rib_fclrt_update")
        .sized<rib_sizeof_fclrt_update>()
        .traced<rib_printf_fclrt_update>(),
    message_of<wire::fcmrt_update, rib_hton_fcmrt_update, rib_ntoh_fcmrt_update, rib_check_fcmrt_update>(
        "rib_fcmrt_update")
        .sized<rib_sizeof_fcmrt_update>()
        .traced<rib_printf_fcmrt_update>(),
    message_of<wire::fcurt_update, rib_hton_fcurt_update, rib_ntoh_fcurt_update, rib_check_fcurt_update>(
        "rib_fcurt_update")
        .sized<rib_sizeof_fcurt_update>()
        .traced<rib_printf_fcurt_update>(),
    message_of<wire::fcurt, rib_hton_fcurt, rib_ntoh_fcurt, rib_check_fcurt>("rib_fcurt").traced<rib_printf_fcurt>(),
    message_of<wire::fclrt, rib_hton_fclrt, rib_ntoh_fclrt, rib_check_fclrt>("rib_fclrt").traced<rib_printf_fclrt>(),
    message_of<wire::fclrt_intf, rib_hton_fclrt_intf, rib_ntoh_fclrt_intf, rib_check_fclrt_intf>("rib_fclrt_intf"),
    message_of<wire::fcmrt, rib_hton_fcmrt, rib_ntoh_fcmrt, rib_check_fcmrt>("rib_fcmrt").traced<rib_printf_fcmrt>(),
    message_of<wire::route_rsp, rib_hton_fcurt_rsp, rib_ntoh_fcurt_rsp, rib_check_fcurt_rsp>("rib_fcurt_rsp"),
    message_of<wire::route_rsp, rib_hton_fclrt_rsp, rib_ntoh_fclrt_rsp, rib_check_fclrt_rsp>("rib_fclrt_rsp"),
    message_of<wire::route_rsp, rib_hton_fcmrt_rsp, rib_ntoh_fcmrt_rsp, rib_check_fcmrt_rsp>("rib_fcmrt_rsp"),
    message_of<wire::fclrt_query, rib_hton_fclrt_query, rib_ntoh_fclrt_query, rib_check_fclrt_query>("rib_fclrt_query")
        .traced<rib_printf_fcl_query>(),
    message_of<wire::fcurt_query, rib_hton_fcurt_query, rib_ntoh_fcurt_query, rib_check_fcurt_query>("rib_fcurt_query")
        .traced<rib_printf_fcu_query>(),
    message_of<wire::fcmrt_query, rib_hton_fcmrt_query, rib_ntoh_fcmrt_query, rib_check_fcmrt_query>("rib_fcmrt_query")
        .traced<rib_printf_fcm_query>(),
    message_of<wire::lbl_route, rib_hton_lbl_route, rib_ntoh_lbl_route, rib_check_lbl_route>("rib_lbl_route")
        .shown<show_label_route>(),
    message_of<wire::ucast_route, rib_hton_ucast_route, rib_ntoh_ucast_route, rib_check_ucast_route>("rib_ucast_route")
        .shown<rib_show_fcu>(),
    message_of<wire::mcast_route, rib_hton_mcast_route, rib_ntoh_mcast_route, rib_check_mcast_route>("rib_mcast_route")
        .shown<rib_show_fcm>(),
    message_of<wire::topo, rib_hton_topo, rib_ntoh_topo, rib_check_topo>("rib_topo").shown<rib_show_fct>(),
    message_of<wire::sync_fcl, rib_hton_sync_fcl, rib_ntoh_sync_fcl, rib_check_sync_fcl>("rib_sync_fcl")
        .shown<rib_show_sync_fcl>(),
    message_of<wire::sync_fcm, rib_hton_sync_fcm, rib_ntoh_sync_fcm, rib_check_sync_fcm>("rib_sync_fcm")
        .shown<rib_show_sync_fcm>(),
    message_of<wire::sync_fcu, rib_hton_sync_fcu, rib_ntoh_sync_fcu, rib_check_sync_fcu>("rib_sync_fcu")
        .shown<rib_show_sync_fcu>(),
    message_of<wire::sync_query, rib_hton_sync_query, rib_ntoh_sync_query, rib_check_sync_query>("rib_sync_query"),
    message_of<wire::sync_info, rib_hton_sync_info, rib_ntoh_sync_info, rib_check_sync_info>("rib_sync_info"),
    message_of<wire::verify, rib_hton_verify, rib_ntoh_verify, rib_check_verify>("rib_verify")
        .traced<rib_printf_verf>(),
    message_of<wire::reg_query, rib_hton_reg_query, rib_ntoh_reg_query, rib_check_reg_query>(
        "rib_reg_query", "A receiver reads it as it arrived: rib_ntoh_reg_query converts nothing.")
        .traced<rib_printf_reg_query>(),
    message_of<wire::dm_query, rib_hton_dm_query, rib_ntoh_dm_query, rib_check_dm_query>("rib_dm_query")
        .traced<rib_printf_dm_query>(),
    message_of<wire::sys_query, rib_hton_sys_query, rib_ntoh_sys_query, rib_check_sys_query>("rib_sys_query")
        .traced<rib_printf_sys_query>(),
    message_of<wire::db_query, rib_hton_db_query, rib_ntoh_db_query, rib_check_db_query>("rib_db_query")
        .traced<rib_printf_db_query>(),
    message_of<wire::in_query, rib_hton_in_query, rib_ntoh_in_query, rib_check_in_query>("rib_in_query")
        .traced<rib_printf_in_query>(),
    message_of<wire::test_info, rib_hton_test_info, rib_ntoh_test_info, rib_check_test_info>("rib_test_info"),
    message_of<wire::node_query, rib_hton_node_query, rib_ntoh_node_query, rib_check_node_query>("rib_node_query")
        .traced<rib_printf_node_query>(),
    message_of<wire::test_query, rib_hton_test_query, rib_ntoh_test_query, rib_check_test_query>("rib_test_query")
        .traced<rib_printf_test_query>(),
    message_of<wire::registration, rib_hton_register, rib_ntoh_register, rib_check_register>("rib_register")
        .traced<rib_printf_reg>()
        .shown<rib_show_register>(),
    message_of<wire::fclrt_info, rib_hton_fclrt_info, rib_ntoh_fclrt_info, rib_check_fclrt_info>("rib_fclrt_info")
        .shown<show_each<wire::fclrt_info, "route", show_label_route>>(),
    message_of<wire::fcmrt_info, rib_hton_fcmrt_info, rib_ntoh_fcmrt_info, rib_check_fcmrt_info>("rib_fcmrt_info")
        .shown<show_each<wire::fcmrt_info, "route", rib_show_fcm>>(),
    message_of<wire::fcurt_info, rib_hton_fcurt_info, rib_ntoh_fcurt_info, rib_check_fcurt_info>("rib_fcurt_info")
        .shown<show_each<wire::fcurt_info, "route", rib_show_fcu>>(),
    message_of<wire::db_info, rib_hton_db_info, rib_ntoh_db_info, rib_check_db_info>("rib_db_info")
        .shown<show_databases>(),
    message_of<wire::dm_info, rib_hton_dm_info, rib_ntoh_dm_info, rib_check_dm_info>(
        "rib_dm_info", "rib_ntoh_dm_info converts the count that stands in its destination and nothing else; entries "
                       "are read as they arrived.")
        .shown<show_each<wire::dm_info, "vsan", rib_show_dm>>(),
    message_of<wire::in_info, rib_hton_in_info, rib_ntoh_in_info, rib_check_in_info>(
        "rib_in_info", "Behind the two words a body is carried unchanged: 24 bytes of kind 1, 192 of kind 2, none of "
                       "any other. rib_hton_in_info returns the kind.")
        .choosing(codec::in_info_body)
        .shown<show_internals>(),
    message_of<wire::reg_info, rib_hton_reg_info, rib_ntoh_reg_info, rib_check_reg_info>("rib_reg_info")
        .shown<show_each<wire::reg_info, "client", rib_show_register>>(),
    message_of<wire::sys_info, rib_hton_sys_info, rib_ntoh_sys_info, rib_check_sys_info>("rib_sys_info")
        .shown<show_each<wire::sys_info, "module", rib_show_sys_port>>(),
    message_of<wire::node, rib_hton_node_info, rib_ntoh_node_info, rib_check_node_info>("rib_node_info")
        .shown<fib_show_node>(),
    message_of<wire::verf_query, rib_hton_verf_query, rib_ntoh_verf_query, rib_check_verf_query>(
        "rib_verf_query",
        "The key is a verf_fcl_query where the low half of the type has a bit of "
        "0x1111, else a verf_fcm where it has one of 0x2222, else a verf_fcu; the rest of its room is not touched.")
        .choosing(codec::verf_query_key)
        .traced<rib_printf_verf_query>(),
    message_of<wire::verf_info, rib_hton_verf_info, rib_ntoh_verf_info, rib_check_verf_info>(
        "rib_verf_info", "n_key keys follow: verf_fcl where the low half of the type has a bit of 0x1111, else "
                         "verf_fcm where it has one of 0x2222, else verf_fcu.")
        .choosing(codec::verf_info_keys)
        .shown<show_verification>(),
    message_of<wire::fib_update, fib_hton_fcl_update, fib_ntoh_fcl_update, fib_check_fcl_update>("fib_fcl_update"),
    message_of<wire::fib_update, fib_hton_fcm_update, fib_ntoh_fcm_update, fib_check_fcm_update>("fib_fcm_update"),
    message_of<wire::fib_update, fib_hton_fcu_update, fib_ntoh_fcu_update, fib_check_fcu_update>("fib_fcu_update"),
    message_of<wire::fcu_path, fib_hton_fcu_path, fib_ntoh_fcu_path, fib_check_fcu_path>(
        "fib_fcu_path", "The kind is computed: on the wire a number (8 special, 6 well-known, 7 dd.ff.ff, 4 else), in "
                        "host order a flag (0x08000000 well-known, 0x01000000 special, 0x02000000 area or port mask, "
                        "0x04000000 else; a word whose low byte is 0 on the wire stays)."),
    message_of<wire::fcl_path, fib_hton_fcl_path, fib_ntoh_fcl_path, fib_check_fcl_path>("fib_fcl_path"),
    message_of<wire::fcm_path, fib_hton_fcm_path, fib_ntoh_fcm_path, fib_check_fcm_path>("fib_fcm_path"),
    message_of<wire::fib_rsp, fib_hton_fcl_rsp, fib_ntoh_fcl_rsp, fib_check_fcl_rsp>("fib_fcl_rsp"),
    message_of<wire::fib_rsp, fib_hton_fcm_rsp, fib_ntoh_fcm_rsp, fib_check_fcm_rsp>("fib_fcm_rsp"),
    message_of<wire::fib_rsp, fib_hton_fcu_rsp, fib_ntoh_fcu_rsp, fib_check_fcu_rsp>("fib_fcu_rsp"),
    message_of<wire::fib_sync, fib_hton_sync, fib_ntoh_sync, fib_check_sync>("fib_sync"),
    message_of<wire::verf_fcu, fib_hton_verf_fcu, fib_ntoh_verf_fcu, fib_check_verf_fcu>("fib_verf_fcu")
        .shown<fib_show_verf_fcu>(),
    message_of<wire::verf_fcm, fib_hton_verf_fcm, fib_ntoh_verf_fcm, fib_check_verf_fcm>("fib_verf_fcm")
        .shown<fib_show_verf_fcm>(),
    message_of<wire::verf_fcl, fib_hton_verf_fcl, fib_ntoh_verf_fcl, fib_check_verf_fcl>("fib_verf_fcl")
        .shown<fib_show_verf_fcl>(),
    message_of<wire::fcu_rsp_path, fib_hton_fcu_rsp_path, fib_ntoh_fcu_rsp_path, fib_check_fcu_rsp_path>(
        "fib_fcu_rsp_path")
        .shown<show_each<wire::fcu_rsp_path, "entry", fib_show_verf_fcu>>(),
    message_of<wire::fcm_rsp_path, fib_hton_fcm_rsp_path, fib_ntoh_fcm_rsp_path, fib_check_fcm_rsp_path>(
        "fib_fcm_rsp_path")
        .shown<show_each<wire::fcm_rsp_path, "entry", fib_show_verf_fcm>>(),
    message_of<wire::fcl_rsp_path, fib_hton_fcl_rsp_path, fib_ntoh_fcl_rsp_path, fib_check_fcl_rsp_path>(
        "fib_fcl_rsp_path")
        .shown<show_each<wire::fcl_rsp_path, "entry", fib_show_verf_fcl>>(),
    message_of<wire::node, fib_hton_node, fib_ntoh_node, fib_check_node>("fib_node").shown<fib_show_node>(),
    message_of<wire::port, fib_hton_port, fib_ntoh_port, fib_check_port>("fib_port").shown<fib_show_port>(),
    message_of<wire::vsan, fib_hton_vsan, fib_ntoh_vsan, fib_check_vsan>("fib_vsan").shown<fib_show_vsan>(),
    message_of<wire::vsan_update, fib_hton_vsan_update, fib_ntoh_vsan_update, fib_check_vsan_update>("fib_vsan_update")
        .shown<show_each<wire::vsan_update, "vsan", fib_show_vsan>>(),
    message_of<wire::vsan_rewrite_update, fib_hton_vsan_rewrite_update, fib_ntoh_vsan_rewrite_update,
               fib_check_vsan_rewrite_update>("fib_vsan_rewrite_update"),
    message_of<wire::vsan_rewrite_path, fib_hton_vsan_rewrite_path, fib_ntoh_vsan_rewrite_path,
               fib_check_vsan_rewrite_path>("fib_vsan_rewrite_path"),
    message_of<wire::vsan_rewrite_rsp, fib_hton_vsan_rewrite_rsp, fib_ntoh_vsan_rewrite_rsp,
               fib_check_vsan_rewrite_rsp>("fib_vsan_rewrite_rsp"),
    message_of<wire::fcu_lb_query, rib_fib_hton_fcu_lb_query, rib_fib_ntoh_fcu_lb_query, rib_fib_check_fcu_lb_query>(
        "rib_fib_fcu_lb_query"),
    message_of<wire::fcu_lb_rsp, rib_fib_hton_fcu_lb_rsp, rib_fib_ntoh_fcu_lb_rsp, rib_fib_check_fcu_lb_rsp>(
        "rib_fib_fcu_lb_rsp"),
};

/// What has a layout and no converter.
inline constexpr row forms[] = {
    form_of<wire::cmi_envelope>(
        "Content follows: a request has its operation code in front of it, an answer begins at 112."),
    form_of<wire::fib_state>().traced<rib_printf_fib_state>(),
    form_of<wire::vsan_query>().traced<rib_printf_vsan_query>(),
    form_of<wire::verf_fcl_query>("The label key of a rib_verf_query."),
    form_of<wire::in_ha>("The body of a rib_in_info of kind 1. Flags are true where they are 1.")
        .shown<rib_show_in_ha>(),
    form_of<wire::in_mem>("The body of a rib_in_info of kind 2.").shown<rib_show_in_mem>(),
    form_of<wire::sync_gbl>("The state of a synchronisation log.").shown<rib_show_sync_gbl>(),
    form_of<wire::fc_route_entry>(
        "A row of the SNMP route table, which fcRouteEntry_hton and fcRouteEntry_ntoh convert.")
        .shown<show_snmp_route>(),
    form_of<wire::fc_route_flow_stat_entry>(
        "A row of the SNMP flow statistics, which fcRouteFlowStatEntry_hton and fcRouteFlowStatEntry_ntoh convert."),
};

static_assert(has_every_kernel(messages), "a layout of all_layouts has no row");
static_assert(has_no_name_twice(messages), "two messages of one name");

} // namespace ribkit::catalogue
