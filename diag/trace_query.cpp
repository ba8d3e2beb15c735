// One line for every query sent to the RIB. A query is read as it stands in the send buffer. Clients that face an
// operator are spared the lines.
#include "diag/fields.h"
#include "diag/print.h"
#include "rib_trace.h"

using namespace ribkit::diag;

namespace {

constexpr uint32_t versions_asked = 0x00200002; // "query topo version", "show topo version"

}

void rib_printf_test_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB %s (size %u)\n">(stamp(), text(rib_test_type_to_str, query.word(4)), 48U);
    }
}

void rib_printf_db_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB %s %u DB summaries (size %u)\n">(stamp(), text(rib_query_to_str, query.word(4)),
                                                                query.word(12), 16U);
    }
}

void rib_printf_sys_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB %s system attributes (size %u)\n">(stamp(), text(rib_query_to_str, query.word(4)), 16U);
    }
}

void rib_printf_vsan_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB uuid %u %s %u vsan attributes (size %u)\n">(
            stamp(), query.word(0), text(rib_query_to_str, query.word(4)), query.word(12), 16U);
    }
}

void rib_printf_dm_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB uuid %u %s %u domain reach (size %u)\n">(
            stamp(), query.word(0), text(rib_query_to_str, query.word(4)), query.word(12), 16U);
    }
}

void rib_printf_reg_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB %s %u registries (size %u)\n">(stamp(), text(rib_query_to_str, query.word(4)),
                                                              query.word(8), 12U);
    }
}

void rib_printf_in_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB %s %s (size %u)\n">(stamp(), text(rib_query_to_str, query.word(4)),
                                                   text(rib_in_to_str, query.word(8)), 16U);
    }
}

void rib_printf_node_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB query mod %u type %s (size %u)\n">(stamp(), query.byte(4) + 1,
                                                                  text(rib_mod_type_to_str, query.byte(5)), 8U);
    }
}

void rib_printf_fcl_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB uuid %u %s %u labels (size %u)\n">(
            stamp(), query.word(0), text(rib_fclrt_type_to_str, query.word(4)), query.word(36), 40U);
    }
}

// A query for topology versions counts versions, any other counts routes.
void rib_printf_fcu_query(const void *msg) {
    const fields query{msg};
    const uint32_t type = query.word(4);
    if (faces_operator(query.word(0))) {
        return;
    }
    if ((type & versions_asked) != 0) {
        print_row<"%s Sent RIB uuid %u %s %u versions (size %u)\n">(
            stamp(), query.word(0), text(rib_fcurt_type_to_str, type), query.word(8), 24U);
    } else {
        print_row<"%s Sent RIB uuid %u %s %u ucast (size %u)\n">(stamp(), query.word(0),
                                                                 text(rib_fcurt_type_to_str, type), query.word(8), 24U);
    }
}

void rib_printf_fcm_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB %s %u mcast (size %u)\n">(stamp(), text(rib_fcmrt_type_to_str, query.word(8)),
                                                         query.word(20), 24U);
    }
}

void rib_printf_verf_query(const void *msg) {
    const fields query{msg};
    if (!faces_operator(query.word(0))) {
        print_row<"%s Sent RIB %s %u %s routes (size %u)\n">(
            stamp(), text(rib_query_to_str, query.word(8)), query.word(48), text(rib_verf_to_str, query.word(12)), 52U);
    }
}
