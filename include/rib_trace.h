/** @file
 * One line on standard output for every message sent and every failure.
 */
#ifndef RIB_TRACE_H
#define RIB_TRACE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define RIB_PRINTF(format, first) __attribute__((__format__(__printf__, format, first)))
#else
#define RIB_PRINTF(format, first)
#endif

/**
 * Prints a timed trace line: the time stamp, a blank and the formatted text, cut to 243 characters in all. No newline
 * is added: formats end with their own.
 * @return what the output call returned
 */
int32_t rib_printf_time(const char *format, ...) RIB_PRINTF(1, 2);

/**
 * The failure reports. The clients that face an operator (RIB_CLIENT_CONFIG, RIB_CLIENT_OPERATOR) get one short
 * sentence and nothing of the format; every other client gets a timed trace line, cut to 155 characters in all.
 * @param uuid client identity of the caller; not printed
 * @return what the output call returned
 */
int32_t rib_printf_req_fail(uint32_t uuid, const char *format, ...) RIB_PRINTF(2, 3);
/** As rib_printf_req_fail, where no answer came. */
int32_t rib_printf_rsp_fail(uint32_t uuid, const char *format, ...) RIB_PRINTF(2, 3);
/** As rib_printf_req_fail, for a request to a FIB. */
int32_t rib_printf_fib_req_fail(uint32_t uuid, const char *format, ...) RIB_PRINTF(2, 3);
/** As rib_printf_req_fail, where no answer came from a FIB. */
int32_t rib_printf_fib_rsp_fail(uint32_t uuid, const char *format, ...) RIB_PRINTF(2, 3);
/** As rib_printf_req_fail, where a message could not be dropped. */
int32_t rib_printf_drop_fail(uint32_t uuid, const char *format, ...) RIB_PRINTF(2, 3);
/** As rib_printf_req_fail, where memory ran out. */
int32_t rib_printf_no_mem(uint32_t uuid, const char *format, ...) RIB_PRINTF(2, 3);

/*
 * The message traces print one line (routes: and one per interface) about a message or record in network form, as it
 * stands in the send buffer. Nothing is printed when the message's word 0, the sender's client identity, is
 * RIB_CLIENT_CONFIG or RIB_CLIENT_OPERATOR, unless said otherwise. Counts in the message are trusted.
 */

/** Traces a test query of 48 bytes. */
void rib_printf_test_query(const void *msg);
/** Traces a database query of 16 bytes. */
void rib_printf_db_query(const void *msg);
/** Traces a system attributes query of 16 bytes. */
void rib_printf_sys_query(const void *msg);
/** Traces a VSAN attributes query of 16 bytes. */
void rib_printf_vsan_query(const void *msg);
/** Traces a domain reachability query of 16 bytes. */
void rib_printf_dm_query(const void *msg);
/** Traces a registration query of 12 bytes. */
void rib_printf_reg_query(const void *msg);
/** Traces a query for an internal structure, of 16 bytes. */
void rib_printf_in_query(const void *msg);
/** Traces a node query of 8 bytes; modules are shown counted from 1. */
void rib_printf_node_query(const void *msg);
/** Traces a label route query of 40 bytes. */
void rib_printf_fcl_query(const void *msg);
/** Traces a unicast route query of 24 bytes: "versions" when its type asks for topology versions, else "ucast". */
void rib_printf_fcu_query(const void *msg);
/** Traces a multicast route query of 24 bytes. */
void rib_printf_fcm_query(const void *msg);
/** Traces a verification query of 52 bytes. */
void rib_printf_verf_query(const void *msg);

/** Traces a registration of 88 bytes, whoever sends it; its name is at most 80 characters. */
void rib_printf_reg(const void *msg);
/** Traces a verification request of 12 bytes. */
void rib_printf_verf(const void *msg);

/** Traces the header of a label route update. @param size of the whole message, in bytes, as it is to be printed */
void rib_printf_fclrt_update(uint32_t size, const void *msg);
/** Traces the header of a unicast route update. @param size as above */
void rib_printf_fcurt_update(uint32_t size, const void *msg);
/** Traces the header of a multicast route update. @param size as above */
void rib_printf_fcmrt_update(uint32_t size, const void *msg);

/** Prints the state of a module's FIB, for every reader and without a time stamp. @param record words 0 and 3 are read
 */
void rib_printf_fib_state(const void *record);

/** Traces a unicast route record, then its interfaces. @param msg its update message, whose sender decides */
void rib_printf_fcurt(const void *msg, const void *record);
/** Traces a multicast route record, then its interfaces. @param msg its update message, whose sender decides */
void rib_printf_fcmrt(const void *msg, const void *record);
/** Traces a label route record, then its next hops with their labels. @param msg its update message */
void rib_printf_fclrt(const void *msg, const void *record);

#ifdef __cplusplus
}
#endif

#endif
