/* A C program that links ribkit: a client sends one route to a RIB and reads the answer. `send_route URL` sends to the
 * RIB that listens there ("nats://127.0.0.1:4222"); without an argument the program answers itself. */
#include <rib_codec.h>
#include <rib_codes.h>
#include <rib_text.h>
#include <rib_trace.h>
#include <rib_wrap.h>
#include <ribkit_platform.h>
#include <ribkit_rib.h>

#include <pthread.h>
#include <stdio.h>
#include <string.h>

enum {
    header_words = RIBKIT_FCURT_UPDATE_SIZE / 4,
    record_words = (RIBKIT_FCURT_SIZE + RIBKIT_FCURT_HOP_SIZE) / 4,
    answer_words = RIBKIT_FCURT_RSP_SIZE / 4
};

/* Host order: one route to domain 7, over fc1/1. */
static void fill_update(uint32_t *header, uint32_t *record) {
    const uint8_t fcid[4] = {0, 7, 0, 0};
    memset(header, 0, header_words * sizeof *header);
    header[0] = RIB_CLIENT_FSPF;
    header[1] = 1; /* VSAN */
    header[2] = RIB_OPER_UPDATE_RSP;
    header[4] = 1; /* routes that follow */
    memset(record, 0, record_words * sizeof *record);
    memcpy(record, fcid, sizeof fcid);
    record[1] = RIB_MASK_DOMAIN;
    record[4] = RIB_ACTION_ADD;
    record[5] = 250; /* metric */
    record[6] = RIB_FLAG_DIRECT | RIB_FLAG_ACTIVE;
    record[7] = 1; /* hops */
    if_index_parse("fc1/1", &record[8]);
    record[9] = 7; /* domain */
}

/* The update in network form: header and record are converted one after the other, where they are. */
static void make_update(uint32_t *update) {
    fill_update(update, update + header_words);
    rib_hton_fcurt_update(update, update);
    rib_hton_fcurt(update + header_words, update + header_words);
    rib_printf_fcurt_update(rib_sizeof_fcurt_update(update), update);
    rib_printf_fcurt(update, update + header_words);
}

/* The other side: takes one request, looks whether it can be trusted, and answers it. */
static void *serve(void *argument) {
    const uint32_t handle = *(const uint32_t *)argument;
    struct qip_ref request;
    if (qip_recv(handle, &request, NULL) == 0) {
        uint32_t words[answer_words] = {RIB_NOT_SUPPORTED};
        uint8_t answer[RIBKIT_FCURT_RSP_SIZE];
        const void *update = qip_payload_get(&request);
        if (qip_opcode_get(&request) == RIBKIT_OPCODE_FCURT_UPDATE &&
            (words[0] = rib_check_fcurt_update(update, qip_payload_size(&request), NULL)) == RIB_OK) {
            words[1] = rib_ntoh_fcurt_update_get_oper(update);
            words[2] = rib_ntoh_fcurt_update_get_vsan(update);
            words[3] = words[4] = rib_ntoh_fcurt_update_get_n_route(update); /* taken, and held from now on */
        }
        rib_hton_fcurt_rsp(words, answer);
        rib_wrap_qip_rsp(handle, &request, answer, sizeof answer);
        rib_wrap_qip_drop(RIB_CLIENT_RIB, handle, &request);
    }
    return NULL;
}

/* Sends the update. @return 0 where the RIB took all of it */
static int send_update(uint32_t client, uint32_t *update, uint32_t size) {
    struct rib_wrap_msg request, answer;
    uint32_t result, words[answer_words] = {0};
    char text[40];

    memset(&request, 0, sizeof request);
    request.uuid = RIB_CLIENT_FSPF;
    request.opcode = RIBKIT_OPCODE_FCURT_UPDATE;
    request.payload = (uint8_t *)update;
    request.payload_size = size;
    result = rib_wrap_qip_req_rsp(client, &request, &answer);
    if (result != RIB_OK) {
        rib_rtn_to_str(result, text);
        fprintf(stderr, "send_route: no answer from the RIB: %s\n", text);
        return 1;
    }
    result = rib_check_fcurt_rsp(answer.payload, answer.payload_size, NULL);
    if (result == RIB_OK) {
        rib_ntoh_fcurt_rsp(answer.payload, words);
        result = words[0];
    }
    rib_wrap_qip_drop(RIB_CLIENT_FSPF, client, &answer.ref);
    rib_rtn_to_str(result, text);
    if (result != RIB_OK) {
        fprintf(stderr, "send_route: the RIB refused the message: %s\n", text);
        return 1;
    }
    printf("the RIB took %u route of VSAN %u: %s\n", words[3], words[2], text);
    return 0;
}

int main(int argc, char **argv) {
    const char *url = argc > 1 ? argv[1] : "local:";
    uint32_t update[header_words + record_words];
    uint32_t client, server = 0;
    pthread_t rib;
    int failed;

    if (argc == 1 && (qip_open(url, &server) != 0 || qip_listen(server, &ribkit_rib_address, 16) != 0 ||
                      pthread_create(&rib, NULL, serve, &server) != 0)) {
        perror("send_route: cannot answer");
        return 1;
    }
    if (qip_open(url, &client) != 0) {
        perror("send_route: cannot open the bus");
        return 1;
    }
    make_update(update);
    failed = send_update(client, update, sizeof update);
    qip_close(client);
    if (argc == 1) {
        qip_close(server); /* ends the wait, if no request came */
        pthread_join(rib, NULL);
    }
    return failed;
}
