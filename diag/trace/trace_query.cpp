// One line for every query sent to the RIB. A query is read as it stands in the send buffer. Clients that face an
// operator are spared the lines.
#include "codec/messages/forms.h"
#include "codec/messages/query.h"
#include "diag/print.h"
#include "rib_trace.h"

using namespace ribkit;
using namespace ribkit::diag;

namespace {

constexpr uint32_t versions_asked = 0x00200002; // "query topo version", "show topo version"

}

void rib_printf_test_query(const void *msg) {
    const view<wire::test_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB %s (size %u)\n">(stamp(), text(rib_test_type_to_str, query.get<"type">()), query.size());
    }
}

void rib_printf_db_query(const void *msg) {
    const view<wire::db_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB %s %u DB summaries (size %u)\n">(stamp(), text(rib_query_to_str, query.get<"query">()),
                                                                query.get<"requested">(), query.size());
    }
}

void rib_printf_sys_query(const void *msg) {
    const view<wire::sys_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB %s system attributes (size %u)\n">(stamp(), text(rib_query_to_str, query.get<"query">()),
                                                                  query.size());
    }
}

void rib_printf_vsan_query(const void *msg) {
    const view<wire::vsan_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB uuid %u %s %u vsan attributes (size %u)\n">(stamp(), query.get<"uuid">(),
                                                                           text(rib_query_to_str, query.get<"query">()),
                                                                           query.get<"requested">(), query.size());
    }
}

void rib_printf_dm_query(const void *msg) {
    const view<wire::dm_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB uuid %u %s %u domain reach (size %u)\n">(stamp(), query.get<"uuid">(),
                                                                        text(rib_query_to_str, query.get<"query">()),
                                                                        query.get<"requested">(), query.size());
    }
}

void rib_printf_reg_query(const void *msg) {
    const view<wire::reg_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB %s %u registries (size %u)\n">(stamp(), text(rib_query_to_str, query.get<"query">()),
                                                              query.get<"requested">(), query.size());
    }
}

void rib_printf_in_query(const void *msg) {
    const view<wire::in_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB %s %s (size %u)\n">(stamp(), text(rib_query_to_str, query.get<"query">()),
                                                   text(rib_in_to_str, query.get<"structure">()), query.size());
    }
}

void rib_printf_node_query(const void *msg) {
    const view<wire::node_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB query mod %u type %s (size %u)\n">(
            stamp(), query.shown<"module">(), text(rib_mod_type_to_str, query.get<"type">()), query.size());
    }
}

void rib_printf_fcl_query(const void *msg) {
    const view<wire::fclrt_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB uuid %u %s %u labels (size %u)\n">(stamp(), query.get<"uuid">(),
                                                                  text(rib_fclrt_type_to_str, query.get<"type">()),
                                                                  query.get<"requested">(), query.size());
    }
}

// A query for topology versions counts versions, any other counts routes.
void rib_printf_fcu_query(const void *msg) {
    const view<wire::fcurt_query> query{msg};
    const uint32_t type = query.get<"type">();
    if (faces_operator(query.get<"uuid">())) {
        return;
    }
    if ((type & versions_asked) != 0) {
        print_row<"%s Sent RIB uuid %u %s %u versions (size %u)\n">(
            stamp(), query.get<"uuid">(), text(rib_fcurt_type_to_str, type), query.get<"requested">(), query.size());
    } else {
        print_row<"%s Sent RIB uuid %u %s %u ucast (size %u)\n">(
            stamp(), query.get<"uuid">(), text(rib_fcurt_type_to_str, type), query.get<"requested">(), query.size());
    }
}

void rib_printf_fcm_query(const void *msg) {
    const view<wire::fcmrt_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB %s %u mcast (size %u)\n">(stamp(), text(rib_fcmrt_type_to_str, query.get<"type">()),
                                                         query.get<"requested">(), query.size());
    }
}

void rib_printf_verf_query(const void *msg) {
    const view<wire::verf_query> query{msg};
    if (!faces_operator(query.get<"uuid">())) {
        print_row<"%s Sent RIB %s %u %s routes (size %u)\n">(stamp(), text(rib_query_to_str, query.get<"query">()),
                                                             query.get<"requested">(),
                                                             text(rib_verf_to_str, query.get<"type">()), query.size());
    }
}
