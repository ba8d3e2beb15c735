/** @file
 * The RIB that `ribkit rib` and `ribkit lab` run: where it listens, which messages it takes, how long they are. A
 * message is a header and the records behind it, in network order, as rib_codec.h lays them out.
 *
 * The addresses, and opcode 545 of the envelope (RIB_CMI_OPCODE), are the switch's. The other opcodes are this RIB's
 * own: a program for the switch has its own numbers there.
 */
#ifndef RIBKIT_RIB_H
#define RIBKIT_RIB_H

#include "qip.h"
#include "rib_wrap.h"
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Where the RIB listens. */
static const struct qip_addr ribkit_rib_address = {RIB_WRAP_NODE_RIB, RIB_WRAP_SAP_RIB};
/** Where notifications are heard, by any number of listeners. */
static const struct qip_addr ribkit_listeners_address = {RIB_WRAP_NODE_LISTENERS, RIB_WRAP_SAP_GROUP};
/** Where the modules hear notifications, any number of them. */
static const struct qip_addr ribkit_modules_address = {RIB_WRAP_NODE_MODULES, RIB_WRAP_SAP_GROUP};

/*
 * Requests. Any of them may come in an envelope; its answer then does, too. The RIB answers what it cannot use with
 * rib_fcurt_rsp, which then says why.
 */

/** A unicast route update: rib_fcurt_update with its records of rib_fcurt; answered with rib_fcurt_rsp. */
#define RIBKIT_OPCODE_FCURT_UPDATE UINT32_C(0x101)
/**
 * Asks for unicast routes: rib_fcurt_query, its count the most that is wanted; VSAN, FC ID and mask to start at.
 * Answered with a rib_fcurt_update that adds the routes from there on, all of one VSAN and one client, of at most
 * RIBKIT_ANSWER_LIMIT bytes; with none where there are no more.
 */
#define RIBKIT_OPCODE_FCURT_QUERY UINT32_C(0x102)

/** Kinds of a query: routes of all VSANs, or only those of the one it starts at. */
#define RIBKIT_QUERY_ALL UINT32_C(0x1)
#define RIBKIT_QUERY_VSAN_ALL UINT32_C(0x100)

/*
 * The other tables and all that the RIB tells of itself. docs/protocol.md has a row for each: what it does, what it
 * answers, what it causes.
 */

/** A multicast route update: rib_fcmrt_update with its records of rib_fcmrt; answered with rib_fcmrt_rsp. */
#define RIBKIT_OPCODE_FCMRT_UPDATE UINT32_C(0x111)
/** Asks for multicast routes: rib_fcmrt_query, answered with rib_fcmrt_update or rib_fcmrt_info. */
#define RIBKIT_OPCODE_FCMRT_QUERY UINT32_C(0x112)
/** A label route update: rib_fclrt_update with its records of rib_fclrt; answered with rib_fclrt_rsp. */
#define RIBKIT_OPCODE_FCLRT_UPDATE UINT32_C(0x121)
/** Asks for label routes: rib_fclrt_query, answered with rib_fclrt_update or rib_fclrt_info. */
#define RIBKIT_OPCODE_FCLRT_QUERY UINT32_C(0x122)
/** How many routes each VSAN has in each table: rib_db_query, answered with rib_db_info. */
#define RIBKIT_OPCODE_DB_QUERY UINT32_C(0x131)
/** Which domains are reached: rib_dm_query, answered with rib_dm_info. */
#define RIBKIT_OPCODE_DM_QUERY UINT32_C(0x132)
/** The modules and their ports: rib_sys_query, answered with rib_sys_info. */
#define RIBKIT_OPCODE_SYS_QUERY UINT32_C(0x133)
/** The state of the RIB itself: rib_in_query, answered with rib_in_info. */
#define RIBKIT_OPCODE_IN_QUERY UINT32_C(0x134)
/** Who has registered: rib_reg_query, answered with rib_reg_info. */
#define RIBKIT_OPCODE_REG_QUERY UINT32_C(0x135)
/** A module's record: rib_node_query, answered with rib_node_info. */
#define RIBKIT_OPCODE_NODE_QUERY UINT32_C(0x136)
/** Turns a history line for each request on or off: rib_test_query, answered with rib_test_info. */
#define RIBKIT_OPCODE_TEST_QUERY UINT32_C(0x137)
/** What a verification found: rib_verf_query, answered with rib_verf_info. */
#define RIBKIT_OPCODE_VERF_QUERY UINT32_C(0x138)
/** Compares a table with the modules: rib_verify, answered with the response of the table. */
#define RIBKIT_OPCODE_VERIFY UINT32_C(0x139)
/** Registers a client, or says that it is still there: rib_register, answered with rib_fcurt_rsp. */
#define RIBKIT_OPCODE_REGISTER UINT32_C(0x13a)
/** The latest changes of a table: rib_sync_query, answered with sync records or rib_sync_info. */
#define RIBKIT_OPCODE_SYNC_QUERY UINT32_C(0x13b)
/** States of VSANs: vsan_query, answered with fib_vsan_update. */
#define RIBKIT_OPCODE_VSAN_QUERY UINT32_C(0x13c)
/** Which way a flow goes: rib_fib_fcu_lb_query, answered with rib_fib_fcu_lb_rsp. */
#define RIBKIT_OPCODE_FCU_LB_QUERY UINT32_C(0x13d)

/** Asks whether a RIB is there. Without payload; "not supported" is the answer, of which the RIB says nothing else. */
#define RIBKIT_OPCODE_PROBE UINT32_C(0)

/**
 * Between RIBs, where a server lets several listen at one address: a claim to it. Five words in network order: whether
 * the sender has listened for some seconds already; microseconds from 1970 to its start (two words); a random number
 * (two words). Any other RIB there answers with its own. Whoever is answered by an earlier one, or by one that has
 * listened for some seconds, gives way.
 */
#define RIBKIT_OPCODE_CLAIM UINT32_C(0x103)

/**
 * Asks for the formats of the RIB's messages; without payload. The answer, in network order: a digest over all
 * messages, how many there are, and of each its name (28 bytes, the rest 0) and the digest of its format. Two programs
 * with the same digest of a message understand each other's bytes. A RIB that cannot be asked answers "not supported".
 */
#define RIBKIT_OPCODE_WIRE_DIGESTS UINT32_C(0x104)

/** A notification without payload, to the listeners and the modules: the RIB has started, with empty tables. */
#define RIBKIT_OPCODE_STARTED UINT32_C(0x201)

/*
 * Notifications to the listeners: routes that a client has changed, as an update message of that client, in the order
 * of the changes. A client registers to be told of what changes.
 */
#define RIBKIT_OPCODE_FCURT_NOTE UINT32_C(0x211) /**< rib_fcurt_update */
#define RIBKIT_OPCODE_FCMRT_NOTE UINT32_C(0x212) /**< rib_fcmrt_update */
#define RIBKIT_OPCODE_FCLRT_NOTE UINT32_C(0x213) /**< rib_fclrt_update */

/*
 * Between the RIB and the modules. Module N, from 1, listens at node RIBKIT_NODE_MODULE, service access point N. What
 * consists of several messages of the catalogue has them one behind the other; docs/protocol.md tells how.
 */

/** Where modules listen, each at the service access point of its number. */
#define RIBKIT_NODE_MODULE UINT32_C(0xff000401)
/** Modules are numbered from 1 to this. */
#define RIBKIT_MOST_MODULES UINT32_C(256)

/** Unicast routes for a module: fib_fcu_update and fib_fcu_path; answered with fib_fcu_rsp. */
#define RIBKIT_OPCODE_FIB_FCU_UPDATE UINT32_C(0x301)
/** Multicast routes for a module: fib_fcm_update and fib_fcm_path; answered with fib_fcm_rsp. */
#define RIBKIT_OPCODE_FIB_FCM_UPDATE UINT32_C(0x302)
/** Label routes for a module: fib_fcl_update and fib_fcl_path; answered with fib_fcl_rsp. */
#define RIBKIT_OPCODE_FIB_FCL_UPDATE UINT32_C(0x303)
/** VSANs and their settings: fib_vsan_update; answered with fib_fcu_rsp. */
#define RIBKIT_OPCODE_FIB_VSAN_UPDATE UINT32_C(0x304)
/** Which frames change their VSAN: fib_vsan_rewrite_update and paths; answered with fib_vsan_rewrite_rsp. */
#define RIBKIT_OPCODE_FIB_REWRITE_UPDATE UINT32_C(0x305)

/* What anybody may ask a module. */
#define RIBKIT_OPCODE_FIB_FCU_QUERY UINT32_C(0x311)  /**< rib_fcurt_query: its unicast entries */
#define RIBKIT_OPCODE_FIB_FCM_QUERY UINT32_C(0x312)  /**< rib_fcmrt_query: its multicast entries */
#define RIBKIT_OPCODE_FIB_FCL_QUERY UINT32_C(0x313)  /**< rib_fclrt_query: its label entries */
#define RIBKIT_OPCODE_FIB_NODE_QUERY UINT32_C(0x314) /**< rib_node_query: what it tells the RIB of itself */
#define RIBKIT_OPCODE_FIB_VSAN_QUERY UINT32_C(0x315) /**< vsan_query: the VSANs that it knows */
#define RIBKIT_OPCODE_FIB_LB_QUERY UINT32_C(0x316)   /**< rib_fib_fcu_lb_query: which way a flow goes */
#define RIBKIT_OPCODE_FIB_VERF_QUERY UINT32_C(0x317) /**< rib_verf_query: what the last comparison has found */

/** A module tells the RIB of itself: fib_node, fib_sync and a fib_port for each port; answered with rib_fcurt_rsp. */
#define RIBKIT_OPCODE_FIB_NODE UINT32_C(0x321)

/** A client's identity is at most this, so that it fits beside a VSAN into a word of a query. */
#define RIBKIT_LAST_CLIENT UINT32_C(0xfffff)

/* Sizes in bytes. */
#define RIBKIT_FCURT_UPDATE_SIZE UINT32_C(980) /**< of rib_fcurt_update without its records */
#define RIBKIT_FCURT_SIZE UINT32_C(32)         /**< of a record, rib_fcurt, without its next hops */
#define RIBKIT_FCURT_HOP_SIZE UINT32_C(8)      /**< of a record's next hop: interface index, domain */
#define RIBKIT_FCURT_RSP_SIZE UINT32_C(20)     /**< of rib_fcurt_rsp */
#define RIBKIT_FCURT_QUERY_SIZE UINT32_C(24)   /**< of rib_fcurt_query */
#define RIBKIT_CLAIM_SIZE UINT32_C(20)         /**< of a claim */
#define RIBKIT_ANSWER_LIMIT UINT32_C(65536)    /**< the longest answer of the RIB, but for a longer route */

/** A route has at most so many next hops. */
#define RIBKIT_MOST_HOPS UINT32_C(16)

#ifdef __cplusplus
}
#endif

#endif
