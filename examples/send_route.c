/* A C program that links ribkit: a client sends one route to a RIB on this process's bus, and reads the answer. */
#include <rib_codec.h>
#include <rib_codes.h>
#include <rib_text.h>
#include <rib_trace.h>
#include <rib_wrap.h>
#include <ribkit_platform.h>

#include <pthread.h>
#include <stdio.h>
#include <string.h>

enum { header_size = 980, record_size = 32 + 8, answer_size = 20, update_opcode = 1 };

static const struct qip_addr rib_address = {0xfe000001, 25};

/* Host order: one route to domain 7, over fc1/1. */
static void fill_update(uint32_t *header, uint32_t *record) {
    const uint8_t fcid[4] = {0, 7, 0, 0};
    memset(header, 0, header_size);
    header[0] = RIB_CLIENT_FSPF;
    header[1] = 1; /* VSAN */
    header[2] = RIB_OPER_UPDATE_RSP;
    header[4] = 1; /* routes that follow */
    memset(record, 0, record_size);
    memcpy(record, fcid, sizeof fcid);
    record[1] = 0xff0000; /* mask */
    record[4] = RIB_ACTION_ADD;
    record[5] = 250; /* metric */
    record[6] = RIB_FLAG_DIRECT | RIB_FLAG_ACTIVE;
    record[7] = 1; /* hops */
    if_index_parse("fc1/1", &record[8]);
    record[9] = 7; /* domain */
}

/* The other side: takes one request and answers it. */
static void *serve(void *argument) {
    const uint32_t handle = *(const uint32_t *)argument;
    struct qip_ref request;
    if (qip_recv(handle, &request, NULL) == 0) {
        const void *update = qip_payload_get(&request);
        const uint32_t words[5] = {RIB_OK, rib_ntoh_fcurt_update_get_oper(update),
                                   rib_ntoh_fcurt_update_get_vsan(update), rib_ntoh_fcurt_update_get_n_route(update),
                                   0};
        uint8_t answer[answer_size];
        rib_hton_fcurt_rsp(words, answer);
        rib_wrap_qip_rsp(handle, &request, answer, sizeof answer);
        rib_wrap_qip_drop(RIB_CLIENT_RIB, handle, &request);
    }
    return NULL;
}

int main(void) {
    uint32_t update[(header_size + record_size) / 4];
    uint32_t client, server, words[5];
    char text[40];
    pthread_t rib;
    struct rib_wrap_msg request, answer;

    if (qip_open("local:", &server) != 0 || qip_listen(server, &rib_address, 16) != 0 ||
        qip_open("local:", &client) != 0 || pthread_create(&rib, NULL, serve, &server) != 0) {
        perror("send_route");
        return 1;
    }
    fill_update(update, update + header_size / 4);
    rib_hton_fcurt_update(update, update);
    rib_hton_fcurt(update + header_size / 4, update + header_size / 4);
    rib_printf_fcurt_update(rib_sizeof_fcurt_update(update), update);
    rib_printf_fcurt(update, update + header_size / 4);

    memset(&request, 0, sizeof request);
    request.uuid = RIB_CLIENT_FSPF;
    request.opcode = update_opcode;
    request.payload = (uint8_t *)update;
    request.payload_size = sizeof update;
    if (rib_wrap_qip_req_rsp(client, &request, &answer) != RIB_OK) {
        return 1;
    }
    rib_ntoh_fcurt_rsp(answer.payload, words);
    rib_wrap_qip_drop(RIB_CLIENT_FSPF, client, &answer.ref);
    pthread_join(rib, NULL);
    rib_rtn_to_str(words[0], text);
    printf("the RIB took %u route of VSAN %u: %s\n", words[3], words[2], text);
    qip_close(client);
    qip_close(server);
    return 0;
}
