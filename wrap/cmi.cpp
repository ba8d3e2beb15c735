// Messages in envelopes: built on the heap, sent as the plain wrappers send, and freed before the call returns. Where
// the two families differ (history after a failed send, texts, what is dropped), receivers rely on it.
#include "rib_check.h"
#include "rib_text.h"
#include "rib_trace.h"
#include "wrap/cmi_envelope.h"
#include "wrap/service.h"
#include "yelk.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

using namespace ribkit;
using namespace ribkit::wrap;

namespace {

constexpr uint32_t answer_wait = 10; // seconds

void put(uint8_t *at, const void *bytes, uint32_t size) {
    if (size != 0) {
        std::memcpy(at, bytes, size);
    }
}

// An envelope around so many bytes of content, zero but for its fixed fields; null where its size, as the service
// counts it, cannot be said or had. The caller frees it.
uint8_t *new_envelope(envelope_type type, uint32_t uuid, uint64_t content) {
    const uint64_t size = content_at + content;
    auto *bytes = size > UINT32_MAX ? nullptr : static_cast<uint8_t *>(std::calloc(1, static_cast<size_t>(size)));
    if (bytes != nullptr) {
        const written_envelope envelope(bytes);
        envelope.set<"type">(type).set<"length">(static_cast<uint32_t>(content));
        rib_uuid_to_str(uuid, reinterpret_cast<char *>(envelope.area<"client">().data()));
    }
    return bytes;
}

uint8_t *request_envelope(envelope_type type, const rib_wrap_msg &req) {
    uint8_t *bytes = new_envelope(type, req.uuid, uint64_t{opcode_size} + req.payload_size);
    if (bytes != nullptr) {
        written_envelope(bytes).set<"opcode">(req.opcode);
        put(bytes + payload_at, req.payload, req.payload_size);
    }
    return bytes;
}

int send_request(uint32_t handle, const uint8_t *envelope, const rib_wrap_msg &req, qip_ref *ref_out) {
    const qip_addr to = to_rib;
    return qip_send(handle, &to, RIB_CMI_OPCODE, envelope, payload_at + req.payload_size, ref_out, nullptr, nullptr);
}

// The history is told of a failed send, too.
uint32_t send_one_way(uint32_t handle, qip_ref *ref_out, const rib_wrap_msg &req, const char *failure) {
    uint8_t *envelope = request_envelope(envelope_type::one_way, req);
    if (envelope == nullptr) {
        rib_printf_no_mem(req.uuid, "rib_wrap_cmi_send() no mem for cmi_msg!\n");
        return RIB_OUT_OF_MEMORY;
    }
    const int result = send_request(handle, envelope, req, ref_out);
    const uint32_t code = result == 0 ? RIB_OK : trace_failed_request(req.uuid, failure);
    yelk_hist_qip_event(YELK_QIP_SENT, ref_out, 0, 0);
    std::free(envelope);
    return code;
}

uint32_t send_awaited(uint32_t handle, rib_wrap_msg &req) {
    uint8_t *envelope = request_envelope(envelope_type::request, req);
    if (envelope == nullptr) {
        rib_printf_no_mem(req.uuid, "rib_wrap_cmi_req_rsp() no mem for cmi_msg!\n");
        return RIB_OUT_OF_MEMORY;
    }
    const int result = send_request(handle, envelope, req, &req.ref);
    const int error = errno;
    std::free(envelope);
    errno = error;
    return result == 0 ? RIB_OK : trace_failed_request(req.uuid, "rib_wrap_cmi_req_rsp() failed qip_send() %u!\n");
}

// Fills the answer's payload whether or not the envelope holds together.
uint32_t open_answer(rib_wrap_msg &answer, uint32_t opcode) {
    auto *envelope = static_cast<uint8_t *>(qip_payload_get(&answer.ref));
    const uint32_t size = qip_payload_size(&answer.ref);
    constexpr uint32_t length_end = wire::cmi_envelope.row_of("length").end();
    // A sum of numbers: an answer without bytes has no address to count from.
    answer.payload = reinterpret_cast<uint8_t *>(reinterpret_cast<uintptr_t>(envelope) + content_at);
    answer.payload_size = size < length_end ? 0 : read_envelope(envelope).get<"length">();
    rib_check_report report;
    if (rib_check_cmi_answer(envelope, size, &report) == RIB_OK) {
        return RIB_OK;
    }
    rib_printf_time("rib_wrap_cmi_req_rsp() bad size %u for opc %u!\n", answer.payload_size, opcode);
    return RIB_BAD_PARAMETERS;
}

} // namespace

uint32_t rib_wrap_cmi_send(uint32_t handle, const struct rib_wrap_msg *req) {
    return send_one_way(handle, nullptr, *req, "rib_wrap_cmi_send() failed qip_send() %u!\n");
}

// Nothing but its reference and its text tells it from rib_wrap_cmi_send: no option says not to block.
uint32_t rib_wrap_cmi_send_non_blk(uint32_t handle, struct qip_ref *ref_out, const struct rib_wrap_msg *req) {
    clear_reference(ref_out);
    return send_one_way(handle, ref_out, *req, "rib_wrap_cmi_send_non_blk() failed qip_send() %u!\n");
}

uint32_t rib_wrap_cmi_req_rsp(uint32_t handle, struct rib_wrap_msg *req, struct rib_wrap_msg *answer) {
    prepare(*req, *answer);
    uint32_t code = send_awaited(handle, *req);
    if (code == RIB_OK) {
        code = await_answer(handle, *req, *answer, answer_wait);
    }
    return code == RIB_OK ? open_answer(*answer, req->opcode) : code;
}

// No reference of the answer is asked for, so none is dropped; the history names the request's.
uint32_t rib_wrap_cmi_rsp(uint32_t handle, const struct qip_ref *req_ref, const void *payload, uint32_t payload_size) {
    uint8_t *envelope = new_envelope(envelope_type::answer, RIB_CLIENT_RIB, payload_size);
    if (envelope == nullptr) {
        rib_printf_time("rib_wrap_cmi_rsp() no mem for cmi_msg!\n");
        return RIB_OUT_OF_MEMORY;
    }
    put(envelope + content_at, payload, payload_size);
    const qip_addr to = to_local;
    const int result = qip_send(handle, &to, 0, envelope, content_at + payload_size, nullptr, req_ref, nullptr);
    const uint32_t code = result == 0 ? RIB_OK : trace_failure("rib_wrap_cmi_rsp() failed qip_send_response() %u!\n");
    yelk_hist_qip_event(YELK_QIP_SENT, req_ref, 0, 0);
    std::free(envelope);
    return code;
}

uint32_t rib_wrap_cmi_recv(const void *envelope, uint32_t size, uint32_t *opcode, const uint8_t **payload,
                           uint32_t *payload_length) {
    const read_envelope received(envelope);
    *opcode = received.get<"opcode">();
    *payload = received.data() + payload_at;
    *payload_length = received.get<"length">() - opcode_size;
    rib_check_report report;
    if (rib_check_cmi_request(envelope, size, &report) == RIB_OK) {
        return RIB_OK;
    }
    rib_printf_time("rib_wrap_cmi_recv() bad size %u for opc %u!\n", *payload_length, *opcode);
    return RIB_BAD_PARAMETERS;
}
