// The exported converters of the RIB's messages: a line for each direction, which hands the message's layout to the
// converters of this processor.
#include "codec/kernels.h"
#include "rib_codec.h"

using namespace ribkit::codec;
using namespace ribkit::wire;

// What clients send to change a table, and the answer.
void rib_hton_fclrt_update(const void *src, void *dst) { send<fclrt_update>(src, dst); }
void rib_ntoh_fclrt_update(const void *src, void *dst) { receive<fclrt_update>(src, dst); }
void rib_hton_fcmrt_update(const void *src, void *dst) { send<fcmrt_update>(src, dst); }
void rib_ntoh_fcmrt_update(const void *src, void *dst) { receive<fcmrt_update>(src, dst); }
void rib_hton_fcurt_update(const void *src, void *dst) { send<fcurt_update>(src, dst); }
void rib_ntoh_fcurt_update(const void *src, void *dst) { receive<fcurt_update>(src, dst); }
uint32_t rib_hton_fcurt(const void *src, void *dst) { return send<fcurt>(src, dst); }
uint32_t rib_ntoh_fcurt(const void *src, void *dst) { return receive<fcurt>(src, dst); }
uint32_t rib_hton_fclrt(const void *src, void *dst) { return send<fclrt>(src, dst); }
uint32_t rib_ntoh_fclrt(const void *src, void *dst) { return receive<fclrt>(src, dst); }
uint32_t rib_hton_fclrt_intf(const void *src, void *dst) { return send<fclrt_intf>(src, dst); }
uint32_t rib_ntoh_fclrt_intf(const void *src, void *dst) { return receive<fclrt_intf>(src, dst); }
uint32_t rib_hton_fcmrt(const void *src, void *dst) { return send<fcmrt>(src, dst); }
uint32_t rib_ntoh_fcmrt(const void *src, void *dst) { return receive<fcmrt>(src, dst); }
void rib_hton_fcurt_rsp(const void *src, void *dst) { send<route_rsp>(src, dst); }
void rib_ntoh_fcurt_rsp(const void *src, void *dst) { receive<route_rsp>(src, dst); }
void rib_hton_fclrt_rsp(const void *src, void *dst) { send<route_rsp>(src, dst); }
void rib_ntoh_fclrt_rsp(const void *src, void *dst) { receive<route_rsp>(src, dst); }
void rib_hton_fcmrt_rsp(const void *src, void *dst) { send<route_rsp>(src, dst); }
void rib_ntoh_fcmrt_rsp(const void *src, void *dst) { receive<route_rsp>(src, dst); }

// Queries.
void rib_hton_fclrt_query(const void *src, void *dst) { send<fclrt_query>(src, dst); }
void rib_ntoh_fclrt_query(const void *src, void *dst) { receive<fclrt_query>(src, dst); }
void rib_hton_fcurt_query(const void *src, void *dst) { send<fcurt_query>(src, dst); }
void rib_ntoh_fcurt_query(const void *src, void *dst) { receive<fcurt_query>(src, dst); }
void rib_hton_fcmrt_query(const void *src, void *dst) { send<fcmrt_query>(src, dst); }
void rib_ntoh_fcmrt_query(const void *src, void *dst) { receive<fcmrt_query>(src, dst); }

// Synchronisation.
uint32_t rib_hton_lbl_route(const void *src, void *dst) { return send<lbl_route>(src, dst); }
uint32_t rib_ntoh_lbl_route(const void *src, void *dst) { return receive<lbl_route>(src, dst); }
void rib_hton_ucast_route(const void *src, void *dst) { send<ucast_route>(src, dst); }
void rib_ntoh_ucast_route(const void *src, void *dst) { receive<ucast_route>(src, dst); }
void rib_hton_mcast_route(const void *src, void *dst) { send<mcast_route>(src, dst); }
void rib_ntoh_mcast_route(const void *src, void *dst) { receive<mcast_route>(src, dst); }
void rib_hton_topo(const void *src, void *dst) { send<topo>(src, dst); }
void rib_ntoh_topo(const void *src, void *dst) { receive<topo>(src, dst); }
void rib_hton_sync_fcl(const void *src, void *dst) { send<sync_fcl>(src, dst); }
void rib_ntoh_sync_fcl(const void *src, void *dst) { receive<sync_fcl>(src, dst); }
void rib_hton_sync_fcm(const void *src, void *dst) { send<sync_fcm>(src, dst); }
void rib_ntoh_sync_fcm(const void *src, void *dst) { receive<sync_fcm>(src, dst); }
void rib_hton_sync_fcu(const void *src, void *dst) { send<sync_fcu>(src, dst); }
void rib_ntoh_sync_fcu(const void *src, void *dst) { receive<sync_fcu>(src, dst); }
void rib_hton_sync_query(const void *src, void *dst) { send<sync_query>(src, dst); }
void rib_ntoh_sync_query(const void *src, void *dst) { receive<sync_query>(src, dst); }
void rib_hton_sync_info(const void *src, void *dst) { send<sync_info>(src, dst); }
void rib_ntoh_sync_info(const void *src, void *dst) { receive<sync_info>(src, dst); }

// Information, registration and verification.
void rib_hton_verify(const void *src, void *dst) { send<verify>(src, dst); }
void rib_ntoh_verify(const void *src, void *dst) { receive<verify>(src, dst); }
void rib_hton_reg_query(const void *src, void *dst) { send<reg_query>(src, dst); }
void rib_ntoh_reg_query(const void *src, void *dst) { receive<reg_query>(src, dst); }
void rib_hton_dm_query(const void *src, void *dst) { send<dm_query>(src, dst); }
void rib_ntoh_dm_query(const void *src, void *dst) { receive<dm_query>(src, dst); }
void rib_hton_sys_query(const void *src, void *dst) { send<sys_query>(src, dst); }
void rib_ntoh_sys_query(const void *src, void *dst) { receive<sys_query>(src, dst); }
void rib_hton_db_query(const void *src, void *dst) { send<db_query>(src, dst); }
void rib_ntoh_db_query(const void *src, void *dst) { receive<db_query>(src, dst); }
void rib_hton_in_query(const void *src, void *dst) { send<in_query>(src, dst); }
void rib_ntoh_in_query(const void *src, void *dst) { receive<in_query>(src, dst); }
void rib_hton_test_info(const void *src, void *dst) { send<test_info>(src, dst); }
void rib_ntoh_test_info(const void *src, void *dst) { receive<test_info>(src, dst); }
void rib_hton_node_query(const void *src, void *dst) { send<node_query>(src, dst); }
void rib_ntoh_node_query(const void *src, void *dst) { receive<node_query>(src, dst); }
void rib_hton_test_query(const void *src, void *dst) { send<test_query>(src, dst); }
void rib_ntoh_test_query(const void *src, void *dst) { receive<test_query>(src, dst); }
void rib_hton_register(const void *src, void *dst) { send<registration>(src, dst); }
void rib_ntoh_register(const void *src, void *dst) { receive<registration>(src, dst); }
void rib_hton_fclrt_info(const void *src, void *dst) { send<fclrt_info>(src, dst); }
void rib_ntoh_fclrt_info(const void *src, void *dst) { receive<fclrt_info>(src, dst); }
void rib_hton_fcmrt_info(const void *src, void *dst) { send<fcmrt_info>(src, dst); }
void rib_ntoh_fcmrt_info(const void *src, void *dst) { receive<fcmrt_info>(src, dst); }
void rib_hton_fcurt_info(const void *src, void *dst) { send<fcurt_info>(src, dst); }
void rib_ntoh_fcurt_info(const void *src, void *dst) { receive<fcurt_info>(src, dst); }
void rib_hton_db_info(const void *src, void *dst) { send<db_info>(src, dst); }
void rib_ntoh_db_info(const void *src, void *dst) { receive<db_info>(src, dst); }
void rib_hton_dm_info(const void *src, void *dst) { send<dm_info>(src, dst); }
void rib_ntoh_dm_info(const void *src, void *dst) { receive<dm_info>(src, dst); }
uint32_t rib_hton_in_info(const void *src, void *dst) { return send<in_info>(src, dst); }
void rib_ntoh_in_info(const void *src, void *dst) { receive<in_info>(src, dst); }
void rib_hton_reg_info(const void *src, void *dst) { send<reg_info>(src, dst); }
void rib_ntoh_reg_info(const void *src, void *dst) { receive<reg_info>(src, dst); }
void rib_hton_sys_info(const void *src, void *dst) { send<sys_info>(src, dst); }
void rib_ntoh_sys_info(const void *src, void *dst) { receive<sys_info>(src, dst); }
void rib_hton_node_info(const void *src, void *dst) { send<node>(src, dst); }
void rib_ntoh_node_info(const void *src, void *dst) { receive<node>(src, dst); }
void rib_hton_verf_query(const void *src, void *dst) { send<verf_query>(src, dst); }
void rib_ntoh_verf_query(const void *src, void *dst) { receive<verf_query>(src, dst); }
void rib_hton_verf_info(const void *src, void *dst) { send<verf_info>(src, dst); }
void rib_ntoh_verf_info(const void *src, void *dst) { receive<verf_info>(src, dst); }
