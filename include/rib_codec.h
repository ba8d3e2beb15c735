/** @file
 * Messages of the RIB's client protocol: converters between host and network form, readers of single fields, sizes,
 * and the steps and comparisons of route keys. The messages between RIB and FIB are in fib_codec.h.
 *
 * Every message has one layout and two forms: the host form holds its numbers in the host's byte order, the network
 * form holds them big-endian. `hton` converts the first into the second, `ntoh` goes back; offsets and sizes never
 * change. In the tables below offsets are bytes from the start of the message or record, and
 *
 *  - "word" is an unsigned 32-bit number, "half" an unsigned 16-bit number; both are converted;
 *  - "bytes" are copied as they are, FC IDs (a zero byte, domain, area, port) among them;
 *  - "gap" is carried by nobody: a converter neither reads nor writes it;
 *  - `name[n]` is a list of n entries, `name[n of 16]` one that has room for 16.
 *
 * What holds for every converter:
 *
 *  - Source first, destination second. Neither needs alignment. They may be the same buffer (conversion in place), but
 *    may not overlap otherwise. Nothing is allocated or kept, so any thread may convert any buffer.
 *  - Counts are trusted: nothing is validated, and a count that is too large makes the conversion run past the message.
 *    They are read from the source, before anything is written. Check what comes from outside before it is converted.
 *  - A list with room for more has its unused entries written as zero. A count above the room converts that many
 *    entries all the same, into whatever follows, and nothing is zeroed.
 *  - Only what the tables list is written; every other byte of the destination keeps what it held.
 *  - A converter that returns a size returns that of the record it has converted, so that a caller can step to the
 *    next one; the others return nothing.
 */
#ifndef RIB_CODEC_H
#define RIB_CODEC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* --- Updates: a header, and a run of route records behind it ----------------------------------------------------- */

/**
 * Header of a label route update, 16 bytes; its n_route label route records follow and are left alone: convert each
 * with rib_hton_fclrt.
 *
 *      0  word  uuid     client identity of the sender (RIB_CLIENT_...)
 *      4  word  vsan     VSAN whose table is changed
 *      8  word  oper     operation (RIB_OPER_...)
 *     12  word  n_route  records that follow
 */
void rib_hton_fclrt_update(const void *src, void *dst);
/** Network to host: see rib_hton_fclrt_update. */
void rib_ntoh_fclrt_update(const void *src, void *dst);

/** Header of a multicast route update: the words of rib_hton_fclrt_update; records of rib_hton_fcmrt follow. */
void rib_hton_fcmrt_update(const void *src, void *dst);
/** Network to host: see rib_hton_fcmrt_update. */
void rib_ntoh_fcmrt_update(const void *src, void *dst);

/**
 * Header of a unicast route update, 980 bytes; its n_route unicast route records follow and are left alone: convert
 * each with rib_hton_fcurt.
 *
 *      0  word  uuid       client identity of the sender (RIB_CLIENT_...)
 *      4  word  vsan       VSAN whose table is changed
 *      8  word  oper       operation (RIB_OPER_...)
 *     12  word  n_version  topology versions
 *     16  word  n_route    records that follow
 *     20  word  version[n_version of 240]
 */
void rib_hton_fcurt_update(const void *src, void *dst);
/** Network to host: see rib_hton_fcurt_update. */
void rib_ntoh_fcurt_update(const void *src, void *dst);

/** @return uuid of a label route update in network form */
uint32_t rib_ntoh_fclrt_update_get_uuid(const void *msg);
/** @return vsan of a label route update in network form */
uint32_t rib_ntoh_fclrt_update_get_vsan(const void *msg);
/** @return oper of a label route update in network form */
uint32_t rib_ntoh_fclrt_update_get_oper(const void *msg);
/** @return n_route of a label route update in network form */
uint32_t rib_ntoh_fclrt_update_get_n_route(const void *msg);

/** @return uuid of a unicast route update in network form */
uint32_t rib_ntoh_fcurt_update_get_uuid(const void *msg);
/** @return vsan of a unicast route update in network form */
uint32_t rib_ntoh_fcurt_update_get_vsan(const void *msg);
/** @return oper of a unicast route update in network form */
uint32_t rib_ntoh_fcurt_update_get_oper(const void *msg);
/** @return n_version of a unicast route update in network form */
uint32_t rib_ntoh_fcurt_update_get_n_version(const void *msg);
/** @return n_route of a unicast route update in network form */
uint32_t rib_ntoh_fcurt_update_get_n_route(const void *msg);

/**
 * Reads the topology versions of a unicast route update in network form.
 * @param versions filled with n_version versions in host order, the rest of its 240 words with zero; an n_version above
 *                 240 is not cut, and the caller's array must have that many words
 */
void rib_ntoh_fcurt_update_get_version(const void *msg, uint32_t *versions);

/** @return bytes of a whole label route update in network form, records included; its counts are trusted */
uint32_t rib_sizeof_fclrt_update(const void *msg);
/** @return bytes of a whole multicast route update in network form, records included; its counts are trusted */
uint32_t rib_sizeof_fcmrt_update(const void *msg);
/** @return bytes of a whole unicast route update in network form, records included; its counts are trusted */
uint32_t rib_sizeof_fcurt_update(const void *msg);

/* --- Unicast route records ---------------------------------------------------------------------------------------- */

/**
 * Unicast route record, 32 bytes and 8 for each hop.
 *
 *      0  bytes  fcid    4: destination
 *      4  word   mask    24-bit mask of the destination
 *      8  bytes  (8)     carried
 *     16  word   action  RIB_ACTION_...
 *     20  word   metric  cost
 *     24  word   flag    RIB_FLAG_...
 *     28  word   n_hop
 *     32  hop[n_hop], 8 bytes each:
 *          +0  word  intf    egress interface
 *          +4  word  domain  domain that it reaches
 *
 * @return the record's size, 32 + 8 * n_hop
 */
uint32_t rib_hton_fcurt(const void *src, void *dst);
/** Network to host: see rib_hton_fcurt. @return the record's size, 32 + 8 * n_hop */
uint32_t rib_ntoh_fcurt(const void *src, void *dst);

/** @return destination ANDed with the mask, of a unicast route record in network form */
uint32_t rib_ntoh_fcurt_get_fcid(const void *record);
/** @return mask of a unicast route record in network form */
uint32_t rib_ntoh_fcurt_get_mask(const void *record);
/** @return action of a unicast route record in network form */
uint32_t rib_ntoh_fcurt_get_action(const void *record);
/** @return metric of a unicast route record in network form */
uint32_t rib_ntoh_fcurt_get_metric(const void *record);
/** @return flag word of a unicast route record in network form */
uint32_t rib_ntoh_fcurt_get_flag(const void *record);
/** @return n_hop of a unicast route record in network form */
uint32_t rib_ntoh_fcurt_get_n_hop(const void *record);
/** @return interface of one hop (8 bytes) of a unicast route record in network form */
uint32_t rib_ntoh_fcurt_route_get_intf(const void *hop);
/** @return domain of one hop (8 bytes) of a unicast route record in network form */
uint32_t rib_ntoh_fcurt_route_get_domain(const void *hop);

/** Answer to a unicast table request, 20 bytes: five words. */
void rib_hton_fcurt_rsp(const void *src, void *dst);
/** Network to host: see rib_hton_fcurt_rsp. */
void rib_ntoh_fcurt_rsp(const void *src, void *dst);

/* --- Label route records ------------------------------------------------------------------------------------------ */

/**
 * Label route record, 104 bytes and its interface entries. Records of type 4 are keyed by fcid and mask, those of type
 * 1 by the source interface src[0].
 *
 *      0  word   type
 *      4  word   vsan
 *      8  bytes  fcid     4: FC ID
 *     12  word   mask
 *     16  word   action   RIB_ACTION_...
 *     20  word   n_match
 *     24  word   n_src
 *     28  word   n_intf
 *     32  word   match[n_match of 2]  labels that a frame must carry
 *     40  word   src[n_src of 16]     source interfaces
 *    104  intf[n_intf], each as rib_hton_fclrt_intf has it
 *
 * A label word is a label in bits 31 to 12, experimental bits 11 to 9, bottom of stack bit 8, time to live 7 to 0.
 *
 * @return the record's size, 104 and the sizes of its interface entries
 */
uint32_t rib_hton_fclrt(const void *src, void *dst);
/** Network to host: see rib_hton_fclrt. @return the record's size, 104 and the sizes of its interface entries */
uint32_t rib_ntoh_fclrt(const void *src, void *dst);

/**
 * Interface entry of a label route, 8 bytes and 4 for each label.
 *
 *      0  word  ctrl     bits 23 to 16: n, the number of labels
 *      4  word  intf     egress interface
 *      8  word  push[n]  labels to push
 *
 * @return the entry's size, 8 + 4 * n
 */
uint32_t rib_hton_fclrt_intf(const void *src, void *dst);
/** Network to host: see rib_hton_fclrt_intf. @return the entry's size, 8 + 4 * n */
uint32_t rib_ntoh_fclrt_intf(const void *src, void *dst);

/** @return type of a label route record in network form */
uint32_t rib_ntoh_fclrt_get_type(const void *record);
/** @return vsan of a label route record in network form */
uint32_t rib_ntoh_fclrt_get_vsan(const void *record);
/** @return action of a label route record in network form */
uint32_t rib_ntoh_fclrt_get_action(const void *record);
/** @return n_match of a label route record in network form */
uint32_t rib_ntoh_fclrt_get_n_match(const void *record);
/** @return n_src of a label route record in network form */
uint32_t rib_ntoh_fclrt_get_n_src(const void *record);
/** @return n_intf of a label route record in network form */
uint32_t rib_ntoh_fclrt_get_n_intf(const void *record);
/** @return the first source interface, src[0], of a label route record in network form */
uint32_t rib_ntoh_fclrt_get_src(const void *record);
/** @return control word of one interface entry in network form */
uint32_t rib_ntoh_fclrt_intf_get_ctrl(const void *entry);
/** @return interface of one interface entry in network form */
uint32_t rib_ntoh_fclrt_intf_get_intf(const void *entry);

/** Answer to a label table request, 20 bytes: five words. */
void rib_hton_fclrt_rsp(const void *src, void *dst);
/** Network to host: see rib_hton_fclrt_rsp. */
void rib_ntoh_fclrt_rsp(const void *src, void *dst);

/* --- Multicast route records -------------------------------------------------------------------------------------- */

/**
 * Multicast route record, 16 bytes and 4 for each interface.
 *
 *      0  bytes  fcid    4: destination
 *      4  word   mask
 *      8  word   action  RIB_ACTION_...
 *     12  word   n_intf
 *     16  word   intf[n_intf]  member interfaces
 *
 * @return the record's size, 16 + 4 * n_intf
 */
uint32_t rib_hton_fcmrt(const void *src, void *dst);
/** Network to host: see rib_hton_fcmrt. @return the record's size, 16 + 4 * n_intf */
uint32_t rib_ntoh_fcmrt(const void *src, void *dst);

/** Answer to a multicast table request, 20 bytes: five words. */
void rib_hton_fcmrt_rsp(const void *src, void *dst);
/** Network to host: see rib_hton_fcmrt_rsp. */
void rib_ntoh_fcmrt_rsp(const void *src, void *dst);

/* --- Queries of the route tables ---------------------------------------------------------------------------------- */

/**
 * Label route query, 40 bytes.
 *
 *      0  word  uuid     client identity
 *      4  word  type     kind of query
 *      8  word  (carried)
 *     12  word  cursor   position of the batch, stepped by rib_next_fclrt_query
 *     16  word  (carried)
 *     20  word  (carried)
 *     24  word  n_match
 *     28  word  match[n_match of 2]  labels; converted after the word at 36
 *     36  word  number of labels asked for
 */
void rib_hton_fclrt_query(const void *src, void *dst);
/** Network to host: see rib_hton_fclrt_query. */
void rib_ntoh_fclrt_query(const void *src, void *dst);

/**
 * Unicast route query, 24 bytes: six words.
 *
 *      0  word  uuid   client identity
 *      4  word  type   kind of query; bit 0x2 asks for topology versions
 *      8  word  number of routes or versions asked for
 *     12  word  (carried), and two more
 */
void rib_hton_fcurt_query(const void *src, void *dst);
/** Network to host: see rib_hton_fcurt_query. */
void rib_ntoh_fcurt_query(const void *src, void *dst);

/**
 * Multicast route query, 24 bytes: six words.
 *
 *      0  word  uuid   client identity
 *      4  word  (carried)
 *      8  word  type   kind of query
 *     12  word  (carried)
 *     16  word  (carried)
 *     20  word  number of routes asked for
 */
void rib_hton_fcmrt_query(const void *src, void *dst);
/** Network to host: see rib_hton_fcmrt_query. */
void rib_ntoh_fcmrt_query(const void *src, void *dst);

/**
 * Steps a label route query in network form to the next batch: next takes cur's cursor, and cur's cursor grows by one.
 * Where the cursor taken is 0, next's match[0] becomes cur's with its label increased by one (4096 in the label word).
 * Nothing else of either is touched.
 * @param next another buffer than cur
 * @return 0
 */
uint32_t rib_next_fclrt_query(void *cur, void *next);

/**
 * Steps a verification query (rib_hton_verf_query) in network form as rib_next_fclrt_query steps its query: the cursor
 * is the word at 24, the label word that at 40.
 * @return 0
 */
uint32_t rib_next_verf_query(void *cur, void *next);

/* --- Route keys: steps, comparisons, operations ------------------------------------------------------------------- */

/**
 * Steps a multicast key of the RIB: the FC ID varies fastest; behind 0xffffff the next VSAN starts at 0x010000.
 * @return 0; RIB_FAILED behind (4095, 0xffffff), with nothing changed
 */
uint32_t rib_next_fcm_tuple(uint32_t *vsan, uint32_t *fcid);

/**
 * Steps a multicast key of the FIB: the VSAN varies fastest, from 0 to 4095.
 * @return 0; RIB_FAILED behind (0xffffff, 4095), with *vsan set to 0
 */
uint32_t fib_next_fcm_tuple(uint32_t *fcid, uint32_t *vsan);

/**
 * Steps a unicast key: each FC ID below 0xefffff goes through the masks 0xff0000, 0xffff00 and 0xffffff; behind
 * 0xefffff the next VSAN starts at 0x010000.
 * @return 0; RIB_FAILED behind the last key of VSAN 4095, with *mask set to 0xff0000
 */
uint32_t rib_next_fcu_tuple(uint32_t *vsan, uint32_t *fcid, uint32_t *mask);

/**
 * Steps a unicast key as rib_next_fcu_tuple does up to FC ID 0xeffffe; above, with mask 0xffffff, it visits 0xfffb00 to
 * 0xfffbff one by one, then 0xffffff, then the next VSAN at 0x010000 with mask 0xff0000.
 * @param fcid at most 0xffffff
 * @return 0; RIB_FAILED behind (4095, 0xffffff), with *fcid and *mask set to 0x010000 and 0xff0000
 */
uint32_t rib_next_fcroute_tuple(uint32_t *vsan, uint32_t *fcid, uint32_t *mask);

/** Orders multicast keys by VSAN (signed), then FC ID (unsigned). @return -1, 0 or 1: a is smaller, equal, greater */
int32_t rib_cmp_fcm_tuple(uint32_t vsan_a, uint32_t fcid_a, uint32_t vsan_b, uint32_t fcid_b);

/** Orders multicast keys by FC ID (unsigned), then VSAN (signed). @return -1, 0 or 1: a is smaller, equal, greater */
int32_t fib_cmp_fcm_tuple(uint32_t fcid_a, uint32_t vsan_a, uint32_t fcid_b, uint32_t vsan_b);

/**
 * Orders unicast keys by VSAN (signed), then FC ID, then mask (both unsigned).
 * @return -1, 0 or 1: a is smaller, equal, greater
 */
int32_t rib_cmp_fcu_tuple(uint32_t vsan_a, uint32_t fcid_a, uint32_t mask_a, uint32_t vsan_b, uint32_t fcid_b,
                          uint32_t mask_b);

/** @return the FIB's operation for an operation of the RIB (RIB_OPER_...); 0 where it has none */
uint32_t rib_oper_to_fib(uint32_t oper);

/**
 * Orders VSAN-rewrite paths in network form (fib_hton_vsan_rewrite_path) by their words at 4, 12 (signed), 16, 20, 24,
 * 28 and 32; those at 0 and 8 play no part.
 * @return -1, 0 or 1: a is smaller, equal, greater
 */
int32_t rib_vsan_rewrite_key_compare(const void *a, const void *b);

/* --- Synchronisation between RIBs --------------------------------------------------------------------------------- */

/**
 * Label route as the RIB holds it, 40 bytes and its interface entries.
 *
 *      0  word  (six words carried)
 *     24  word  n_match
 *     28  word  n_intf
 *     32  word  match[n_match of 2]  labels
 *     40  intf[n_intf], each as rib_hton_fclrt_intf has it
 *
 * @return the entry's size, 40 and the sizes of its interface entries
 */
uint32_t rib_hton_lbl_route(const void *src, void *dst);
/** Network to host: see rib_hton_lbl_route. @return the entry's size, 40 and the sizes of its interface entries */
uint32_t rib_ntoh_lbl_route(const void *src, void *dst);

/**
 * Unicast route as the RIB holds it, 36 bytes and its hops.
 *
 *      0  word   uuid   client identity of the owner
 *      4  word   vsan
 *      8  bytes  fcid   4: destination
 *     12  word   mask
 *     16  bytes  (8)    R_CTL, its mask, rewrite flag (0x20) and reason (0x1f), five more
 *     24  word   cost
 *     28  word   flag   RIB_FLAG_...
 *     32  word   n_hop
 *     36  hop[n_hop], placed 8 bytes apart:
 *          +0  word   ctrl   bits 23 to 16: m, the number of labels
 *          +4  word   intf   egress interface
 *          +8  bytes  label[m of 3]  4 each; unused ones are zeroed
 *
 * The labels of a hop lie where the next hop's words are. Hops are converted in order, so a later hop's words replace
 * an earlier one's labels, and only the last hop's labels survive whole. In place, that goes for what is read as well.
 */
void rib_hton_ucast_route(const void *src, void *dst);
/** Network to host: see rib_hton_ucast_route. */
void rib_ntoh_ucast_route(const void *src, void *dst);

/**
 * Multicast route as the RIB holds it, 20 bytes and 4 for each interface.
 *
 *      0  word   uuid    client identity of the owner
 *      4  word   vsan
 *      8  bytes  fcid    4: destination
 *     12  word   mask
 *     16  word   n_intf
 *     20  word   intf[n_intf]  member interfaces
 */
void rib_hton_mcast_route(const void *src, void *dst);
/** Network to host: see rib_hton_mcast_route. */
void rib_ntoh_mcast_route(const void *src, void *dst);

/**
 * List of topology versions, 12 bytes and 4 for each version.
 *
 *      0  word  (two words carried)
 *      8  word  n_version
 *     12  word  version[n_version]
 */
void rib_hton_topo(const void *src, void *dst);
/** Network to host: see rib_hton_topo. */
void rib_ntoh_topo(const void *src, void *dst);

/** Synchronisation record of the label table, 52 bytes: thirteen words. */
void rib_hton_sync_fcl(const void *src, void *dst);
/** Network to host: see rib_hton_sync_fcl. */
void rib_ntoh_sync_fcl(const void *src, void *dst);

/** Synchronisation record of the multicast table, 28 bytes: seven words. */
void rib_hton_sync_fcm(const void *src, void *dst);
/** Network to host: see rib_hton_sync_fcm. */
void rib_ntoh_sync_fcm(const void *src, void *dst);

/** Synchronisation record of the unicast table, 32 bytes: eight words. */
void rib_hton_sync_fcu(const void *src, void *dst);
/** Network to host: see rib_hton_sync_fcu. */
void rib_ntoh_sync_fcu(const void *src, void *dst);

/** Synchronisation query, 12 bytes: three words. */
void rib_hton_sync_query(const void *src, void *dst);
/** Network to host: see rib_hton_sync_query. */
void rib_ntoh_sync_query(const void *src, void *dst);

/** Answer to a synchronisation query, 8 bytes: two words. */
void rib_hton_sync_info(const void *src, void *dst);
/** Network to host: see rib_hton_sync_info. */
void rib_ntoh_sync_info(const void *src, void *dst);

/* --- Queries of the RIB's state, registration --------------------------------------------------------------------- */

/** Request to verify routes, 12 bytes: three words. */
void rib_hton_verify(const void *src, void *dst);
/** Network to host: see rib_hton_verify. */
void rib_ntoh_verify(const void *src, void *dst);

/** Query of the registrations, 12 bytes: three words. */
void rib_hton_reg_query(const void *src, void *dst);
/** Converts nothing: neither buffer is touched, and the receiver reads the words as they arrived. */
void rib_ntoh_reg_query(const void *src, void *dst);

/** Query of the reachable domains, 16 bytes: four words. */
void rib_hton_dm_query(const void *src, void *dst);
/** Network to host: see rib_hton_dm_query. */
void rib_ntoh_dm_query(const void *src, void *dst);

/** Query of the system's modules, 16 bytes: four words. */
void rib_hton_sys_query(const void *src, void *dst);
/** Network to host: see rib_hton_sys_query. */
void rib_ntoh_sys_query(const void *src, void *dst);

/** Query of the database, 16 bytes: four words. */
void rib_hton_db_query(const void *src, void *dst);
/** Network to host: see rib_hton_db_query. */
void rib_ntoh_db_query(const void *src, void *dst);

/** Query of the RIB's internals, 16 bytes: four words. */
void rib_hton_in_query(const void *src, void *dst);
/** Network to host: see rib_hton_in_query. */
void rib_ntoh_in_query(const void *src, void *dst);

/** Answer to a test query, 8 bytes: two words. */
void rib_hton_test_info(const void *src, void *dst);
/** Network to host: see rib_hton_test_info. */
void rib_ntoh_test_info(const void *src, void *dst);

/**
 * Query of a node, 8 bytes.
 *
 *      0  word   (carried)
 *      4  bytes  (2)
 *      6  bytes  (2)  written as zero
 */
void rib_hton_node_query(const void *src, void *dst);
/** Network to host: see rib_hton_node_query. */
void rib_ntoh_node_query(const void *src, void *dst);

/** Test query, 48 bytes: two words, 40 bytes carried. */
void rib_hton_test_query(const void *src, void *dst);
/** Network to host: see rib_hton_test_query. */
void rib_ntoh_test_query(const void *src, void *dst);

/** Registration of a client, 88 bytes: two words (client identity, route distance), 80 bytes carried. */
void rib_hton_register(const void *src, void *dst);
/** Network to host: see rib_hton_register. */
void rib_ntoh_register(const void *src, void *dst);

/* --- Answers that carry what the RIB holds ------------------------------------------------------------------------ */

/**
 * Label routes of the table, 4 bytes and the entries one behind the other.
 *
 *      0  word  n
 *      4  route[n], each as rib_hton_lbl_route has it, and as long as that returns
 */
void rib_hton_fclrt_info(const void *src, void *dst);
/** Network to host: see rib_hton_fclrt_info. */
void rib_ntoh_fclrt_info(const void *src, void *dst);

/**
 * Multicast routes of the table.
 *
 *      0  word  n
 *      4  route[n], each as rib_hton_mcast_route has it, placed 20 bytes apart
 *
 * Entries that carry interfaces overlap those behind them; they are converted in order, in place too.
 */
void rib_hton_fcmrt_info(const void *src, void *dst);
/** Network to host: see rib_hton_fcmrt_info. */
void rib_ntoh_fcmrt_info(const void *src, void *dst);

/**
 * Unicast routes of the table.
 *
 *      0  word  n
 *      4  gap   (4)
 *      8  route[n], each as rib_hton_ucast_route has it, placed 36 bytes apart
 *
 * Entries that carry hops overlap those behind them; they are converted in order, in place too.
 */
void rib_hton_fcurt_info(const void *src, void *dst);
/** Network to host: see rib_hton_fcurt_info. */
void rib_ntoh_fcurt_info(const void *src, void *dst);

/**
 * Databases, 8 bytes and 20 for each.
 *
 *      0  word  n
 *      4  gap   (4)
 *      8  database[n], five words each
 */
void rib_hton_db_info(const void *src, void *dst);
/** Network to host: see rib_hton_db_info. */
void rib_ntoh_db_info(const void *src, void *dst);

/**
 * Reachable domains, 4 bytes and 68 for each.
 *
 *      0  word  n
 *      4  entry[n], 68 bytes each:
 *          +0  word   (carried)
 *          +4  bytes  (64)
 */
void rib_hton_dm_info(const void *src, void *dst);
/**
 * Converts n of the destination where it stands, and nothing else: the source is not read, and the receiver reads the
 * entries as they arrived.
 */
void rib_ntoh_dm_info(const void *src, void *dst);

/**
 * The RIB's internals; what is carried depends on the kind.
 *
 *      0  word   (carried)
 *      4  word   kind
 *      8  bytes  (24 for kind 1, 192 for kind 2, none for any other)
 *
 * @return kind
 */
uint32_t rib_hton_in_info(const void *src, void *dst);
/** Network to host: see rib_hton_in_info. Returns nothing. */
void rib_ntoh_in_info(const void *src, void *dst);

/**
 * Registrations, 4 bytes and 88 for each.
 *
 *      0  word  n
 *      4  entry[n], 88 bytes each:
 *          +0  word   client identity
 *          +4  word   route distance
 *          +8  name   80: the first 7 characters of the source's name at most, and zeroes
 */
void rib_hton_reg_info(const void *src, void *dst);
/** Network to host: see rib_hton_reg_info. */
void rib_ntoh_reg_info(const void *src, void *dst);

/**
 * Modules of the system, 4 bytes and 1560 for each.
 *
 *      0  word  n
 *      4  module[n], 1560 bytes each:
 *           +0  node record as fib_hton_node has it
 *          +16  bytes  (4)  first half of the bitmap of ports present
 *          +20  gap    (4)
 *          +24  port[64], each as fib_hton_port has it
 */
void rib_hton_sys_info(const void *src, void *dst);
/** Network to host: see rib_hton_sys_info. */
void rib_ntoh_sys_info(const void *src, void *dst);

/** A node: the record of fib_hton_node. */
void rib_hton_node_info(const void *src, void *dst);
/** Network to host: see rib_hton_node_info. */
void rib_ntoh_node_info(const void *src, void *dst);

/**
 * Verification query, 52 bytes.
 *
 *      0  word  (two words carried)
 *      8  word  (carried)
 *     12  word  type
 *     16  key, 32 bytes of room
 *     48  word  (carried)
 *
 * The low 16 bits of type choose the key: with any bit of 0x1111 a label key (fib_hton_verf_fcl, 32 bytes), else with
 * any of 0x2222 a multicast key (fib_hton_verf_fcm, 12 bytes), else a unicast key (fib_hton_verf_fcu, 16 bytes). What
 * the key leaves of its room is a gap.
 */
void rib_hton_verf_query(const void *src, void *dst);
/** Network to host: see rib_hton_verf_query. */
void rib_ntoh_verf_query(const void *src, void *dst);

/**
 * Verification report, 16 bytes and n keys.
 *
 *      0  word  n
 *      4  word  type
 *      8  word  time at which it was begun
 *     12  word  time at which it was completed; 0 where it is not
 *     16  key[n], chosen by type as in rib_hton_verf_query, placed 32 (label), 12 (multicast) or 16 (unicast) bytes
 *         apart
 */
void rib_hton_verf_info(const void *src, void *dst);
/** Network to host: see rib_hton_verf_info. */
void rib_ntoh_verf_info(const void *src, void *dst);

#ifdef __cplusplus
}
#endif

#endif
