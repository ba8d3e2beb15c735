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

/** Kind of a label route query, a scope bit with a label-kind code. By the convention. */
uintptr_t rib_fclrt_type_to_str(uint32_t value, char *str);

/** Kind of a multicast route query. By the convention. */
uintptr_t rib_fcmrt_type_to_str(uint32_t value, char *str);

/** Kind of a unicast route query. By the convention. */
uintptr_t rib_fcurt_type_to_str(uint32_t value, char *str);

/** Kind of an information or registration query; bit 0x20 has no text. By the convention. */
uintptr_t rib_query_to_str(uint32_t value, char *str);

/** Operation of an update message (RIB_OPER_UPDATE, ...). By the convention. */
uintptr_t rib_oper_to_str(uint32_t value, char *str);

/** Action of a route record (RIB_ACTION_ADD, ...). By the convention. */
uintptr_t rib_action_to_str(uint32_t value, char *str);

/** Type of a route entry. By the convention. */
uintptr_t rib_route_type_to_str(uint32_t value, char *str);

/** Synchronisation log; fallback "%xh?? sync log". By the convention. */
uintptr_t rib_sync_to_str(uint32_t value, char *str);

/**
 * Writes a label-switching control record as "push=%d pop=%d use_UP=%s use_TTL=%s dec_TTL=%s", the last three "T" or
 * "F".
 * @param ctrl 3 bytes: pop count, push count, flags (0x80 use_UP, 0x40 use_TTL, 0x20 dec_TTL)
 * @param str 48 bytes
 * @return the printed count
 */
int rib_fclrt_ctrl_to_str(const uint8_t *ctrl, char *str);

/**
 * Writes a unicast route's flags as three letters: D or R (RIB_FLAG_DIRECT), V or P (RIB_FLAG_VOLATILE), A or N
 * (RIB_FLAG_ACTIVE). 6 bytes. @return 5
 */
int rib_fcurt_flag_to_str(uint32_t flags, char *str);

/** Supervisor state, 0 to 4. By the convention. */
uintptr_t rib_sup_state_to_str(uint32_t value, char *str);

/** Module state, 0 to 2. By the convention. */
uintptr_t rib_mod_state_to_str(uint32_t value, char *str);

/** Module type; 3 has no text, 0xff is "unknown". By the convention. */
uintptr_t rib_mod_type_to_str(uint32_t value, char *str);

/** VSAN state, 0 to 4. By the convention. */
uintptr_t rib_vsan_state_to_str(uint32_t value, char *str);

/** Change of a VSAN's state, 0 to 2. By the convention. */
uintptr_t rib_vsan_state_chg_to_str(uint32_t value, char *str);

/** Load balancing of a VSAN, 1 or 2. By the convention. */
uintptr_t rib_vsan_bal_to_str(uint32_t value, char *str);

/** In-order delivery of a VSAN, 0 or 1. By the convention. */
uintptr_t rib_vsan_iod_to_str(uint32_t value, char *str);

/** Port layer; 99 is "unknown". By the convention. */
uintptr_t rib_pm_layer_to_str(uint32_t value, char *str);

/** Port state, an exact value and no mask. By the convention. */
uintptr_t rib_pm_state_to_str(uint32_t value, char *str);

/**
 * Port mode, a mask: 0 is "unknown" and exactly 0xffff is "all"; otherwise the first set bit in the order 0x1 to
 * 0x2000, 0x80000, 0x8000, 0x10000, 0x80000000 gives the text. A mask without any of these bits is unknown. By the
 * convention.
 */
uintptr_t rib_pm_mode_to_str(uint32_t mode, char *str);

/** Port-channel event, 0 to 5. By the convention. */
uintptr_t rib_pcm_event_to_str(uint32_t value, char *str);

/** Memory pool of the route database, 1 to 16. By the convention. */
uintptr_t rib_mem_to_str(uint32_t value, char *str);

/** Internal structure, 1 to 8; fallback "data %xh??". By the convention. */
uintptr_t rib_in_to_str(uint32_t value, char *str);

/** Verification request; fallback "verify %xh??". By the convention. */
uintptr_t rib_verf_to_str(uint32_t value, char *str);

/** Test request, 1 to 3. By the convention. */
uintptr_t rib_test_type_to_str(uint32_t value, char *str);

/** CMI request kind, 1 to 4. By the convention. */
uintptr_t rib_cmi_msg_to_str(uint32_t value, char *str);

/** Timer event, 1 to 3. By the convention. */
uintptr_t rib_time_op_to_str(uint32_t value, char *str);

/** FIB state, 0 to 7. By the convention. */
uintptr_t fib_state_to_str(uint32_t value, char *str);

/** FIB kind, 0 or 1; fallback "FIB %xh??". By the convention. */
uintptr_t fib_mod_type_to_str(uint32_t value, char *str);

/** Verification result: 0 or one bit. By the convention. */
uintptr_t fib_verf_to_str(uint32_t value, char *str);

/** Forwarding entry type: one bit, or 0xf0000. By the convention. */
uintptr_t fib_route_type_to_str(uint32_t value, char *str);

/** Reason why a frame was dropped or redirected, 0 to 17. By the convention. */
uintptr_t fib_reason_to_str(uint32_t value, char *str);

/** FIB operation. By the convention. */
uintptr_t fib_oper_to_str(uint32_t value, char *str);

/** In-order delivery mode of a port, 0 to 6. By the convention. */
uintptr_t fib_iod_mode_to_str(uint32_t value, char *str);

/** Action of a forwarding entry, 0 to 3. By the convention. */
uintptr_t fib_action_to_str(uint32_t value, char *str);

/** Destination index: "..." for the two that mean none (0xffff, 0xdeadbeef), fallback "%03x". By the convention. */
uintptr_t fib_d_idx_to_str(uint32_t value, char *str);

/**
 * Writes a VSAN record as a sentence; VSAN 0 speaks of all VSANs.
 * @param rec 8 bytes in network form: latency (u32); flags (0x1 in-order delivery enabled, 0x2 that setting is valid);
 *            VSAN state in the low and load balancing in the high 4 bits of a byte; VSAN (u16)
 * @param str 128 bytes
 * @return the printed count
 */
int fib_vsan_to_str(const uint8_t *rec, char *str);

/** Writes the time within the minute, "SSS:mmm:uuu" (seconds, milliseconds, microseconds). 12 bytes. @return 11 */
int rib_time_str(char *str);

/** Writes the local wall-clock time, "HH:MM:SS". 9 bytes. Uses the C library's shared calendar, as below. @return 8 */
int rib_time_stamp_str(char *str);

/**
 * Writes the calendar text of *t, as ctime gives it, without its newline. 26 bytes. Uses the C library's shared
 * calendar, so that two threads must not tell times at once. The time zone is that of TZ at the call; where TZ is not
 * set, a new time zone of the host is seen within a second.
 */
void rib_time_to_str(const time_t *t, char *str);

/**
 * Writes the interface's name, "null intf" for 0, or "%08xh??" for an index of no known kind. str holds the platform's
 * longest name, and at least 12 bytes.
 */
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
