/** @file
 * The platform's message-passing service, as the wrappers of rib_wrap.h use it. The core library only calls these
 * functions; whoever links it provides them: the switch's platform, libribkit-platform on a Linux host, a fake in a
 * test. Every int result is 0 on success, and non-zero with errno set on failure.
 */
#ifndef QIP_H
#define QIP_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Where a message goes, whoever listens there. */
struct qip_addr {
    uint32_t node;
    uint32_t sap; /**< service access point */
};

/** A message held by the service; opaque. */
struct qip_ref {
    uint32_t word[7];
};

/**
 * Options of a send: word 0 the kind (1 do not block, 2 with word 8 set to 1: to the modules), word 1 not 0: do not
 * block. Null is all zero: wait where the receiver's queue is full.
 */
struct qip_send_opts {
    uint32_t word[20];
};

/* What a receive takes: word 0 of its options. */
#define QIP_RECV_INCOMING UINT32_C(0)   /* the oldest message sent to an address that the handle listens at */
#define QIP_RECV_BY_TOKEN UINT32_C(1)   /* the answer that carries the token in word 3 */
#define QIP_RECV_ANY_ANSWER UINT32_C(2) /* the oldest answer to any request of the handle */
#define QIP_RECV_ANYTHING UINT32_C(3)   /* the oldest answer, else the oldest incoming message */

/**
 * Options of a receive: word 0 as above, word 1 not 0: do not wait, word 2 the longest wait in seconds, word 3 the
 * token awaited, word 4 milliseconds added to word 2. Words 2 and 4 both 0: no limit. Null is all zero.
 */
struct qip_recv_opts {
    uint32_t word[20];
};

/**
 * Sends one message.
 * @param handle the caller's opened service handle
 * @param addr where to; read during the call only
 * @param opcode what the message is; 0 for an answer
 * @param payload payload_size bytes, read during the call only
 * @param ref_out null, or filled with the sent message's reference, which the caller drops; only a request sent with it
 *        can be awaited, an answer to any other is thrown away
 * @param req_ref null for a new message; else the received request that this message answers: it goes to whoever asked,
 *        whatever addr and opcode say, and its arrival is not reported (an answer that comes too late is thrown away)
 * @param opts null, or options
 * @return 0; else non-zero with errno: EAGAIN when the receiver's queue is full and the send must not block, ENOTCONN
 *         when nobody listens at addr, ENOBUFS when too many answers are awaited already, EBADF for an unknown handle,
 *         EINVAL for a req_ref that is no received message, ECANCELED when the handle was closed while the send waited
 */
int qip_send(uint32_t handle, const struct qip_addr *addr, uint32_t opcode, const void *payload, uint32_t payload_size,
             struct qip_ref *ref_out, const struct qip_ref *req_ref, const struct qip_send_opts *opts);

/**
 * Blocks until a message that matches the options arrives.
 * @param ref_out filled with the received message's reference, which the caller drops
 * @return 0; else non-zero with errno: ETIMEDOUT when the wait's limit has passed (the token is no longer awaited),
 *         EAGAIN when nothing is there and the receive must not wait, EINVAL for a token that awaits no answer or an
 *         unknown word 0, EBADF for an unknown handle, ECANCELED when the handle was closed while the receive waited
 */
int qip_recv(uint32_t handle, struct qip_ref *ref_out, const struct qip_recv_opts *opts);

/** Releases a message held by the service. @return 0; else non-zero with errno (EBADF: ref holds no message) */
int qip_drop(uint32_t handle, struct qip_ref *ref);

/** @return the request-response token: of a sent request the one its answer will carry, of an answer its request's */
uint32_t qip_rr_token_get(const struct qip_ref *ref);

/** @return the received payload; it belongs to the service and lives until the reference is dropped */
void *qip_payload_get(const struct qip_ref *ref);

/** @return the received payload's length in bytes */
uint32_t qip_payload_size(const struct qip_ref *ref);

#ifdef __cplusplus
}
#endif

#endif
