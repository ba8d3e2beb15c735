// The exported converters of the FIB's messages: a line for each direction.
#include "codec/kernels.h"
#include "fib_codec.h"

using namespace ribkit::codec;
using namespace ribkit::wire;

// Updates and paths.
void fib_hton_fcl_update(const void *src, void *dst) { to_network<fib_update>(src, dst); }
void fib_ntoh_fcl_update(const void *src, void *dst) { to_host<fib_update>(src, dst); }
void fib_hton_fcm_update(const void *src, void *dst) { to_network<fib_update>(src, dst); }
void fib_ntoh_fcm_update(const void *src, void *dst) { to_host<fib_update>(src, dst); }
void fib_hton_fcu_update(const void *src, void *dst) { to_network<fib_update>(src, dst); }
void fib_ntoh_fcu_update(const void *src, void *dst) { to_host<fib_update>(src, dst); }
void fib_hton_fcu_path(const void *src, void *dst) { to_network<fcu_path>(src, dst); }
void fib_ntoh_fcu_path(const void *src, void *dst) { to_host<fcu_path>(src, dst); }
void fib_hton_fcl_path(const void *src, void *dst) { to_network<fcl_path>(src, dst); }
void fib_ntoh_fcl_path(const void *src, void *dst) { to_host<fcl_path>(src, dst); }
void fib_hton_fcm_path(const void *src, void *dst) { to_network<fcm_path>(src, dst); }
void fib_ntoh_fcm_path(const void *src, void *dst) { to_host<fcm_path>(src, dst); }

// Responses, synchronisation, verification.
void fib_hton_fcl_rsp(const void *src, void *dst) { to_network<fib_rsp>(src, dst); }
void fib_ntoh_fcl_rsp(const void *src, void *dst) { to_host<fib_rsp>(src, dst); }
void fib_hton_fcm_rsp(const void *src, void *dst) { to_network<fib_rsp>(src, dst); }
void fib_ntoh_fcm_rsp(const void *src, void *dst) { to_host<fib_rsp>(src, dst); }
void fib_hton_fcu_rsp(const void *src, void *dst) { to_network<fib_rsp>(src, dst); }
void fib_ntoh_fcu_rsp(const void *src, void *dst) { to_host<fib_rsp>(src, dst); }
void fib_hton_sync(const void *src, void *dst) { to_network<fib_sync>(src, dst); }
void fib_ntoh_sync(const void *src, void *dst) { to_host<fib_sync>(src, dst); }
void fib_hton_verf_fcu(const void *src, void *dst) { to_network<verf_fcu>(src, dst); }
void fib_ntoh_verf_fcu(const void *src, void *dst) { to_host<verf_fcu>(src, dst); }
void fib_hton_verf_fcm(const void *src, void *dst) { to_network<verf_fcm>(src, dst); }
void fib_ntoh_verf_fcm(const void *src, void *dst) { to_host<verf_fcm>(src, dst); }
void fib_hton_verf_fcl(const void *src, void *dst) { to_network<verf_fcl>(src, dst); }
void fib_ntoh_verf_fcl(const void *src, void *dst) { to_host<verf_fcl>(src, dst); }
void fib_hton_fcu_rsp_path(const void *src, void *dst) { to_network<fcu_rsp_path>(src, dst); }
void fib_ntoh_fcu_rsp_path(const void *src, void *dst) { to_host<fcu_rsp_path>(src, dst); }
void fib_hton_fcm_rsp_path(const void *src, void *dst) { to_network<fcm_rsp_path>(src, dst); }
void fib_ntoh_fcm_rsp_path(const void *src, void *dst) { to_host<fcm_rsp_path>(src, dst); }
void fib_hton_fcl_rsp_path(const void *src, void *dst) { to_network<fcl_rsp_path>(src, dst); }
void fib_ntoh_fcl_rsp_path(const void *src, void *dst) { to_host<fcl_rsp_path>(src, dst); }

// Node, port, VSAN.
void fib_hton_node(const void *src, void *dst) { to_network<node>(src, dst); }
void fib_ntoh_node(const void *src, void *dst) { to_host<node>(src, dst); }
void fib_hton_port(const void *src, void *dst) { to_network<port>(src, dst); }
void fib_ntoh_port(const void *src, void *dst) { to_host<port>(src, dst); }
void fib_hton_vsan(const void *src, void *dst) { to_network<vsan>(src, dst); }
void fib_ntoh_vsan(const void *src, void *dst) { to_host<vsan>(src, dst); }
void fib_hton_vsan_update(const void *src, void *dst) { to_network<vsan_update>(src, dst); }
void fib_ntoh_vsan_update(const void *src, void *dst) { to_host<vsan_update>(src, dst); }
void fib_hton_vsan_rewrite_update(const void *src, void *dst) { to_network<vsan_rewrite_update>(src, dst); }
void fib_ntoh_vsan_rewrite_update(const void *src, void *dst) { to_host<vsan_rewrite_update>(src, dst); }
void fib_hton_vsan_rewrite_path(const void *src, void *dst) { to_network<vsan_rewrite_path>(src, dst); }
void fib_ntoh_vsan_rewrite_path(const void *src, void *dst) { to_host<vsan_rewrite_path>(src, dst); }
void fib_hton_vsan_rewrite_rsp(const void *src, void *dst) { to_network<vsan_rewrite_rsp>(src, dst); }
void fib_ntoh_vsan_rewrite_rsp(const void *src, void *dst) { to_host<vsan_rewrite_rsp>(src, dst); }

// The choice of a path for a flow.
void rib_fib_hton_fcu_lb_query(const void *src, void *dst) { to_network<fcu_lb_query>(src, dst); }
void rib_fib_ntoh_fcu_lb_query(const void *src, void *dst) { to_host<fcu_lb_query>(src, dst); }
void rib_fib_hton_fcu_lb_rsp(const void *src, void *dst) { to_network<fcu_lb_rsp>(src, dst); }
void rib_fib_ntoh_fcu_lb_rsp(const void *src, void *dst) { to_host<fcu_lb_rsp>(src, dst); }
