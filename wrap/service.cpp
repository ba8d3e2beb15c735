// The steps that plain and enveloped messages share.
#include "wrap/service.h"

#include "rib_trace.h"
#include "yelk.h"

#include <cerrno>
#include <cstring>

namespace ribkit::wrap {

void clear_reference(qip_ref *ref) {
    constexpr size_t cleared = 25; // the last three of its 28 keep what they held
    if (ref != nullptr) {
        std::memset(ref, 0, cleared);
    }
}

void prepare(rib_wrap_msg &request, rib_wrap_msg &answer) {
    clear_reference(&request.ref);
    std::memset(&answer, 0, sizeof answer);
}

uint32_t trace_failure(const char *failure) {
    const int error = errno;
    rib_printf_time(failure, static_cast<unsigned>(error));
    return platform_failure(error);
}

uint32_t trace_failed_request(uint32_t uuid, const char *failure) {
    const int error = errno;
    rib_printf_req_fail(uuid, failure, static_cast<unsigned>(error));
    return platform_failure(error);
}

uint32_t await_answer(uint32_t handle, rib_wrap_msg &request, rib_wrap_msg &answer, uint32_t seconds) {
    yelk_hist_qip_event(YELK_QIP_SENT, &request.ref, 0, 0);
    const qip_recv_opts wanted{{QIP_RECV_BY_TOKEN, 0, seconds, qip_rr_token_get(&request.ref)}};
    // The token alone ties the answer to the request.
    static_cast<void>(qip_drop(handle, &request.ref));
    if (qip_recv(handle, &answer.ref, &wanted) != 0) {
        const int error = errno;
        rib_printf_rsp_fail(request.uuid, "rib_wrap_qip_req_rsp() failed qip_recv() %u!\n",
                            static_cast<unsigned>(error));
        return platform_failure(error);
    }
    yelk_hist_qip_event(YELK_QIP_RECEIVED, &answer.ref, 0, 0);
    answer.uuid = request.uuid;
    answer.context = request.context;
    return RIB_OK;
}

} // namespace ribkit::wrap
