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

#ifdef __cplusplus
}
#endif

#endif
