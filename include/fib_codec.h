/** @file
 * Messages between the RIB and the forwarding tables (FIB) of the switching modules: updates and their paths, answers,
 * verification, nodes, ports, VSANs, VSAN rewriting and load balancing. What rib_codec.h says of converters, of the two
 * forms of a message and of its tables holds here too; none of these returns anything.
 */
#ifndef FIB_CODEC_H
#define FIB_CODEC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* --- Updates and paths -------------------------------------------------------------------------------------------- */

/** Header of a label update, 16 bytes: four words. */
void fib_hton_fcl_update(const void *src, void *dst);
/** Network to host: see fib_hton_fcl_update. */
void fib_ntoh_fcl_update(const void *src, void *dst);

/** Header of a multicast update, 16 bytes: four words. */
void fib_hton_fcm_update(const void *src, void *dst);
/** Network to host: see fib_hton_fcm_update. */
void fib_ntoh_fcm_update(const void *src, void *dst);

/** Header of a unicast update, 16 bytes: four words. */
void fib_hton_fcu_update(const void *src, void *dst);
/** Network to host: see fib_hton_fcu_update. */
void fib_ntoh_fcu_update(const void *src, void *dst);

/**
 * Unicast path, 348 bytes, host to network.
 *
 *      0  word   kind    translated, see below
 *      4  bytes  fcid    4: destination
 *      8  word   mask
 *     12  bytes  (4)     0xf0 at 13 marks a special route
 *     16  word   (two words carried)
 *     24  word   n_path
 *     28  slot[n_path of 16], 20 bytes each:
 *          +0  word  bits 23 to 16: n, the number of hops
 *          +4  word  (carried)
 *          +8  word  hop[n of 3]
 *
 * The kind is not taken from the source; the first that holds is written: 8 where byte 13 is 0xf0; 6 where the
 * destination is 0xfffff0 to 0xffffff, but 0x00ffffff itself; 7 where its last two bytes are both 0xff; 4.
 */
void fib_hton_fcu_path(const void *src, void *dst);
/**
 * Unicast path, network to host: see fib_hton_fcu_path for the layout. A kind whose low byte is zero stays as it
 * arrived; any other becomes the first that holds: 0x08000000 where the destination is 0xfffff0 to 0xffffff, but
 * 0x00ffffff itself; 0x01000000 where byte 13 is 0xf0; 0x02000000 where the mask is 0xffff00 or 0xffffff; 0x04000000.
 */
void fib_ntoh_fcu_path(const void *src, void *dst);

/**
 * Label path, 360 bytes.
 *
 *      0  word   (four words carried)
 *     16  bytes  (4)
 *     20  word   (carried)
 *     24  word   n_label
 *     28  word   n_path
 *     32  word   label[n_label of 2]
 *     40  slot[n_path of 16], as in fib_hton_fcu_path
 */
void fib_hton_fcl_path(const void *src, void *dst);
/** Network to host: see fib_hton_fcl_path. */
void fib_ntoh_fcl_path(const void *src, void *dst);

/**
 * Multicast path, 20 bytes and 4 for each member.
 *
 *      0  bytes  (4)
 *      4  word   (three words carried)
 *     16  word   n_member
 *     20  word   member[n_member]
 */
void fib_hton_fcm_path(const void *src, void *dst);
/** Network to host: see fib_hton_fcm_path. */
void fib_ntoh_fcm_path(const void *src, void *dst);

/* --- Answers and synchronisation ---------------------------------------------------------------------------------- */

/** Answer to a label update, 20 bytes: five words. */
void fib_hton_fcl_rsp(const void *src, void *dst);
/** Network to host: see fib_hton_fcl_rsp. */
void fib_ntoh_fcl_rsp(const void *src, void *dst);

/** Answer to a multicast update, 20 bytes: five words. */
void fib_hton_fcm_rsp(const void *src, void *dst);
/** Network to host: see fib_hton_fcm_rsp. */
void fib_ntoh_fcm_rsp(const void *src, void *dst);

/** Answer to a unicast update, 20 bytes: five words. */
void fib_hton_fcu_rsp(const void *src, void *dst);
/** Network to host: see fib_hton_fcu_rsp. */
void fib_ntoh_fcu_rsp(const void *src, void *dst);

/**
 * Position of a module's synchronisation, 16 bytes.
 *
 *      0  bytes  (2)
 *      2  gap    (2)
 *      4  word   (three words carried)
 */
void fib_hton_sync(const void *src, void *dst);
/** Network to host: see fib_hton_sync. */
void fib_ntoh_sync(const void *src, void *dst);

/* --- Verification ------------------------------------------------------------------------------------------------- */

/**
 * Verification entry of a unicast route, 16 bytes.
 *
 *      0  word  status
 *      4  word  vsan
 *      8  word  FC ID
 *     12  word  mask
 */
void fib_hton_verf_fcu(const void *src, void *dst);
/** Network to host: see fib_hton_verf_fcu. */
void fib_ntoh_verf_fcu(const void *src, void *dst);

/**
 * Verification entry of a multicast route, 12 bytes.
 *
 *      0  word  status
 *      4  word  vsan
 *      8  word  FC ID
 */
void fib_hton_verf_fcm(const void *src, void *dst);
/** Network to host: see fib_hton_verf_fcm. */
void fib_ntoh_verf_fcm(const void *src, void *dst);

/**
 * Verification entry of a label route, 32 bytes; both labels are converted, whatever their count.
 *
 *      0  word  status
 *      4  word  vsan
 *      8  word  (three words carried)
 *     20  word  number of labels
 *     24  word  label 0
 *     28  word  label 1
 */
void fib_hton_verf_fcl(const void *src, void *dst);
/** Network to host: see fib_hton_verf_fcl. */
void fib_ntoh_verf_fcl(const void *src, void *dst);

/**
 * Verification report on unicast routes, 20 bytes and 16 for each entry.
 *
 *      0  word  (four words carried)
 *     16  word  n
 *     20  entry[n], each as fib_hton_verf_fcu has it
 */
void fib_hton_fcu_rsp_path(const void *src, void *dst);
/** Network to host: see fib_hton_fcu_rsp_path. */
void fib_ntoh_fcu_rsp_path(const void *src, void *dst);

/** Verification report on multicast routes: as fib_hton_fcu_rsp_path, with entries of fib_hton_verf_fcm, 12 bytes. */
void fib_hton_fcm_rsp_path(const void *src, void *dst);
/** Network to host: see fib_hton_fcm_rsp_path. */
void fib_ntoh_fcm_rsp_path(const void *src, void *dst);

/** Verification report on label routes: as fib_hton_fcu_rsp_path, with entries of fib_hton_verf_fcl, 32 bytes. */
void fib_hton_fcl_rsp_path(const void *src, void *dst);
/** Network to host: see fib_hton_fcl_rsp_path. */
void fib_ntoh_fcl_rsp_path(const void *src, void *dst);

/* --- Nodes, ports, VSANs ------------------------------------------------------------------------------------------ */

/**
 * Node, 16 bytes.
 *
 *      0  bytes  (3)  module number less 1, module type, supervisor state
 *      3  bytes  (1)  written as zero
 *      4  half   number of ports
 *      6  half   node
 *      8  word   node address
 *     12  word   FIB state
 */
void fib_hton_node(const void *src, void *dst);
/** Network to host: see fib_hton_node. */
void fib_ntoh_node(const void *src, void *dst);

/**
 * Port, 24 bytes.
 *
 *      0  bytes  (5)  type, slot, port, channel, status
 *      5  bytes  (1)  0x80: part of a bundle; the other bits are written as zero
 *      6  half   destination index
 *      8  word   interface
 *     12  word   mode
 *     16  word   vsan
 *     20  word   in-order delivery mode
 */
void fib_hton_port(const void *src, void *dst);
/** Network to host: see fib_hton_port. */
void fib_ntoh_port(const void *src, void *dst);

/**
 * VSAN, 8 bytes.
 *
 *      0  word  latency in milliseconds
 *      4  word  one whole word: flags (bits 31 to 24), load balance (23 to 20), state (19 to 16), vsan (15 to 0)
 */
void fib_hton_vsan(const void *src, void *dst);
/** Network to host: see fib_hton_vsan. */
void fib_ntoh_vsan(const void *src, void *dst);

/**
 * VSAN update, 8 bytes and 8 for each VSAN.
 *
 *      0  word  (carried)
 *      4  word  n
 *      8  vsan[n], each as fib_hton_vsan has it
 */
void fib_hton_vsan_update(const void *src, void *dst);
/** Network to host: see fib_hton_vsan_update. */
void fib_ntoh_vsan_update(const void *src, void *dst);

/* --- VSAN rewriting ----------------------------------------------------------------------------------------------- */

/** Header of a VSAN-rewrite update, 16 bytes: four words. */
void fib_hton_vsan_rewrite_update(const void *src, void *dst);
/** Network to host: see fib_hton_vsan_rewrite_update. */
void fib_ntoh_vsan_rewrite_update(const void *src, void *dst);

/**
 * VSAN-rewrite path, 44 bytes; rib_vsan_rewrite_key_compare orders them.
 *
 *      0  word   (four words carried)
 *     16  bytes  (4)  of the first pair
 *     20  word        of the first pair
 *     24  bytes  (4)  of the second pair
 *     28  word        of the second pair
 *     32  word   (three words carried)
 */
void fib_hton_vsan_rewrite_path(const void *src, void *dst);
/** Network to host: see fib_hton_vsan_rewrite_path. */
void fib_ntoh_vsan_rewrite_path(const void *src, void *dst);

/** Answer to a VSAN-rewrite update, 20 bytes: five words. */
void fib_hton_vsan_rewrite_rsp(const void *src, void *dst);
/** Network to host: see fib_hton_vsan_rewrite_rsp. */
void fib_ntoh_vsan_rewrite_rsp(const void *src, void *dst);

/* --- Load balancing ----------------------------------------------------------------------------------------------- */

/**
 * Query of the path that a unicast flow takes, 20 bytes.
 *
 *      0  word   (carried)
 *      4  bytes  (8)
 *     12  word   (two words carried)
 */
void rib_fib_hton_fcu_lb_query(const void *src, void *dst);
/** Network to host: see rib_fib_hton_fcu_lb_query. */
void rib_fib_ntoh_fcu_lb_query(const void *src, void *dst);

/** Answer to a load-balance query, 8 bytes: two words. */
void rib_fib_hton_fcu_lb_rsp(const void *src, void *dst);
/** Network to host: see rib_fib_hton_fcu_lb_rsp. */
void rib_fib_ntoh_fcu_lb_rsp(const void *src, void *dst);

#ifdef __cplusplus
}
#endif

#endif
