/* The least that a source of unicast routes takes of the library: it sends an update, and understands the answer. */
#include <rib_check.h>
#include <rib_codec.h>
#include <rib_codes.h>
#include <rib_wrap.h>
#include <ribkit_platform.h>
#include <ribkit_rib.h>

#include <string.h>

enum {
    header_words = RIBKIT_FCURT_UPDATE_SIZE / 4,
    record_words = (RIBKIT_FCURT_SIZE + RIBKIT_FCURT_HOP_SIZE) / 4,
    answer_words = RIBKIT_FCURT_RSP_SIZE / 4
};

/* @return the RIB's result for one update in host order, or why there is none */
static uint32_t send_update(uint32_t handle, uint32_t *update) {
    struct rib_wrap_msg request, answer;
    uint32_t result, words[answer_words];
    rib_hton_fcurt_update(update, update);
    rib_hton_fcurt(update + header_words, update + header_words);
    memset(&request, 0, sizeof request);
    request.uuid = RIB_CLIENT_FSPF;
    request.opcode = RIBKIT_OPCODE_FCURT_UPDATE;
    request.payload = (uint8_t *)update;
    request.payload_size = rib_sizeof_fcurt_update(update);
    result = rib_wrap_qip_req_rsp(handle, &request, &answer);
    if (result != RIB_OK) {
        return result;
    }
    result = rib_check_fcurt_rsp(answer.payload, answer.payload_size, NULL);
    if (result == RIB_OK) {
        rib_ntoh_fcurt_rsp(answer.payload, words);
        result = words[0];
    }
    rib_wrap_qip_drop(RIB_CLIENT_FSPF, handle, &answer.ref);
    return result;
}

int main(void) {
    uint32_t update[header_words + record_words] = {RIB_CLIENT_FSPF, 1, RIB_OPER_UPDATE_RSP};
    uint32_t handle;
    update[4] = 1;                /* routes */
    update[header_words + 7] = 1; /* hops */
    return qip_open("local:", &handle) == 0 && send_update(handle, update) == RIB_OK ? 0 : 1;
}
