/* A module's programmer: tells the RIB that module NUMBER is there, takes the routes that the RIB programs, prints
 * those of its unicast table where a driver would write to hardware, and answers. usage: module_programmer URL NUMBER
 */
#include <fib_codec.h>
#include <rib_check.h>
#include <rib_codec.h>
#include <rib_codes.h>
#include <rib_text.h>
#include <rib_wrap.h>
#include <ribkit_platform.h>
#include <ribkit_rib.h>

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { head_size = 16, path_size = 348, tell_again = 10 /* seconds */ };
enum { fib_loading = 2, fib_active = 4 }; /* ribkit text fib_state */
enum { slot_words = 5, first_slot = 7 };  /* of a path's ways, in its words */

static uint32_t number, instance;
static uint32_t latest; /* sequence number of what the RIB sent last */
static int has_any;     /* whether it has sent anything */
static int loading;     /* tables that are being merged */

/* The module's record, and where it stands: a new instance is given all of its entries. */
static uint32_t tell_rib(uint32_t handle) {
    uint32_t record[8] = {0};
    const uint8_t self[4] = {(uint8_t)(number - 1)}; /* a line card, active */
    const uint16_t no_ports_at[2] = {0, (uint16_t)(RIBKIT_NODE_MODULE & 0xffff)};
    struct rib_wrap_msg request = {0}, answer;
    uint32_t result;

    memcpy(&record[0], self, sizeof self);
    memcpy(&record[1], no_ports_at, sizeof no_ports_at);
    record[2] = number; /* its address */
    record[3] = loading > 0 ? fib_loading : fib_active;
    memcpy(&record[4], self, 1);
    record[5] = instance;
    record[6] = latest;
    fib_hton_node(record, record);
    fib_hton_sync(&record[4], &record[4]);
    request.uuid = RIB_CLIENT_LINE_CARD_MANAGER;
    request.opcode = RIBKIT_OPCODE_FIB_NODE;
    request.payload = (uint8_t *)record;
    request.payload_size = sizeof record;
    result = rib_wrap_qip_req_rsp(handle, &request, &answer);
    if (result == RIB_OK)
        rib_wrap_qip_drop(request.uuid, handle, &answer.ref);
    return result;
}

/* Here a driver writes to hardware. */
static void program(const char *what, uint32_t vsan, const uint8_t *bytes) {
    uint32_t path[path_size / 4], i;
    char name[128];

    fib_ntoh_fcu_path(bytes, path);
    printf("%s VSAN %u, 0x%02x%02x%02x/0x%06x", what, vsan, bytes[5], bytes[6], bytes[7], path[2]);
    for (i = 0; i < path[6]; i++) {
        sprintf_if_index(name, path[first_slot + i * slot_words + 1]);
        printf("%s %s", i == 0 ? " by" : ",", name);
    }
    printf("\n");
}

/* @param update checked; its head is in host order. @return how many paths took effect */
static uint32_t take(uint32_t opcode, const uint32_t head[4], const uint8_t *update) {
    char what[RIB_TEXT_SIZE];
    uint32_t i;

    fib_oper_to_str(head[0], what);
    loading += (head[0] == FIB_OPER_BEGIN_MERGE) - (head[0] == FIB_OPER_END_MERGE);
    if (opcode != RIBKIT_OPCODE_FIB_FCU_UPDATE)
        return head[2]; /* the other tables: taken, and not shown */
    if (head[2] == 0)
        printf("%s\n", what);
    for (i = 0; i < head[2]; i++)
        program(what, head[1], update + head_size + i * path_size);
    return head[2];
}

/* Whether everything may be read that we read: the head, and behind it as many unicast paths as it says. */
static uint32_t check(uint32_t opcode, const uint8_t *message, uint32_t size) {
    uint32_t head[4], at, result;

    if (opcode < RIBKIT_OPCODE_FIB_FCU_UPDATE || opcode > RIBKIT_OPCODE_FIB_FCL_UPDATE)
        return RIB_NOT_SUPPORTED;
    result = fib_check_fcu_update(message, size < head_size ? size : head_size, NULL);
    if (result != RIB_OK || opcode != RIBKIT_OPCODE_FIB_FCU_UPDATE)
        return result;
    fib_ntoh_fcu_update(message, head);
    for (at = head_size; result == RIB_OK && size - at >= path_size; at += path_size)
        result = fib_check_fcu_path(message + at, path_size, NULL);
    return result == RIB_OK && (at != size || head[2] != size / path_size) ? RIB_BAD_PARAMETERS : result;
}

/* What the RIB is told: result, operation, VSAN, paths that took effect, sequence number. */
static void answer(uint32_t handle, const struct qip_ref *request) {
    const uint32_t opcode = qip_opcode_get(request);
    uint32_t head[4] = {0}, words[5] = {0};

    words[0] = check(opcode, qip_payload_get(request), qip_payload_size(request));
    if (words[0] == RIB_OK) {
        fib_ntoh_fcu_update(qip_payload_get(request), head);
        if (has_any && (int32_t)(head[3] - latest) <= 0) {
            words[0] = RIB_INDEX_USED; /* late, or twice */
        } else {
            latest = head[3];
            has_any = 1;
            words[3] = take(opcode, head, qip_payload_get(request));
        }
        words[1] = head[0];
        words[2] = head[1];
        words[4] = head[3];
    }
    fib_hton_fcu_rsp(words, words);
    rib_wrap_qip_rsp(handle, request, words, sizeof words);
}

int main(int argc, char **argv) {
    struct qip_addr here = {RIBKIT_NODE_MODULE, 0};
    const struct qip_recv_opts patience = {{QIP_RECV_INCOMING, 0, tell_again}};
    struct qip_ref request;
    uint32_t handle;
    int before;

    number = here.sap = argc == 3 ? (uint32_t)atoi(argv[2]) : 0;
    if (number == 0 || number > RIBKIT_MOST_MODULES) {
        fprintf(stderr, "usage: module_programmer URL NUMBER\n");
        return 2;
    }
    instance = (uint32_t)qip_now(); /* another one each time */
    setvbuf(stdout, NULL, _IOLBF, 0);
    if (qip_open(argv[1], &handle) != 0 || qip_listen(handle, &here, 64) != 0) {
        perror("module_programmer: cannot listen");
        return 1;
    }
    tell_rib(handle);
    for (;;) { /* until a signal ends it */
        before = loading;
        if (qip_recv(handle, &request, &patience) == 0) {
            answer(handle, &request);
            qip_drop(handle, &request);
            if ((before > 0) != (loading > 0))
                tell_rib(handle);
        } else if (errno == ETIMEDOUT) {
            tell_rib(handle);
        } else {
            perror("module_programmer: cannot receive");
            return 1;
        }
    }
}
