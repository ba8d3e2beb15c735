/** @file
 * The checks that stand in front of the converters, which trust their counts. A check walks a message in network form
 * (or a saved image) once and answers whether everything else may be let loose on it: what a check accepts, the
 * converter, the size function, the field readers, the trace and the display of that message handle without touching a
 * byte outside. A check takes time in proportion to the bytes.
 *
 * Two things acceptance does not cover:
 *
 *  - The way back in place. What is accepted may be converted from network to host order. Where entries overlap (the
 *    hops of rib_ucast_route, the routes of rib_fcurt_info and rib_fcmrt_info), converting one in place changes bytes
 *    of the next: hton in the same buffer afterwards may meet counts that nobody has checked. Keep the received bytes.
 *  - What a text holds. The name in rib_register ends within its room, and may hold any other byte, control characters
 *    included: escape it before a terminal sees it. Displays print it as it stands.
 */
#ifndef RIB_CHECK_H
#define RIB_CHECK_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Which rule a refused message breaks. */
enum rib_check_rule {
    RIB_CHECK_COUNT, /**< a field says more than is allowed: found and allowed are its value and the most it may be */
    RIB_CHECK_SHORT, /**< the bytes end before a field does: found and allowed are the field's end and the bytes' */
    RIB_CHECK_EXCESS /**< bytes remain: found and allowed are the bytes there are and those of the message */
};

/** Which field breaks which rule. A check fills it when it refuses, and leaves it alone when it accepts. */
struct rib_check_report {
    const char *message; /**< what was checked ("rib_fcurt"); static text */
    const char *field;   /**< the field that does not hold ("n_hop"); static text */
    uint32_t offset;     /**< where the field stands: bytes from the start of the message */
    uint32_t found;
    uint32_t allowed;
    enum rib_check_rule rule;
};

/**
 * Writes the report as one line without a newline: "rib_fcurt: n_hop at offset 28 is 9, at most 4 allowed".
 * @param str receives at most size bytes, the terminator included; untouched when size is 0
 * @return the length of the whole line, also when it was cut
 */
int rib_check_report_str(const struct rib_check_report *report, char *str, uint32_t size);

/*
 * One check for every message that is received; the records that follow an update are checked with it. All have these
 * arguments and results:
 *
 *  - message  size bytes in network form, of any alignment
 *  - report   null, or filled where the message is refused
 *  - returns  0; RIB_BAD_PARAMETERS where the bytes are too few for what they say or a count exceeds its array;
 *             RIB_EXCESS_DATA where bytes remain
 *
 * A number that a vocabulary does not know is no reason to refuse a message.
 */
uint32_t rib_check_fclrt_update(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fcmrt_update(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fcurt_update(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fcurt(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fclrt(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fclrt_intf(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fcmrt(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fcurt_rsp(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fclrt_rsp(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fcmrt_rsp(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fclrt_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fcurt_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fcmrt_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_lbl_route(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_ucast_route(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_mcast_route(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_topo(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_sync_fcl(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_sync_fcm(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_sync_fcu(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_sync_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_sync_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_verify(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_reg_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_dm_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_sys_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_db_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_in_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_test_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_node_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_test_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_register(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fclrt_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fcmrt_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_fcurt_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_db_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_dm_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_in_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_reg_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_sys_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_node_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_verf_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_check_verf_info(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcl_update(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcm_update(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcu_update(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcu_path(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcl_path(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcm_path(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcl_rsp(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcm_rsp(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcu_rsp(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_sync(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_verf_fcu(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_verf_fcm(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_verf_fcl(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcu_rsp_path(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcm_rsp_path(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_fcl_rsp_path(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_node(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_port(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_vsan(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_vsan_update(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_vsan_rewrite_update(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_vsan_rewrite_path(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t fib_check_vsan_rewrite_rsp(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_fib_check_fcu_lb_query(const void *message, uint32_t size, struct rib_check_report *report);
uint32_t rib_fib_check_fcu_lb_rsp(const void *message, uint32_t size, struct rib_check_report *report);

#ifdef __cplusplus
}
#endif

#endif
