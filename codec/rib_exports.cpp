// The exported converters of the RIB's messages: a line for each direction, which hands the message's layout to the
// converters of this processor.
#include "codec/kernels.h"
#include "rib_codec.h"

using namespace ribkit::codec;
using namespace ribkit::wire;

// What clients send to change a table, and the answer.
void rib_hton_fclrt_update(const void *src, void *dst) { to_network<fclrt_update>(src, dst); }
void rib_ntoh_fclrt_update(const void *src, void *dst) { to_host<fclrt_update>(src, dst); }
void rib_hton_fcmrt_update(const void *src, void *dst) { to_network<fcmrt_update>(src, dst); }
void rib_ntoh_fcmrt_update(const void *src, void *dst) { to_host<fcmrt_update>(src, dst); }
void rib_hton_fcurt_update(const void *src, void *dst) { to_network<fcurt_update>(src, dst); }
void rib_ntoh_fcurt_update(const void *src, void *dst) { to_host<fcurt_update>(src, dst); }
uint32_t rib_hton_fcurt(const void *src, void *dst) { return to_network<fcurt>(src, dst); }
uint32_t rib_ntoh_fcurt(const void *src, void *dst) { return to_host<fcurt>(src, dst); }
uint32_t rib_hton_fclrt(const void *src, void *dst) { return to_network<fclrt>(src, dst); }
uint32_t rib_ntoh_fclrt(const void *src, void *dst) { return to_host<fclrt>(src, dst); }
uint32_t rib_hton_fclrt_intf(const void *src, void *dst) { return to_network<fclrt_intf>(src, dst); }
uint32_t rib_ntoh_fclrt_intf(const void *src, void *dst) { return to_host<fclrt_intf>(src, dst); }
uint32_t rib_hton_fcmrt(const void *src, void *dst) { return to_network<fcmrt>(src, dst); }
uint32_t rib_ntoh_fcmrt(const void *src, void *dst) { return to_host<fcmrt>(src, dst); }
void rib_hton_fcurt_rsp(const void *src, void *dst) { to_network<route_rsp>(src, dst); }
void rib_ntoh_fcurt_rsp(const void *src, void *dst) { to_host<route_rsp>(src, dst); }
void rib_hton_fclrt_rsp(const void *src, void *dst) { to_network<route_rsp>(src, dst); }
void rib_ntoh_fclrt_rsp(const void *src, void *dst) { to_host<route_rsp>(src, dst); }
void rib_hton_fcmrt_rsp(const void *src, void *dst) { to_network<route_rsp>(src, dst); }
void rib_ntoh_fcmrt_rsp(const void *src, void *dst) { to_host<route_rsp>(src, dst); }

// Queries.
void rib_hton_fclrt_query(const void *src, void *dst) { to_network<fclrt_query>(src, dst); }
void rib_ntoh_fclrt_query(const void *src, void *dst) { to_host<fclrt_query>(src, dst); }
void rib_hton_fcurt_query(const void *src, void *dst) { to_network<fcurt_query>(src, dst); }
void rib_ntoh_fcurt_query(const void *src, void *dst) { to_host<fcurt_query>(src, dst); }
void rib_hton_fcmrt_query(const void *src, void *dst) { to_network<fcmrt_query>(src, dst); }
void rib_ntoh_fcmrt_query(const void *src, void *dst) { to_host<fcmrt_query>(src, dst); }

// Synchronisation.
uint32_t rib_hton_lbl_route(const void *src, void *dst) { return to_network<lbl_route>(src, dst); }
uint32_t rib_ntoh_lbl_route(const void *src, void *dst) { return to_host<lbl_route>(src, dst); }
void rib_hton_ucast_route(const void *src, void *dst) { to_network<ucast_route>(src, dst); }
void rib_ntoh_ucast_route(const void *src, void *dst) { to_host<ucast_route>(src, dst); }
void rib_hton_mcast_route(const void *src, void *dst) { to_network<mcast_route>(src, dst); }
void rib_ntoh_mcast_route(const void *src, void *dst) { to_host<mcast_route>(src, dst); }
void rib_hton_topo(const void *src, void *dst) { to_network<topo>(src, dst); }
void rib_ntoh_topo(const void *src, void *dst) { to_host<topo>(src, dst); }
void rib_hton_sync_fcl(const void *src, void *dst) { to_network<sync_fcl>(src, dst); }
void rib_ntoh_sync_fcl(const void *src, void *dst) { to_host<sync_fcl>(src, dst); }
void rib_hton_sync_fcm(const void *src, void *dst) { to_network<sync_fcm>(src, dst); }
void rib_ntoh_sync_fcm(const void *src, void *dst) { to_host<sync_fcm>(src, dst); }
void rib_hton_sync_fcu(const void *src, void *dst) { to_network<sync_fcu>(src, dst); }
void rib_ntoh_sync_fcu(const void *src, void *dst) { to_host<sync_fcu>(src, dst); }
void rib_hton_sync_query(const void *src, void *dst) { to_network<sync_query>(src, dst); }
void rib_ntoh_sync_query(const void *src, void *dst) { to_host<sync_query>(src, dst); }
void rib_hton_sync_info(const void *src, void *dst) { to_network<sync_info>(src, dst); }
void rib_ntoh_sync_info(const void *src, void *dst) { to_host<sync_info>(src, dst); }

// Information, registration and verification.
void rib_hton_verify(const void *src, void *dst) { to_network<verify>(src, dst); }
void rib_ntoh_verify(const void *src, void *dst) { to_host<verify>(src, dst); }
void rib_hton_reg_query(const void *src, void *dst) { to_network<reg_query>(src, dst); }
void rib_ntoh_reg_query(const void *src, void *dst) { to_host<reg_query>(src, dst); }
void rib_hton_dm_query(const void *src, void *dst) { to_network<dm_query>(src, dst); }
void rib_ntoh_dm_query(const void *src, void *dst) { to_host<dm_query>(src, dst); }
void rib_hton_sys_query(const void *src, void *dst) { to_network<sys_query>(src, dst); }
void rib_ntoh_sys_query(const void *src, void *dst) { to_host<sys_query>(src, dst); }
void rib_hton_db_query(const void *src, void *dst) { to_network<db_query>(src, dst); }
void rib_ntoh_db_query(const void *src, void *dst) { to_host<db_query>(src, dst); }
void rib_hton_in_query(const void *src, void *dst) { to_network<in_query>(src, dst); }
void rib_ntoh_in_query(const void *src, void *dst) { to_host<in_query>(src, dst); }
void rib_hton_test_info(const void *src, void *dst) { to_network<test_info>(src, dst); }
void rib_ntoh_test_info(const void *src, void *dst) { to_host<test_info>(src, dst); }
void rib_hton_node_query(const void *src, void *dst) { to_network<node_query>(src, dst); }
void rib_ntoh_node_query(const void *src, void *dst) { to_host<node_query>(src, dst); }
void rib_hton_test_query(const void *src, void *dst) { to_network<test_query>(src, dst); }
void rib_ntoh_test_query(const void *src, void *dst) { to_host<test_query>(src, dst); }
void rib_hton_register(const void *src, void *dst) { to_network<registration>(src, dst); }
void rib_ntoh_register(const void *src, void *dst) { to_host<registration>(src, dst); }
void rib_hton_fclrt_info(const void *src, void *dst) { to_network<fclrt_info>(src, dst); }
void rib_ntoh_fclrt_info(const void *src, void *dst) { to_host<fclrt_info>(src, dst); }
void rib_hton_fcmrt_info(const void *src, void *dst) { to_network<fcmrt_info>(src, dst); }
void rib_ntoh_fcmrt_info(const void *src, void *dst) { to_host<fcmrt_info>(src, dst); }
void rib_hton_fcurt_info(const void *src, void *dst) { to_network<fcurt_info>(src, dst); }
void rib_ntoh_fcurt_info(const void *src, void *dst) { to_host<fcurt_info>(src, dst); }
void rib_hton_db_info(const void *src, void *dst) { to_network<db_info>(src, dst); }
void rib_ntoh_db_info(const void *src, void *dst) { to_host<db_info>(src, dst); }
void rib_hton_dm_info(const void *src, void *dst) { to_network<dm_info>(src, dst); }
void rib_ntoh_dm_info(const void *src, void *dst) { to_host<dm_info>(src, dst); }
uint32_t rib_hton_in_info(const void *src, void *dst) { return to_network<in_info>(src, dst); }
void rib_ntoh_in_info(const void *src, void *dst) { to_host<in_info>(src, dst); }
void rib_hton_reg_info(const void *src, void *dst) { to_network<reg_info>(src, dst); }
void rib_ntoh_reg_info(const void *src, void *dst) { to_host<reg_info>(src, dst); }
void rib_hton_sys_info(const void *src, void *dst) { to_network<sys_info>(src, dst); }
void rib_ntoh_sys_info(const void *src, void *dst) { to_host<sys_info>(src, dst); }
void rib_hton_node_info(const void *src, void *dst) { to_network<node>(src, dst); }
void rib_ntoh_node_info(const void *src, void *dst) { to_host<node>(src, dst); }
void rib_hton_verf_query(const void *src, void *dst) { to_network<verf_query>(src, dst); }
void rib_ntoh_verf_query(const void *src, void *dst) { to_host<verf_query>(src, dst); }
void rib_hton_verf_info(const void *src, void *dst) { to_network<verf_info>(src, dst); }
void rib_ntoh_verf_info(const void *src, void *dst) { to_host<verf_info>(src, dst); }
