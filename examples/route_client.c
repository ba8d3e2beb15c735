/* A route client: registers with the RIB, then adds or deletes a route to each domain that it is given, over fc1/1.
 * usage: route_client URL add|del DOMAIN... [FAULTS=FILE in the environment: a fault script] */
#include <rib_check.h>
#include <rib_codec.h>
#include <rib_codes.h>
#include <rib_text.h>
#include <rib_wrap.h>
#include <ribkit_platform.h>
#include <ribkit_rib.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum {
    client = RIB_CLIENT_FSPF, /* who we are: every route that we add is this client's */
    vsan = 1,
    header_words = RIBKIT_FCURT_UPDATE_SIZE / 4,
    record_words = (RIBKIT_FCURT_SIZE + RIBKIT_FCURT_HOP_SIZE) / 4,
    most_routes = 64
};

/* Sends a request, awaits its answer, and looks at it before it is used. @return a result code */
static uint32_t ask(uint32_t handle, uint32_t opcode, void *payload, uint32_t size, uint32_t answer_words[5]) {
    struct rib_wrap_msg request = {0}, answer;
    uint32_t result;

    request.uuid = client;
    request.opcode = opcode;
    request.payload = payload;
    request.payload_size = size;
    result = rib_wrap_qip_req_rsp(handle, &request, &answer);
    if (result != RIB_OK)
        return result;
    result = rib_check_fcurt_rsp(answer.payload, answer.payload_size, NULL);
    if (result == RIB_OK) {
        rib_ntoh_fcurt_rsp(answer.payload, answer_words);
        result = answer_words[0];
    }
    rib_wrap_qip_drop(client, handle, &answer.ref);
    return result;
}

/* Says that we are there; the RIB forgets a client that does not say so for 30 seconds. */
static uint32_t enlist(uint32_t handle) {
    uint32_t words[22] = {client, 110 /* route distance: the lowest one's routes are active */}, answer[5];
    strcpy((char *)&words[2], "example");
    rib_hton_register(words, words);
    return ask(handle, RIBKIT_OPCODE_REGISTER, words, sizeof words, answer);
}

/* A record in host order: a domain, over one interface. */
static void fill_route(uint32_t *record, uint32_t action, uint32_t domain) {
    const uint8_t fcid[4] = {0, (uint8_t)domain, 0, 0};
    memset(record, 0, record_words * sizeof *record);
    memcpy(record, fcid, sizeof fcid);
    record[1] = RIB_MASK_DOMAIN;
    record[4] = action;
    record[5] = 500; /* cost */
    record[7] = 1;   /* hops behind the record */
    if_index_parse("fc1/1", &record[8]);
    record[9] = domain;
}

/* One update with all routes. Header and records are converted one after the other, where they are. */
static uint32_t send_routes(uint32_t handle, uint32_t action, char **domains, uint32_t count, uint32_t answer[5]) {
    static uint32_t update[header_words + most_routes * record_words];
    uint32_t *record = update + header_words, i;

    update[0] = client;
    update[1] = vsan;
    update[2] = RIB_OPER_UPDATE_RSP; /* the answer comes when the modules have answered, too */
    update[4] = count;
    rib_hton_fcurt_update(update, update);
    for (i = 0; i < count; i++, record += record_words) {
        fill_route(record, action, (uint32_t)atoi(domains[i]));
        rib_hton_fcurt(record, record);
    }
    return ask(handle, RIBKIT_OPCODE_FCURT_UPDATE, update, rib_sizeof_fcurt_update(update), answer);
}

int main(int argc, char **argv) {
    uint32_t handle, answer[5] = {0}, result;
    char text[RIB_TEXT_SIZE], wrong[256];
    const char *faults = getenv("FAULTS");

    if (argc < 4 || argc - 3 > most_routes) {
        fprintf(stderr, "usage: route_client URL add|del DOMAIN...\n");
        return 2;
    }
    if (faults != NULL && qip_faults_load(faults, wrong, sizeof wrong) != 0) {
        fprintf(stderr, "route_client: %s\n", wrong);
        return 2;
    }
    if (qip_open(argv[1], &handle) != 0) {
        perror("route_client: cannot open the bus");
        return 1;
    }
    result = enlist(handle);
    if (result == RIB_OK)
        result = send_routes(handle, strcmp(argv[2], "del") == 0 ? RIB_ACTION_DELETE : RIB_ACTION_ADD, argv + 3,
                             (uint32_t)argc - 3, answer);
    qip_close(handle);
    rib_rtn_to_str(result, text);
    printf("%s: %u taken, the RIB holds %u\n", text, answer[3], answer[4]);
    return result == RIB_OK ? 0 : 1;
}
