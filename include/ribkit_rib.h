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

/** Asks whether a RIB is there. Without payload; "not supported" is the answer, of which the RIB says nothing else. */
#define RIBKIT_OPCODE_PROBE UINT32_C(0)

/**
 * Between RIBs, where a server lets several listen at one address: a claim to it. Five words in network order: whether
 * the sender has listened for some seconds already; microseconds from 1970 to its start (two words); a random number
 * (two words). Any other RIB there answers with its own. Whoever is answered by an earlier one, or by one that has
 * listened for some seconds, gives way.
 */
#define RIBKIT_OPCODE_CLAIM UINT32_C(0x103)

/** A notification without payload, to the listeners and the modules: the RIB has started, with empty tables. */
#define RIBKIT_OPCODE_STARTED UINT32_C(0x201)

/* Sizes in bytes. */
#define RIBKIT_FCURT_UPDATE_SIZE UINT32_C(980) /**< of rib_fcurt_update without its records */
#define RIBKIT_FCURT_SIZE UINT32_C(32)         /**< of a record, rib_fcurt, without its next hops */
#define RIBKIT_FCURT_HOP_SIZE UINT32_C(8)      /**< of a record's next hop: interface index, domain */
#define RIBKIT_FCURT_RSP_SIZE UINT32_C(20)     /**< of rib_fcurt_rsp */
#define RIBKIT_FCURT_QUERY_SIZE UINT32_C(24)   /**< of rib_fcurt_query */
#define RIBKIT_CLAIM_SIZE UINT32_C(20)         /**< of a claim */
#define RIBKIT_ANSWER_LIMIT UINT32_C(65536)    /**< the longest answer of the RIB */

/** A route has at most so many next hops. */
#define RIBKIT_MOST_HOPS UINT32_C(16)

#ifdef __cplusplus
}
#endif

#endif
