// Sending, awaiting, answering and dropping. Each wrapper reads errno right after a failed call, before its trace can
// change it.
#include "rib_trace.h"
#include "wrap/service.h"
#include "yelk.h"

#include <cerrno>

using namespace ribkit::wrap;

namespace {

constexpr uint32_t answer_wait = 20; // seconds

uint32_t send_request(uint32_t handle, qip_addr to, const rib_wrap_msg &req, qip_ref *ref_out,
                      const qip_send_opts *opts, const char *failure) {
    const int result = qip_send(handle, &to, req.opcode, req.payload, req.payload_size, ref_out, nullptr, opts);
    return result == 0 ? RIB_OK : trace_failed_request(req.uuid, failure);
}

uint32_t request_and_await(uint32_t handle, qip_addr to, rib_wrap_msg &req, rib_wrap_msg &answer) {
    prepare(req, answer);
    uint32_t code = send_request(handle, to, req, &req.ref, nullptr, "rib_wrap_qip_req_rsp() failed qip_send() %u!\n");
    if (code == RIB_OK) {
        code = await_answer(handle, req, answer, answer_wait);
    }
    if (code == RIB_OK) {
        answer.payload = static_cast<uint8_t *>(qip_payload_get(&answer.ref));
        answer.payload_size = qip_payload_size(&answer.ref);
    }
    return code;
}

constexpr qip_addr to_partition(uint32_t cub) { return {to_rib.node | ((cub - 1) << 16 & 0x00ff0000), to_rib.sap}; }

} // namespace

uint32_t rib_wrap_qip_send(uint32_t handle, const struct rib_wrap_msg *req) {
    const uint32_t code =
        send_request(handle, to_rib, *req, nullptr, nullptr, "rib_wrap_qip_send() failed qip_send() %u!\n");
    if (code == RIB_OK) {
        yelk_hist_qip_event(YELK_QIP_SENT, nullptr, 0, 0);
    }
    return code;
}

uint32_t rib_wrap_qip_send_non_blk(uint32_t handle, struct qip_ref *ref_out, const struct rib_wrap_msg *req) {
    clear_reference(ref_out);
    const qip_send_opts at_once{{1, 1}};
    const uint32_t code =
        send_request(handle, to_rib, *req, ref_out, &at_once, "rib_wrap_qip_send_non_blk() failed qip_send() %u!\n");
    if (code == RIB_OK) {
        yelk_hist_qip_event(YELK_QIP_SENT, ref_out, 0, 0);
    }
    return code;
}

uint32_t rib_wrap_qip_req_rsp(uint32_t handle, struct rib_wrap_msg *req, struct rib_wrap_msg *answer) {
    return request_and_await(handle, to_rib, *req, *answer);
}

uint32_t rib_wrap_qip_req_rsp_on_cub(uint32_t handle, struct rib_wrap_msg *req, struct rib_wrap_msg *answer,
                                     uint32_t cub) {
    rib_printf_time("sending query request of cub %d \n", static_cast<int>(cub));
    return request_and_await(handle, to_partition(cub), *req, *answer);
}

// The reference dropped here is that of the answer just sent; the request's stays with the caller.
uint32_t rib_wrap_qip_rsp(uint32_t handle, const struct qip_ref *req_ref, const void *payload, uint32_t payload_size) {
    qip_ref sent{};
    if (qip_send(handle, &to_local, 0, payload, payload_size, &sent, req_ref, nullptr) != 0) {
        return trace_failure("rib_wrap_qip_rsp() failed qip_send_response() %u!\n");
    }
    yelk_hist_qip_event(YELK_QIP_SENT, &sent, 0, 0);
    if (qip_drop(handle, &sent) != 0) {
        return trace_failure("rib_wrap_qip_rsp() failed qip_drop() of resp_ref %u!\n");
    }
    return RIB_OK;
}

int32_t rib_wrap_qip_drop(uint32_t uuid, uint32_t handle, struct qip_ref *ref) {
    if (qip_drop(handle, ref) == 0) {
        return static_cast<int32_t>(RIB_OK);
    }
    const int error = errno;
    rib_printf_drop_fail(uuid, "rib_wrap_qip_drop() failed qip_drop() %u!\n", static_cast<unsigned>(error));
    return static_cast<int32_t>(platform_failure(error));
}
