/** @file
 * The displays of the switch's command line: one call prints one record on standard output.
 *
 * Records are read in network form (big-endian, as they travel) unless said otherwise, need no alignment, and their
 * counts are trusted. A header flag that is not 0 prints the table's legend and column heads before the row: a caller
 * sets it for the first record. A returned length is the size of the record in bytes, so that a caller can step to the
 * next one.
 */
#ifndef RIB_SHOW_H
#define RIB_SHOW_H

#include "rib_snmp.h"
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Shows a unicast route entry of 36 bytes and its next hops (8 bytes and 4 for each label); hops of FSPF, rib-config
 * and rib-test without labels are shown with their domain. @return the record's length
 */
uint32_t rib_show_fcu(uint32_t header, const void *record);

/**
 * Shows a label route entry of 40 bytes and its next hops (8 bytes and 4 for each label).
 * @param options next hops are not printed where a bit of 0x110 is set
 * @return the record's length, next hops included
 */
uint32_t rib_show_fcl(uint32_t header, uint32_t options, const void *record);

/** Shows a multicast route entry of 20 bytes and its interfaces; FC ID 0 is the distribution tree. @return its length
 */
uint32_t rib_show_fcm(uint32_t header, const void *record);

/** Shows a client's topology version list: 12 bytes (client, VSAN, count) and the versions. */
void rib_show_fct(uint32_t header, const void *record);

/** Shows a unicast route entry (as rib_show_fcu) in the protocol's view. @return the record's length */
uint32_t rib_show_fcurt(uint32_t header, const void *record);

/**
 * Shows a multicast route entry (as rib_show_fcm) in the view of queries.
 * @param header heads are printed where it is 1 and row is 1
 * @param row the row is printed where it is 1
 * @param option 64 lists the interfaces, where row is not 0
 * @return the record's length
 */
uint32_t rib_show_fcmrt(uint32_t header, uint32_t row, uint32_t option, const void *record);

/** Shows an entry of the unicast synchronisation log, 32 bytes; index 128 is a marker. */
void rib_show_sync_fcu(uint32_t header, const void *record);

/** Shows an entry of the multicast synchronisation log, 28 bytes; index 128 is a marker. */
void rib_show_sync_fcm(uint32_t header, const void *record);

/** Shows an entry of the label synchronisation log, 52 bytes; index 128 is a marker. */
void rib_show_sync_fcl(uint32_t header, const void *record);

/** Shows a row of the SNMP route table. @param entry in host order */
void rib_show_snmp_fcroute(uint32_t header, const struct fcRouteEntry *entry);

/** Shows the domains of a VSAN up to 239: VSAN (u32), 32 bytes of present domains, 32 bytes of direct domains. */
void rib_show_dm(uint32_t header, const void *record);

/**
 * Prints one topology version of a list; called for each, in order. The last one ends the line, unless it is the only.
 * @param position of this version in the list, from 0
 * @param count of versions in the list
 */
void rib_show_version(uint32_t version, uint32_t position, uint32_t count);

/**
 * Shows the route counts of a VSAN.
 * @param database read where header is set: its word 1 is the time of creation
 * @param vsan_entry five words: VSAN, time of last change, unicast, multicast and label routes
 */
void rib_show_db(uint32_t header, const void *database, const void *vsan_entry);

/** Shows the sum under rib_show_db's table. @param totals five words; words 2, 3 and 4 are the counts */
void rib_show_db_total(uint32_t header, const void *totals);

/** Shows the state of a synchronisation log: index, sequence, time, next index (four words). */
void rib_show_sync_gbl(uint32_t header, const void *record);

/** Shows when a verification report was generated (word 2) and completed (word 3, or 0), where header is set. */
void rib_show_verf_info(uint32_t header, const void *report);

/** Shows a registration: client identity and route distance, its first two words. */
void rib_show_register(uint32_t header, const void *registration);

/**
 * Shows the present ports of a module.
 * @param header address of the header flag, which is cleared once a port is shown
 * @param system_record module entry of 1560 bytes: bitmap of ports (8 bytes) at 16, 64 port records (24 bytes) from 24
 */
void rib_show_sys_port(uint32_t *header, const void *system_record);

/** A parameter of a command, in host order. */
struct rib_param {
    uint32_t token;
    uint32_t type;
    const void *value; /**< its first four bytes are shown as a word; null where the parameter has no value */
};

/**
 * A command's parameters. Whoever calls the display fills the block in; it owns neither the parameters nor their
 * values, which stay where they are while it is shown. Without parameters `params` is not read.
 *
 * @code
 * const uint32_t vsan = 20;
 * const struct rib_param params[] = {{1, 0x10, &vsan}, {2, 0x20, 0}};
 * const struct rib_param_block block = {2, params};
 * rib_show_p(&block);
 * @endcode
 *
 * prints, wherever the two lie,
 *
 * @code
 * # parameters = 2  (All fields in hex except Token)
 *
 * Pointer       Token    Type    Value
 * ----------    -----    ----    -----
 * 0x7ffd4a10    1        10      00000014
 * 0x7ffd4a20    2        20
 * @endcode
 */
struct rib_param_block {
    uint8_t count;
    const struct rib_param *params; /**< count of them */
};

/** Shows a block of parameters: where each one lies (10 characters of its address), its token, type and value. */
void rib_show_p(const struct rib_param_block *block);

/** Shows the memory pools. @param record 16 entries of three words: pool, data size in bytes, number of data */
void rib_show_in_mem(const void *record);

/** Shows the high-availability state: supervisor state and five flags (six words); a flag is true where it is 1. */
void rib_show_in_ha(const void *record);

/** Shows a unicast verification entry of 16 bytes. */
void fib_show_verf_fcu(uint32_t header, const void *record);

/** Shows a multicast verification entry of 12 bytes. */
void fib_show_verf_fcm(uint32_t header, const void *record);

/** Shows a label verification entry of 32 bytes. */
void fib_show_verf_fcl(uint32_t header, const void *record);

/** Shows a VSAN record of 8 bytes; VSAN 0 speaks of all VSANs. */
void fib_show_vsan(uint32_t header, const void *record);

/** Shows a port record of 24 bytes. */
void fib_show_port(uint32_t header, const void *record);

/** Shows a node record of 16 bytes; modules are shown counted from 1. */
void fib_show_node(uint32_t header, const void *record);

#ifdef __cplusplus
}
#endif

#endif
