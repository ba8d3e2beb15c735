// Every request is read by its layout, and answered by the function that takes what was read.
#include "rib/service/requests.h"

#include "codec/checks/check.h"
#include "protocol/uses.h"
#include "rib/service/route_queries.h"
#include "ribkit_rib.h"

#include <array>

namespace ribkit::rib {

namespace {

using codec::view;
using protocol::list_query;

/// Of what no converter, and so no check of the library, is for.
template <const codec::layout &L> uint32_t fits(const void *message, uint32_t size, rib_check_report *report) {
    using own = codec::checked_layouts<L>;
    return codec::check(own::tables, own::template plan<L>(), L.name, message, size, report);
}

template <const codec::layout &L> uint32_t client_of(const uint8_t *message) {
    if constexpr (protocol::is_same(L, wire::sync_query) || protocol::is_same(L, wire::fcu_lb_query)) {
        return view<L>(message).template get<protocol::use<L, "uuid">>();
    } else {
        return view<L>(message).template get<"uuid">();
    }
}

template <const codec::layout &L> auto read_any(const uint8_t *message) {
    if constexpr (protocol::is_same(L, wire::db_query) || protocol::is_same(L, wire::dm_query) ||
                  protocol::is_same(L, wire::vsan_query) || protocol::is_same(L, wire::sys_query) ||
                  protocol::is_same(L, wire::reg_query)) {
        return protocol::read_list_query<L>(view<L>(message));
    } else {
        return protocol::read(view<L>(message));
    }
}

/// Calls a function with as much as it takes.
template <const codec::layout &L, auto Answer>
reply read_and_answer(instance &rib, const uint8_t *message, const arrival &came) {
    const auto asked = read_any<L>(message);
    if constexpr (std::is_invocable_v<decltype(Answer), instance &, decltype(asked), const arrival &>) {
        return Answer(rib, asked, came);
    } else if constexpr (std::is_invocable_v<decltype(Answer), instance &, decltype(asked)>) {
        return Answer(rib, asked);
    } else if constexpr (std::is_invocable_v<decltype(Answer), decltype(asked), const arrival &>) {
        return Answer(asked, came);
    } else {
        return Answer(asked);
    }
}

template <class Query> reply routes(const instance &rib, const Query &asked, const arrival &came) {
    return answer_routes(rib.routes, asked, came.in_envelope);
}

template <const codec::layout &L, auto Answer>
constexpr request_handler row(uint32_t opcode, decltype(request_handler::check) check) {
    return {opcode, check, client_of<L>, read_and_answer<L, Answer>};
}

constexpr request_handler rows[] = {
    row<wire::fcurt_query, routes<protocol::unicast_query>>(RIBKIT_OPCODE_FCURT_QUERY, rib_check_fcurt_query),
    row<wire::fcmrt_query, routes<protocol::multicast_query>>(RIBKIT_OPCODE_FCMRT_QUERY, rib_check_fcmrt_query),
    row<wire::fclrt_query, routes<protocol::label_query>>(RIBKIT_OPCODE_FCLRT_QUERY, rib_check_fclrt_query),
    row<wire::db_query, answer_databases>(RIBKIT_OPCODE_DB_QUERY, rib_check_db_query),
    row<wire::dm_query, answer_domains>(RIBKIT_OPCODE_DM_QUERY, rib_check_dm_query),
    row<wire::sys_query, answer_modules>(RIBKIT_OPCODE_SYS_QUERY, rib_check_sys_query),
    row<wire::in_query, answer_internals>(RIBKIT_OPCODE_IN_QUERY, rib_check_in_query),
    row<wire::reg_query, answer_registrations>(RIBKIT_OPCODE_REG_QUERY, rib_check_reg_query),
    row<wire::node_query, answer_node>(RIBKIT_OPCODE_NODE_QUERY, rib_check_node_query),
    row<wire::test_query, test>(RIBKIT_OPCODE_TEST_QUERY, rib_check_test_query),
    row<wire::verf_query, answer_verification>(RIBKIT_OPCODE_VERF_QUERY, rib_check_verf_query),
    row<wire::verify, verify>(RIBKIT_OPCODE_VERIFY, rib_check_verify),
    row<wire::registration, enter>(RIBKIT_OPCODE_REGISTER, rib_check_register),
    row<wire::sync_query, answer_log>(RIBKIT_OPCODE_SYNC_QUERY, rib_check_sync_query),
    row<wire::vsan_query, answer_vsans>(RIBKIT_OPCODE_VSAN_QUERY, fits<wire::vsan_query>),
    row<wire::fcu_lb_query, answer_flow>(RIBKIT_OPCODE_FCU_LB_QUERY, rib_fib_check_fcu_lb_query),
};

} // namespace

std::string text_of(const rib_check_report &why) {
    std::array<char, 160> text{};
    rib_check_report_str(&why, text.data(), text.size());
    return text.data();
}

std::span<const request_handler> request_handlers() { return rows; }

const request_handler *find_handler(uint32_t opcode) {
    for (const request_handler &row : rows) {
        if (row.opcode == opcode) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace ribkit::rib
