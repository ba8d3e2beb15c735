/** @file
 * Numbers to text. A converter writes into the caller's buffer, keeps no state and never fails.
 *
 * The convention of every `uintptr_t rib_*_to_str(uint32_t value, char *str)` and its fib_ sisters: a known value (an
 * exact match on all 32 bits) has its text copied whole into str, terminator included, and the result is the address of
 * str. Any other value is printed into str by the converter's fallback format, "%xh??" unless another is named, and the
 * result is the count of printed characters. str is owned by the caller; RIB_TEXT_SIZE bytes hold any of these texts.
 */
#ifndef RIB_TEXT_H
#define RIB_TEXT_H

#include <stdint.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Bytes that hold the text of any converter that follows the convention above, fallbacks and terminator included. */
#define RIB_TEXT_SIZE 32

/** Text of a result code (RIB_OK, RIB_FAILED, ...). Codes of failed platform calls have none. By the convention. */
uintptr_t rib_rtn_to_str(uint32_t rtn, char *str);

/** Name of a client identity (RIB_CLIENT_FSPF, ...); fallback "client %u??". By the convention. */
uintptr_t rib_uuid_to_str(uint32_t uuid, char *str);

/** Writes the client's name in upper case (the process's locale), at most 40 characters. */
void rib_uuid_to_uc_str(uint32_t uuid, char *str);

/** Writes the protocol word of the routes that a client owns; "unknown" for every client without one. */
void rib_uuid_to_proto_str(uint32_t uuid, char *str);

/** SNMP route protocol, 1 to 6. By the convention. */
uintptr_t rib_fcroute_proto_to_str(uint32_t proto, char *str);

/** SNMP route type: 1 direct, 2 remote. By the convention. */
uintptr_t rib_fcroute_type_to_str(uint32_t type, char *str);

/** SNMP route permanence: 1 perm, 2 volatile. By the convention. */
uintptr_t rib_fcroute_perm_to_str(uint32_t perm, char *str);

/** Writes the time within the minute, "SSS:mmm:uuu" (seconds, milliseconds, microseconds). 12 bytes. @return 11 */
int rib_time_str(char *str);

/** Writes the local wall-clock time, "HH:MM:SS". 9 bytes. Uses the C library's shared calendar. @return 8 */
int rib_time_stamp_str(char *str);

/** Writes the calendar text of *t without its newline. 26 bytes. Uses the C library's shared calendar. */
void rib_time_to_str(const time_t *t, char *str);

/** Writes the interface's name, "null intf" for 0, or "%08xh??" for an index of no known kind. */
void rib_if_index_to_str(uint32_t if_index, char *str);

/**
 * Cuts or blank-pads str in place to exactly len characters, at most 40. str holds len + 1 bytes (at most 41). A len
 * below 0 is not guarded against: the terminator is written before the buffer.
 */
void rib_str_len_set(char *str, int len);

#ifdef __cplusplus
}
#endif

#endif
