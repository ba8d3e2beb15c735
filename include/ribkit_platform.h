/** @file
 * What libribkit-platform offers a Linux host beyond the switch's own services (qip.h, yelk.h, if_index.h): opening a
 * handle on a transport, listening, the debug history as a ring, interface names.
 */
#ifndef RIBKIT_PLATFORM_H
#define RIBKIT_PLATFORM_H

#include "if_index.h"
#include "qip.h"
#include "yelk.h"
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Opens a service handle.
 *
 * "local:" joins the one bus of this process, "local:NAME" the bus of that name.
 *
 * "unix:DIRECTORY" meets the handles of all processes of this machine that say the same directory, without a server:
 * whoever listens has a socket there, named NODE.SAP. What differs from "local:":
 *
 * - The first who listens makes the directory (mode 0700). Who may write in it may listen, who may reach a socket in it
 *   may send: to anybody else that is EACCES.
 * - A request counts against the listener's bound until it is answered or dropped, or the listener receives again.
 * - A group's message that may wait does so for a second at most: who then has no room misses it; the history tells.
 * - Beyond 64 MiB a message is EMSGSIZE.
 * - A listener that ends lets waits for its answers end with ECONNRESET, and sends fail with ENOTCONN until another one
 *   is there, which the next send finds. A connection that it refuses, as there are too many, is ENOBUFS.
 * - After a fork the handle is the parent's alone.
 *
 * "nats://[USER:PASSWORD@|TOKEN@]HOST[:PORT][/FABRIC][?name=NAME][&queue=NAME]" connects to a server ("tls://..." with
 * TLS); handles with the same FABRIC (default "rib") meet there. The environment may say the identity where the URL
 * does not: RIBKIT_NATS_USER and RIBKIT_NATS_PASSWORD, RIBKIT_NATS_TOKEN, or RIBKIT_NATS_CREDENTIALS (a file).
 * RIBKIT_NATS_CA and RIBKIT_NATS_CERT with RIBKIT_NATS_KEY (files) ask for TLS, too: the authority that the server's
 * certificate is checked with, and HOST against it (the system's authorities without), and our own certificate.
 *
 * An address is the subject FABRIC.NODE.SAP.NAME (node as eight hexadecimal digits), answers go to subjects below
 * _INBOX. NAME is the sender's, of letters, digits, '-' and '_': the URL's, else the user where he is called so, else
 * one made up for the handle. The server's permissions say who may send under which. What differs from "local:":
 *
 * - Several handles may listen at one address. All are given every message, or, with queue=NAME, one of those with that
 *   name.
 * - A full queue holds messages back at the receiver: no send fails or waits for it. Beyond 65536 messages of one NAME,
 *   or its share of 64 MiB, new ones of this NAME are lost; the history tells.
 * - That nobody listens (ENOTCONN) is known when the answer is awaited.
 * - A lost server ends waits for answers with ECONNRESET and lets sends fail with ENOTCONN until the handle has
 *   reconnected, which it does by itself.
 * - More than the server takes is EMSGSIZE, what it does not permit EACCES.
 *
 * @param url the transport
 * @param handle filled with the new handle, which the caller closes with qip_close
 * @return 0; else non-zero with errno:
 *         - EINVAL: malformed, or a key without its certificate
 *         - EPROTONOSUPPORT: no such transport
 *         - ECONNREFUSED: no server there, or it hangs up
 *         - EHOSTUNREACH: the name of its host has no address
 *         - ETIMEDOUT: it does not answer within five seconds
 *         - EACCES: it does not know us
 *         - EPROTO: no TLS comes about, since one side does not want it or does not believe the other's certificate (a
 *           server may also just hang up on ours), or a file holds none; or no NATS server is there
 *         - EIO: a file of credentials is damaged, or the server refuses for another reason
 *         - ENOENT and others of opening a file: one named by the environment cannot be read
 *         - ENOTSUP: other processes keep real time, and a fault script has put the virtual clock in force
 *         - ENOTDIR: DIRECTORY is none
 */
int qip_open(const char *url, uint32_t *handle);

/**
 * As qip_open, for whoever has less time.
 * @param milliseconds how long a server may take to answer, when the handle is opened and whenever it is asked later:
 * at an address's first message, and when an address is listened at. At least 1; more than five seconds are five
 */
int qip_open_within(const char *url, uint32_t milliseconds, uint32_t *handle);

/**
 * Closes a handle: what waits for it unread is dropped, every wait on it ends with ECANCELED. References that it handed
 * out stay valid until they are dropped. @return 0; else non-zero with errno (EBADF: unknown handle)
 */
int qip_close(uint32_t handle);

/**
 * Receives here what is sent to an address; a handle may listen at several. Messages are taken with qip_recv and
 * QIP_RECV_INCOMING. One handle listens at an address, but for those with service access point 0: they are groups,
 * where any number of handles listens, each is given every message, and a send succeeds where nobody listens
 * (0xfe000000/0 are the local listeners of notifications, 0xff000001/0 the modules).
 *
 * Senders take turns: a message waits for at most one of each other sender whose messages wait here, however many those
 * are. The messages of one sender (qip_sender_get) stay in order.
 *
 * @param bound messages of one sender to this address that may wait here, at least 1: beyond it a send that must not
 *        block fails with EAGAIN and any other send waits, and nobody else does. A group's message is given to all of
 *        its listeners or to none. Once 1024 senders have something waiting at a handle's addresses, the next one finds
 *        no room either.
 * @return 0; else non-zero with errno (EADDRINUSE: taken; EINVAL: bound 0; EBADF: unknown handle; EACCES: not
 * permitted)
 */
int qip_listen(uint32_t handle, const struct qip_addr *addr, uint32_t bound);

/**
 * Like qip_listen, for whoever knows the NAMEs of those who may send here: over a server nobody else's messages arrive,
 * and each NAME has a subscription, a thread and 64 MiB of its own for what is held back. In process nobody vouches for
 * a name, and the list is ignored.
 * @param names the NAMEs, of letters, digits, '-' and '_'; only read during the call
 * @param count of them; 0 makes no difference from qip_listen
 * @return 0; else non-zero with errno as qip_listen (EINVAL also: not a NAME)
 */
int qip_listen_to(uint32_t handle, const struct qip_addr *addr, uint32_t bound, const char *const *names,
                  uint32_t count);

/** @return the opcode of a received message; 0 for an answer */
uint32_t qip_opcode_get(const struct qip_ref *ref);

/**
 * Who sent a received request or notification, as the transport knows it and not as its payload says.
 * @return a number, the same for all messages of one sender and nobody else's: of a handle ("local:"), of a connection
 *         ("unix:"), or of a NAME (over a server); 0 for an answer
 */
uint32_t qip_sender_get(const struct qip_ref *ref);

/**
 * @return the NAME under which the sender of a message is known: over a server the last token of the subject,
 *         over "unix:" the user of its process (the digits of an unknown one); "" where
 *         the transport knows none ("local:"), and for an answer. Valid until the reference is dropped
 */
const char *qip_sender_name(const struct qip_ref *ref);

/**
 * How often a handle has lost its server, or a listener ("unix:"), and found it again, or has missed messages for a
 * group since it did not read ("unix:"). What was sent to its addresses meanwhile did not arrive, so that whoever lives
 * on notifications looks again.
 * @return the number since the handle was opened; 0 in process, and for an unknown handle
 */
uint32_t qip_reconnections(uint32_t handle);

/**
 * @return microseconds on the clock that waits and delays are measured by: since the machine's start, or, under the
 *         virtual clock, since that was put in force
 */
uint64_t qip_now(void);

/** @return references handed out by this process's transports and not yet dropped */
uint32_t qip_refs_held(void);

/**
 * Puts a fault script in force for all handles of the process that have none of their own (qip_faults_load_for), also
 * for those that are opened later, instead of the one before. A call that another thread has begun may still be asked
 * about at the one before: a run that has to go the same way twice loads its script while nobody else does more than
 * wait. The lines of a script, of which '#' and what follows is a comment:
 *
 * - seed NUMBER: of the random choices; 1 without such a line
 * - clock virtual: waits and delays take no real time: it jumps whenever every thread that has used the service waits
 * in it. Not while a handle is open that other processes reach
 * - fail CALL WHEN ERRNO: CALL is open, listen, send, recv or drop (which releases all the same), ERRNO a name or a
 * number
 * - drop WHEN: a message is lost
 * - delay WHEN MILLISECONDS: it arrives later
 * - duplicate WHEN: it arrives twice
 * - reorder WHEN: it arrives after the next one to the same handle
 * - truncate WHEN BYTES: no more than its first bytes arrive
 *
 * WHEN is N (the N-th, from 1), "every N", or "one-in N" (at random). Calls are counted by their kind, messages as they
 * arrive, requests, answers and notifications alike: over all handles that the script is in force for.
 *
 * @param file the script's path; null ends the one in force
 * @param error receives, within error_size bytes, "FILE:LINE: what is wrong" or "FILE: cannot be read: why" on failure
 * @return 0; else non-zero with errno EINVAL, and the script before stays in force
 */
int qip_faults_load(const char *file, char *error, uint32_t error_size);

/**
 * Puts a fault script in force for one handle, instead of the one before: its calls and what arrives for it, and nobody
 * else's. The script has no "clock virtual": the clock is the process's.
 *
 * @param handle an open one, which from now on follows no script that is loaded for all
 * @param file the script's path; null: nothing disturbs this handle
 * @param error as of qip_faults_load
 * @return 0; else non-zero with errno EBADF (no such handle) or EINVAL, and what was in force stays
 */
int qip_faults_load_for(uint32_t handle, const char *file, char *error, uint32_t error_size);

/**
 * For a thread that has used the service and is about to wait for something else than the service, such as another
 * thread's start or end: under a virtual clock the others run, and the time passes, without it until its next call.
 */
void qip_step_aside(void);

/**
 * For a thread that has just been started: under a virtual clock the time does not pass without it from now on, and its
 * first call has its place behind those of the threads that are ready. Whoever has started it waits until this is done,
 * without qip_step_aside, and a run goes the same way every time.
 */
void qip_take_part(void);

/** Waits so long, by the clock that delays are measured by. */
void qip_pause(uint32_t milliseconds);

/**
 * The time of the virtual clock that a fault script has put in force: it begins at zero, and passes only while all
 * threads wait. For programs whose other clocks are to agree with it.
 *
 * @param microseconds filled with it
 * @return 0; else non-zero with errno ENOTSUP, where real time is kept
 */
int qip_virtual_time(uint64_t *microseconds);

/*
 * The debug history behind yelk.h: the latest events of this process, at most 1024. Every event is recorded unless its
 * id and subtype were switched off.
 */

/** Records events of this id and subtype (on not 0), or ignores them from now on (on 0). */
void yelk_hist_subtype_set(uint32_t event_id, uint32_t subtype, int on);

/** Prints the history on standard output, the oldest event first: its number, its age in seconds, what happened. */
void yelk_hist_print(void);

/** Empties the history; numbers start at 1 again. */
void yelk_hist_clear(void);

/** Lets debug output of levels from 1 up to this one be printed; 0, the start value, prints none. */
void yelk_dbg_level_set(uint32_t level);

/*
 * Interface indices: the kind in bits 31 to 24, the rest as the kind says; every other value has no type. 0 is no
 * interface.
 *
 *   kind  name             bits 23 to 16   bits 15 to 0
 *   1     fcS/P            slot, from 1    port, from 1
 *   2     port-channel N   0               number, from 1
 *   3     vsanN            0               VSAN, 0 to 4095
 *   4     mgmtN            0               number, from 0
 *   5     sup-fcN          0               number, from 0
 *   6     loopbackN        0               number, from 0
 *   7     fc-tunnelN       0               number, from 0
 */
#define RIBKIT_IF_FC UINT32_C(1)
#define RIBKIT_IF_PORT_CHANNEL UINT32_C(2)
#define RIBKIT_IF_VSAN UINT32_C(3)
#define RIBKIT_IF_MGMT UINT32_C(4)
#define RIBKIT_IF_SUP_FC UINT32_C(5)
#define RIBKIT_IF_LOOPBACK UINT32_C(6)
#define RIBKIT_IF_FC_TUNNEL UINT32_C(7)

/**
 * Parses an interface name exactly as it is printed ("fc1/1", "port-channel 3").
 * @param if_index filled on success
 * @return 0; non-zero where it names no interface
 */
int if_index_parse(const char *name, uint32_t *if_index);

#ifdef __cplusplus
}
#endif

#endif
