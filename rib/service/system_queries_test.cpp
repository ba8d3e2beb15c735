// What the RIB answers about itself, and what registrations, tests and comparisons change.
#include "rib/service/system_queries.h"

#include "protocol/fib/fib_records.h"
#include "protocol/route_messages.h"
#include "protocol/system_messages.h"
#include "rib/service/requests.h"
#include "rib_check.h"
#include "ribkit_rib.h"

#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

constexpr uint32_t fspf = RIB_CLIENT_FSPF;
constexpr arrival came{1000, 50, false};

class system_queries : public ::testing::Test {
  protected:
    struct logging final : effects {
        using effects::told;
        void told(const route_event<unicast> &one) override { logs->enter(one, 7); }
        change_logs *logs = nullptr;
    };

    system_queries() : rib({}, &out, 77) { out.logs = &rib.logs; }

    void add_unicast(uint32_t vsan, uint32_t domain, uint32_t hops = 1) {
        const std::vector<model::next_hop> ways(hops, {0x01010000 + domain, domain});
        const std::vector<model::unicast_change> changes{
            {RIB_ACTION_ADD, {domain << 16, 0xff0000}, {1, RIB_FLAG_DIRECT, ways}}};
        rib.routes.update<unicast>({fspf, vsan, RIB_OPER_UPDATE, {}, false, 1000}, changes);
    }
    void suspend(uint32_t vsan) {
        const std::vector<model::unicast_change> none;
        rib.routes.update<unicast>({RIB_CLIENT_VSAN_MANAGER, vsan, RIB_OPER_SUSPEND, {}, false, 1000}, none);
    }

    logging out;
    instance rib;
};

/// As long as the answer lasts.
template <const codec::layout &L> codec::view<L> seen(const reply &answer) {
    EXPECT_EQ(answer.result, RIB_OK);
    EXPECT_GE(answer.message.size(), L.size);
    return codec::view<L>(answer.message.data());
}

std::vector<uint32_t> vsans_in(const reply &answer) {
    std::vector<uint32_t> found;
    for (const auto entry : seen<wire::db_info>(answer).list<"vsan">()) {
        found.push_back(entry.get<"vsan">());
    }
    return found;
}

TEST_F(system_queries, vsans_come_from_one_on) {
    for (const uint32_t vsan : {1U, 5U, 9U}) {
        add_unicast(vsan, 2);
    }
    using found = std::vector<uint32_t>;
    EXPECT_EQ(vsans_in(answer_databases(rib, {fspf, 0x1, 100, 0}, came)), (found{1, 5, 9}));
    EXPECT_EQ(vsans_in(answer_databases(rib, {fspf, 0x2, 2, 2}, came)), (found{5, 9}));
    EXPECT_EQ(vsans_in(answer_databases(rib, {fspf, 0x100, 1, 2}, came)), (found{5}));
    EXPECT_EQ(vsans_in(answer_databases(rib, {fspf, 0x10, 100, 5}, came)), (found{5}));
    EXPECT_TRUE(vsans_in(answer_databases(rib, {fspf, 0x10, 100, 4}, came)).empty());
    EXPECT_TRUE(vsans_in(answer_databases(rib, {fspf, 0x1, 0, 0}, came)).empty());
    EXPECT_EQ(vsans_in(answer_databases(rib, {fspf, 0x1, UINT32_MAX, 0}, came)).size(), 3U);
    EXPECT_EQ(seen<wire::db_info>(answer_databases(rib, {fspf, 1, 9, 0}, came)).get<"created">(), 77U);
}

TEST_F(system_queries, kinds_that_are_not_answered_say_why) {
    for (const auto &[query, result] : {std::pair(0x4U, RIB_NO_DATABASE),
                                        {0x40, RIB_NO_DATABASE},
                                        {0x20, RIB_NOT_SUPPORTED},
                                        {0x0, RIB_NOT_SUPPORTED},
                                        {0x8, RIB_BAD_PARAMETERS},
                                        {0x80, RIB_BAD_PARAMETERS}}) {
        const protocol::list_query asked{fspf, query, 10, 0};
        EXPECT_EQ(answer_databases(rib, asked, came).result, result) << query;
        EXPECT_EQ(answer_domains(rib, asked, came).result, result) << query;
        EXPECT_EQ(answer_vsans(rib, asked, came).result, result) << query;
        EXPECT_EQ(answer_modules(rib, asked, came).result, result) << query;
        EXPECT_EQ(answer_registrations(rib, asked, came).result, result) << query;
        EXPECT_EQ(answer_internals(rib, {fspf, query, 1}, came).result, result) << query;
    }
    EXPECT_EQ(answer_databases(rib, {fspf, 0x8, 10, 0}, {1000, 50, true}).result, RIB_OK);
}

TEST_F(system_queries, domains_of_vsans_with_unicast_routes) {
    add_unicast(1, 2);
    add_unicast(4, 3);
    suspend(2);
    const auto reached = protocol::reach_of(seen<wire::dm_info>(answer_domains(rib, {fspf, 0x1, 10, 0}, came)));
    ASSERT_EQ(reached.size(), 2U);
    EXPECT_EQ(reached[1].vsan, 4U);
    EXPECT_EQ(reached[0].present, reached[0].direct);
    EXPECT_NE(reached[0].present, reached[1].present);
}

TEST_F(system_queries, states_of_vsans) {
    add_unicast(1, 2);
    suspend(20);
    const auto vsans = protocol::vsans_of(seen<wire::vsan_update>(answer_vsans(rib, {fspf, 0x1, 10, 0}, came)));
    ASSERT_EQ(vsans.size(), 2U);
    EXPECT_EQ(vsans[0].second.state, model::vsan_state::active);
    EXPECT_EQ(vsans[1].first, 20U);
    EXPECT_EQ(vsans[1].second.state, model::vsan_state::suspended);
}

TEST_F(system_queries, there_are_no_modules) {
    EXPECT_EQ(seen<wire::sys_info>(answer_modules(rib, {fspf, 0x1, 10, 0}, came)).get<"n_module">(), 0U);
    EXPECT_EQ(answer_node(rib, {fspf, 0, 0}).result, RIB_MISSING_DEVICE);
}

TEST_F(system_queries, modules_are_those_that_have_told_of_themselves) {
    const model::module_port port{.slot = 2, .port = 7, .status = 1, .if_index = 0x01020007, .vsan = 3};
    rib.nodes[1] = {.number = 1, .state = model::fib_state::active};
    rib.nodes[2] = {.number = 2, .state = model::fib_state::upgrading, .ports = {port, port}};
    const auto listed = [&](uint32_t wanted, uint32_t from) {
        return protocol::modules_of(seen<wire::sys_info>(answer_modules(rib, {fspf, 0x1, wanted, from}, came)));
    };
    EXPECT_EQ(listed(10, 0), (std::vector{rib.nodes[1], rib.nodes[2]}));
    EXPECT_EQ(listed(10, 1), (std::vector{rib.nodes[2]}));
    EXPECT_EQ(listed(1, 0).size(), 1U);
    const reply answer = answer_node(rib, {fspf, 1, 0});
    EXPECT_EQ(rib_check_node_info(answer.message.data(), static_cast<uint32_t>(answer.message.size()), nullptr),
              RIB_OK);
    EXPECT_EQ(codec::view<wire::node>(answer.message.data()).get<"fib_state">(), 7U);
    EXPECT_EQ(answer_node(rib, {fspf, 2, 0}).result, RIB_MISSING_DEVICE);
}

TEST_F(system_queries, updates_and_requests_that_wait_are_counted) {
    rib.unanswered = {1, 2, 3};
    rib.waiting = 4;
    EXPECT_EQ(rib.held_in(3), 1U);
    EXPECT_EQ(rib.held_in(4), 2U);
    EXPECT_EQ(rib.held_in(5), 3U);
    EXPECT_EQ(rib.held_in(6), 4U);
}

TEST_F(system_queries, registrations_are_listed) {
    EXPECT_EQ(enter(rib, {22, 7, "fcdomain"}, came).result, RIB_OK);
    EXPECT_EQ(enter(rib, {fspf, 99, "fspf"}, came).message.size(), wire::route_rsp.size);
    const auto listed = [&](uint32_t wanted) {
        return protocol::registrations_of(
            seen<wire::reg_info>(answer_registrations(rib, {fspf, 0x1, wanted, 0}, came)));
    };
    EXPECT_EQ(listed(10), (std::vector<model::registration>{{fspf, 99, "fspf"}, {22, 7, "fcdomai"}}));
    EXPECT_EQ(listed(1).size(), 1U);
    EXPECT_EQ(rib.routes.clients().distance(22), 7U);
}

TEST_F(system_queries, structures_of_the_rib_s_own) {
    add_unicast(1, 2);
    const auto ask = [&](uint32_t structure) { return answer_internals(rib, {fspf, 0x1, structure}, came); };
    EXPECT_EQ(protocol::availability_of(seen<wire::in_info>(ask(1))), model::availability{});
    EXPECT_EQ(protocol::pools_of(seen<wire::in_info>(ask(2)))[8].n_data, 1U);
    for (uint32_t structure = 3; structure <= 8; structure++) {
        EXPECT_EQ(seen<wire::in_info>(ask(structure)).get<"kind">(), structure);
    }
    const auto held_in = [&](uint32_t structure) { return seen<wire::in_info>(ask(structure)).get<"word_0">(); };
    rib.unsent = 5;
    EXPECT_EQ(held_in(7), 5U);
    const uint32_t logged = rib.logs.of<unicast>().held();
    EXPECT_EQ(held_in(8), logged);
    const model::route_key key{1, {0, 0}};
    rib.logs.enter(route_event<unicast>{cause::change, RIB_OPER_UPDATE, RIB_ACTION_ADD, key, fspf, {500, 0, {}}}, 1);
    EXPECT_EQ(held_in(8), logged + 1);
    EXPECT_EQ(ask(0).result, RIB_NOT_SUPPORTED);
    EXPECT_EQ(ask(9).result, RIB_NOT_SUPPORTED);
}

TEST_F(system_queries, refusals_are_told_by_result_and_client) {
    rib.refused.add(RIB_NO_ENTRY, fspf);
    rib.refused.add(RIB_NO_ENTRY, 22);
    const auto count = [&](uint32_t result, uint32_t client) {
        const reply answer = answer_internals(rib, {fspf, 0x1, result, client}, came);
        const auto info = seen<wire::in_info>(answer);
        EXPECT_EQ(info.get<"kind">(), result);
        return info.get<"word_0">();
    };
    EXPECT_EQ(count(RIB_NO_ENTRY, 0), 2U);
    EXPECT_EQ(count(RIB_NO_ENTRY, fspf), 1U);
    EXPECT_EQ(count(RIB_HW_FULL, 0), 0U);
}

TEST_F(system_queries, a_test_is_on_until_it_is_off) {
    const auto state = [&](uint32_t type) {
        const reply answer = test(rib, {RIB_CLIENT_TEST, type});
        const auto info = seen<wire::test_info>(answer);
        EXPECT_EQ(info.get<"word_0">(), type);
        return info.get<"word_4">();
    };
    EXPECT_EQ(state(3), 0U);
    EXPECT_EQ(state(2), 1U);
    EXPECT_EQ(state(3), 1U);
    EXPECT_EQ(state(1), 0U);
    EXPECT_FALSE(rib.notes_requests);
    EXPECT_EQ(test(rib, {RIB_CLIENT_TEST, 0}).result, RIB_NOT_SUPPORTED);
    EXPECT_EQ(test(rib, {RIB_CLIENT_TEST, 4}).result, RIB_NOT_SUPPORTED);
}

TEST_F(system_queries, a_comparison_leaves_a_report) {
    const auto report = [&](uint32_t type) { return answer_verification(rib, {fspf, 0x1, type, 10}, came); };
    for (const auto &[type, forget] : {std::pair(0x100U, 0x1000U), {0x200, 0x2000}, {0x400, 0x4000}}) {
        EXPECT_EQ(report(type).result, RIB_NO_ENTRY);
        const auto compares = verify(rib, {fspf, type}).compares;
        ASSERT_TRUE(compares);
        begin_report(rib, *compares, 1000);
        EXPECT_EQ(seen<wire::verf_info>(report(type)).get<"completed">(), 0U);
        finish_report(rib, *compares, {.keys = {{{*compares, {.vsan = 1}}, FIB_VERF_NOT_IN_FIB}}}, 1001);
        EXPECT_EQ(seen<wire::verf_info>(report(type)).get<"completed">(), 1001U);
        EXPECT_EQ(seen<wire::verf_info>(report(type)).get<"n_key">(), 1U);
        EXPECT_EQ(rib_check_verf_info(report(type).message.data(), report(type).message.size(), nullptr), RIB_OK);
        EXPECT_EQ(seen<wire::verf_info>(report(type)).get<"generated">(), 1000U);
        EXPECT_EQ(verify(rib, {fspf, forget}).result, RIB_OK);
        EXPECT_EQ(verify(rib, {fspf, forget}).result, RIB_NO_ENTRY);
        EXPECT_EQ(report(type).result, RIB_NO_ENTRY);
        finish_report(rib, *compares, {.keys = {{{*compares, {.vsan = 1}}, FIB_VERF_NOT_IN_FIB}}}, 1002);
        EXPECT_EQ(report(type).result, RIB_NO_ENTRY) << "it was forgotten meanwhile";
    }
    for (const uint32_t type : {0x10U, 0x20U, 0x40U}) {
        EXPECT_EQ(verify(rib, {fspf, type}).result, RIB_NO_DATABASE);
        EXPECT_EQ(report(type).result, RIB_NO_DATABASE);
    }
    EXPECT_EQ(verify(rib, {fspf, 0x30}).result, RIB_NOT_SUPPORTED);
    EXPECT_EQ(report(0x1000).result, RIB_NOT_SUPPORTED);
}

TEST_F(system_queries, a_log_is_followed) {
    const auto ask = [&](uint32_t from) { return answer_log(rib, {RIB_CLIENT_RIB, 2, from}); };
    EXPECT_EQ(ask(0).message.size(), wire::sync_info.size);
    for (uint32_t domain = 1; domain <= 5; domain++) {
        add_unicast(1, domain);
    }
    EXPECT_EQ(ask(0).message.size(), 6U * wire::sync_fcu.size);
    EXPECT_EQ(ask(4).message.size(), 2U * wire::sync_fcu.size);
    EXPECT_EQ(ask(5).message.size(), wire::sync_info.size);
    EXPECT_EQ(ask(6).message.size(), wire::sync_info.size);
    for (uint32_t domain = 1; domain <= 200; domain++) {
        add_unicast(1, domain);
    }
    EXPECT_EQ(protocol::log_position(205, 128), ask(5).message);
    EXPECT_EQ(ask(77).message.size(), 129U * wire::sync_fcu.size);
    EXPECT_EQ(answer_log(rib, {RIB_CLIENT_RIB, 0, 0}).message.size(), wire::sync_info.size);
    EXPECT_EQ(answer_log(rib, {RIB_CLIENT_RIB, 1, 0}).message.size(), wire::sync_info.size);
    EXPECT_EQ(answer_log(rib, {RIB_CLIENT_RIB, 3, 0}).result, RIB_NOT_SUPPORTED);
}

TEST_F(system_queries, a_flow_takes_an_active_route) {
    add_unicast(1, 2);
    EXPECT_EQ(answer_flow(rib, {fspf, {1, 0x010101, 0x020304, 5}}).message, protocol::flow_info(RIB_OK, 0x01010002));
    EXPECT_EQ(answer_flow(rib, {fspf, {1, 0x010101, 0x030304, 5}}).message, protocol::flow_info(RIB_NO_ENTRY, 0));
}

TEST_F(system_queries, have_a_row_each_that_refuses_what_is_too_short_or_too_long) {
    for (const request_handler &row : request_handlers()) {
        EXPECT_EQ(find_handler(row.opcode), &row);
        bytes message(100);
        uint32_t size = 0;
        while (row.check(message.data(), size, nullptr) == RIB_BAD_PARAMETERS && size < message.size()) {
            size++;
        }
        ASSERT_EQ(row.check(message.data(), size, nullptr), RIB_OK) << row.opcode;
        EXPECT_EQ(row.check(message.data(), size + 1, nullptr), RIB_EXCESS_DATA) << row.opcode;
        EXPECT_EQ(row.client(message.data()), 0U);
        message[3] = 12;
        EXPECT_EQ(row.client(message.data()), 12U) << row.opcode;
        const reply answer = row.answer(rib, message.data(), came);
        EXPECT_EQ(answer.result == RIB_OK, !answer.message.empty()) << row.opcode;
    }
}

} // namespace
} // namespace ribkit::rib
