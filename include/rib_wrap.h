/** @file
 * Messages to and from the routing information base: sending, awaiting, answering, dropping and notifying over the
 * message service of qip.h; the CMI envelope, which carries the sender's name and an inner opcode; lists of outstanding
 * request tokens.
 *
 * Result codes are those of rib_codes.h. Where the service fails, a function traces one line and returns
 * RIB_PLATFORM_FAILURE | (errno & 0xfff); nothing is retried. Handles are the service's.
 */
#ifndef RIB_WRAP_H
#define RIB_WRAP_H

#include "qip.h"
#include "rib_check.h"
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Where the wrappers send to. Bits 23 to 16 of the RIB's node are a partition's number - 1. */
#define RIB_WRAP_NODE_RIB UINT32_C(0xfe000001)
#define RIB_WRAP_SAP_RIB UINT32_C(25)
#define RIB_WRAP_NODE_LISTENERS UINT32_C(0xfe000000) /* local listeners of notifications; also named by answers */
#define RIB_WRAP_NODE_MODULES UINT32_C(0xff000001)
#define RIB_WRAP_SAP_GROUP UINT32_C(0) /* of listeners and modules: any number may listen there */

/** One message: a request, or an answer received. */
struct rib_wrap_msg {
    uint32_t uuid;    /**< client identity of the caller, which decides how failures are traced */
    uint32_t context; /**< the caller's own; copied from a request into its answer */
    uint32_t opcode;  /**< what the message is; 0 in an answer */
    struct qip_ref
        ref; /**< of an awaited request: filled and dropped by the wrapper; of an answer: the caller drops it */
    uint8_t *payload;      /**< to send; in an answer it points into the service's buffer, until ref is dropped */
    uint32_t payload_size; /**< in bytes */
};

/** Sends a message to the RIB; its answer cannot be awaited. @return result code */
uint32_t rib_wrap_qip_send(uint32_t handle, const struct rib_wrap_msg *req);

/**
 * Sends a message to the RIB, failing with EAGAIN's code where the send would have to wait.
 * @param ref_out null, or filled with the sent message's reference, which the caller drops; its token is that of the
 *        answer to come
 * @return result code
 */
uint32_t rib_wrap_qip_send_non_blk(uint32_t handle, struct qip_ref *ref_out, const struct rib_wrap_msg *req);

/**
 * Sends a request to the RIB and waits for its answer, 20 seconds at most.
 * @param req its ref is overwritten, and dropped before the call returns
 * @param answer zeroed first; on success uuid, context, ref, payload and payload_size are filled and the caller owns
 * ref
 * @return result code
 */
uint32_t rib_wrap_qip_req_rsp(uint32_t handle, struct rib_wrap_msg *req, struct rib_wrap_msg *answer);

/**
 * As rib_wrap_qip_req_rsp, to one switch partition; every call is traced.
 * @param cub the partition's number, from 1
 */
uint32_t rib_wrap_qip_req_rsp_on_cub(uint32_t handle, struct rib_wrap_msg *req, struct rib_wrap_msg *answer,
                                     uint32_t cub);

/** Answers a received request, whose reference stays with the caller. @return result code */
uint32_t rib_wrap_qip_rsp(uint32_t handle, const struct qip_ref *req_ref, const void *payload, uint32_t payload_size);

/** Drops a received message, or a reference of rib_wrap_qip_send_non_blk. @return result code's bits */
int32_t rib_wrap_qip_drop(uint32_t uuid, uint32_t handle, struct qip_ref *ref);

/**
 * Notifies the local listeners, then the modules (not attempted after a failure of the first). Failures go to the debug
 * history and debug output only. @return result code's bits
 */
int32_t rib_wrap_qip_note(uint32_t handle, uint32_t opcode, const void *payload, uint32_t payload_size);

/*
 * The CMI envelope, big-endian words: type at 0, length at 4, 0 at 8, the sender's name (zero-padded) at 12 to 111. A
 * request's type is 3 (no answer awaited) or 2, its opcode stands at 112, its payload from 116, and its length is the
 * payload's + 4. An answer's type is 0, its payload starts at 112 and its length is the payload's. All functions return
 * RIB_OUT_OF_MEMORY, and send nothing, where the envelope cannot be allocated.
 */

/** The opcode that every request's envelope travels with. */
#define RIB_CMI_OPCODE UINT32_C(545)

/** Sends a message to the RIB in an envelope; its answer cannot be awaited. @return result code */
uint32_t rib_wrap_cmi_send(uint32_t handle, const struct rib_wrap_msg *req);

/**
 * As rib_wrap_cmi_send, with the sent message's reference. The send waits like any other where it has to.
 * @param ref_out null, or filled with the reference, which the caller drops
 */
uint32_t rib_wrap_cmi_send_non_blk(uint32_t handle, struct qip_ref *ref_out, const struct rib_wrap_msg *req);

/**
 * Sends a request in an envelope and waits for its enveloped answer, 10 seconds at most.
 * @param answer as for rib_wrap_qip_req_rsp; payload and payload_size are those of the envelope's content
 * @return result code; RIB_BAD_PARAMETERS, with the answer filled and to be dropped all the same, where the envelope's
 *         length disagrees with what was received (payload_size is 0 where not even the length was)
 */
uint32_t rib_wrap_cmi_req_rsp(uint32_t handle, struct rib_wrap_msg *req, struct rib_wrap_msg *answer);

/** Answers a received request in an envelope; the request's reference stays with the caller. @return result code */
uint32_t rib_wrap_cmi_rsp(uint32_t handle, const struct qip_ref *req_ref, const void *payload, uint32_t payload_size);

/**
 * Opens a received request envelope. The three results are written, and read from the first 116 bytes, whatever size
 * says: rib_check_cmi_request tells first whether they are there.
 * @param size bytes received
 * @param payload points into the envelope
 * @return 0; RIB_BAD_PARAMETERS where the envelope's length disagrees with size
 */
uint32_t rib_wrap_cmi_recv(const void *envelope, uint32_t size, uint32_t *opcode, const uint8_t **payload,
                           uint32_t *payload_length);

/**
 * Whether received bytes are a request envelope that rib_wrap_cmi_recv may open. The sender's name is not looked at: it
 * has at most 100 bytes, terminated or not.
 * @param report filled when it refuses
 * @return 0; RIB_BAD_PARAMETERS where bytes are missing; RIB_EXCESS_DATA where bytes remain behind the content
 */
uint32_t rib_check_cmi_request(const void *envelope, uint32_t size, struct rib_check_report *report);

/** As rib_check_cmi_request, for an answer's envelope. */
uint32_t rib_check_cmi_answer(const void *envelope, uint32_t size, struct rib_check_report *report);

/** Outstanding request tokens in no particular order; the same one may stand there twice. */
struct rib_token {
    uint32_t *tokens; /**< null when not allocated */
    uint32_t count;
    uint32_t capacity;
};

/**
 * Makes an empty list for capacity tokens; one in use must be released first. A list starts as all zero.
 * @return 0; RIB_OUT_OF_MEMORY with tokens null and the rest as it was
 */
uint32_t rib_token_alloc(struct rib_token *list, uint32_t capacity);

/** Adds a token. @return 0; RIB_BAD_PARAMETERS when the list is full */
uint32_t rib_token_add(struct rib_token *list, uint32_t token);

/** @return the index of the first such token; -1 when there is none */
int32_t rib_token_match(const struct rib_token *list, uint32_t token);

/** Removes the first such token; the last one takes its place. @return 0; RIB_BAD_PARAMETERS when there is none */
uint32_t rib_token_remove(struct rib_token *list, uint32_t token);

/** Takes the last token. @return 1 with *token written; 0 when the list is empty */
uint32_t rib_token_pop(struct rib_token *list, uint32_t *token);

/** Frees the list's storage and makes it all zero; harmless on one that was not allocated. */
void rib_token_release(struct rib_token *list);

#ifdef __cplusplus
}
#endif

#endif
