// The RIB's routes as a client reads them, compared with what the RIB holds.
#include "clients/table_reader.h"

#include "clients/route_update.h"
#include "protocol/queries.h"
#include "protocol/route_messages.h"
#include "rib/service/answers.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "testing/capture.h"
#include "testing/fault_script.h"
#include "testing/literal_updates.h"
#include "testing/random_routes.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace ribkit::clients {
namespace {

constexpr const char *bus = "local:table_reader_test";

void add(bus::rib_link &link, uint32_t uuid, uint32_t vsan, const model::route_table &table) {
    auto bytes = testing::literal_update({uuid, vsan, RIB_OPER_UPDATE, model::changes_between({}, table)});
    link.ask(RIBKIT_OPCODE_FCURT_UPDATE, bytes);
}

auto query_bytes(uint32_t type, uint32_t count, const model::route_key &from) {
    return protocol::encode(protocol::unicast_query{RIB_CLIENT_TEST, type, count, from});
}

model::held_routes read_routes(bus::rib_link &link, const table_reading<unicast_table> &wanted) {
    model::held_routes all;
    read_table<unicast_table>(link, wanted, [&](uint32_t owner, const auto &key, const auto &what) {
        all[key] = {owner, {what.metric, what.flag, {what.hops.begin(), what.hops.end()}, what.carried}};
    });
    return all;
}

testing::fcurt_update asked(bus::rib_link &link, uint32_t type, uint32_t count, const model::route_key &from) {
    auto query = query_bytes(type, count, from);
    return testing::literal_contents(link.ask(RIBKIT_OPCODE_FCURT_QUERY, query));
}

model::route_table table_of(size_t routes, size_t hops) {
    model::route_table table;
    for (uint32_t i = 0; i < routes; i++) {
        table[{i << 8, 0xffff00}] = {i, RIB_FLAG_ACTIVE, std::vector<model::next_hop>(hops, {0x01010000, 1})};
    }
    return table;
}

TEST(route_key, the_next_one) {
    EXPECT_EQ(model::key_after({1, {2, 3}}), (model::route_key{1, {2, 4}}));
    EXPECT_EQ(model::key_after({1, {2, UINT32_MAX}}), (model::route_key{1, {3, 0}}));
    EXPECT_EQ(model::key_after({1, {UINT32_MAX, UINT32_MAX}}), (model::route_key{2, {0, 0}}));
}

TEST(table_reader, reads_what_the_rib_holds) {
    std::mt19937 random(20);
    for (int round = 0; round < 40; round++) {
        rib::rib_service rib(bus);
        bus::rib_link link(bus, RIB_CLIENT_TEST, {.envelopes = round % 2 == 0});
        for (uint32_t vsan = 1; vsan <= 4; vsan++) {
            add(link, RIB_CLIENT_FSPF, vsan, testing::random_table(random));
            add(link, RIB_CLIENT_MCAST, vsan, testing::random_table(random));
        }
        add(link, RIB_CLIENT_FSPF, 2, {{{0, 0}, {}}, {{5, UINT32_MAX}, {}}, {{UINT32_MAX, UINT32_MAX}, {}}});
        const model::held_routes all = read_routes(link, {.uuid = RIB_CLIENT_TEST, .active = true});
        model::held_routes by_vsan;
        for (uint32_t vsan = 0; vsan <= 5; vsan++) {
            const model::held_routes some = read_routes(link, {.uuid = RIB_CLIENT_TEST, .vsan = vsan, .active = true});
            EXPECT_TRUE(std::all_of(some.begin(), some.end(), [&](const auto &one) { return one.first.vsan == vsan; }));
            by_vsan.insert(some.begin(), some.end());
        }
        rib.stop();
        EXPECT_EQ(all, rib::active_routes(rib.tables()));
        EXPECT_EQ(by_vsan, all);
    }
    EXPECT_EQ(qip_refs_held(), 0U);
}

TEST(table_reader, an_answer_is_of_one_vsan_and_one_client) {
    rib::rib_service rib(bus);
    bus::rib_link link(bus, RIB_CLIENT_TEST);
    EXPECT_TRUE(asked(link, RIBKIT_QUERY_ALL, 10, {}).changes.empty());
    add(link, RIB_CLIENT_FSPF, 3, table_of(2, 1));
    add(link, RIB_CLIENT_MCAST, 3, {{{0x100, 0xffffff}, {}}});
    add(link, RIB_CLIENT_FSPF, 4, table_of(5, 1));
    const testing::fcurt_update first = asked(link, RIBKIT_QUERY_ALL, 10, {1, {}});
    EXPECT_EQ(first.vsan, 3U);
    EXPECT_EQ(first.uuid, RIB_CLIENT_FSPF);
    EXPECT_EQ(first.oper, RIB_OPER_UPDATE);
    EXPECT_EQ(first.changes, model::changes_between({}, table_of(2, 1)));
    const testing::fcurt_update second = asked(link, RIBKIT_QUERY_ALL, 10, {3, {0x101, 0}});
    EXPECT_EQ(second.vsan, 4U);
    EXPECT_EQ(second.changes.size(), 5U);
    EXPECT_EQ(asked(link, RIBKIT_QUERY_ALL, 10, {3, {0x100, 0xffffff}}).uuid, RIB_CLIENT_MCAST);
    EXPECT_EQ(asked(link, RIBKIT_QUERY_ALL, 3, {4, {}}).changes.size(), 3U);
    EXPECT_TRUE(asked(link, RIBKIT_QUERY_ALL, 0, {4, {}}).changes.empty());
    EXPECT_TRUE(asked(link, RIBKIT_QUERY_VSAN_ALL, 10, {1, {}}).changes.empty());
    EXPECT_EQ(asked(link, RIBKIT_QUERY_VSAN_ALL, 10, {4, {0x300, 0}}).changes.size(), 2U);
    EXPECT_TRUE(asked(link, RIBKIT_QUERY_VSAN_ALL, 10, {3, {0x101, 0}}).changes.empty());
}

TEST(table_reader, an_answer_is_64_kib_at_most) {
    rib::rib_service rib(bus, {.spaces = {1, 512, 16384}});
    bus::rib_link link(bus, RIB_CLIENT_TEST);
    const size_t fit = (RIBKIT_ANSWER_LIMIT - wire::fcurt_update.size) / protocol::fcurt_record_size(16);
    add(link, RIB_CLIENT_FSPF, 1, table_of(fit + 1, 16));
    link.take_traffic();
    EXPECT_EQ(asked(link, RIBKIT_QUERY_ALL, 1000, {}).changes.size(), fit);
    const bus::link_traffic carried = link.take_traffic();
    EXPECT_EQ(carried.messages, 1U);
    EXPECT_EQ(carried.bytes_sent, wire::fcurt_query.size);
    EXPECT_EQ(carried.bytes_received, wire::fcurt_update.size + fit * protocol::fcurt_record_size(16));
    EXPECT_EQ(read_routes(link, {RIB_CLIENT_TEST, 1}).size(), fit + 1);
}

TEST(table_reader, a_query_that_cannot_be_used_is_refused) {
    rib::rib_service rib(bus);
    bus::rib_link link(bus, RIB_CLIENT_TEST);
    const auto result_of = [&](std::span<uint8_t> query) {
        const auto answer = link.ask(RIBKIT_OPCODE_FCURT_QUERY, query);
        EXPECT_EQ(answer.size(), wire::route_rsp.size);
        return protocol::decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size>(answer)).result;
    };
    auto shifted = query_bytes(0x10000, 10, {});
    EXPECT_EQ(result_of(shifted), RIB_NOT_SUPPORTED);
    auto query = query_bytes(RIBKIT_QUERY_ALL, 10, {});
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(result_of(std::span(query).first(23)), RIB_BAD_PARAMETERS);
    EXPECT_NE(::testing::internal::GetCapturedStderr().find(": bad parameters: rib_fcurt_query: "), std::string::npos);
}

TEST(table_reader, damaged_answers_are_no_answers) {
    const testing::fault_script script("clock virtual\ntruncate 4 978\ntruncate 6 20\n");
    rib::rib_service rib(bus);
    bus::rib_link link(bus, RIB_CLIENT_TEST);
    add(link, RIB_CLIENT_FSPF, 1, table_of(1, 1)); // messages 1 and 2
    EXPECT_THROW(read_routes(link, {RIB_CLIENT_TEST, 1}), bus::no_answer);
    EXPECT_THROW(read_routes(link, {RIB_CLIENT_TEST, 1}), bus::no_answer);
    EXPECT_EQ(read_routes(link, {RIB_CLIENT_TEST, 1}).size(), 1U);
}

/// Answers every query with the same routes, whatever was asked for.
TEST(table_reader, routes_that_were_not_asked_for_end_the_reading) {
    uint32_t rib = 0;
    ASSERT_EQ(qip_open(bus, &rib), 0);
    ASSERT_EQ(qip_listen(rib, &ribkit_rib_address, 4), 0);
    std::thread serving([rib] {
        const auto bytes =
            testing::literal_update({RIB_CLIENT_FSPF, 1, RIB_OPER_UPDATE, model::changes_between({}, table_of(2, 1))});
        qip_ref asked{};
        while (qip_recv(rib, &asked, nullptr) == 0) {
            qip_send(rib, &ribkit_rib_address, 0, bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr, &asked,
                     nullptr);
            qip_drop(rib, &asked);
        }
    });
    bus::rib_link link(bus, RIB_CLIENT_TEST);
    EXPECT_THROW(read_routes(link, {RIB_CLIENT_TEST, {}}), bus::no_answer);
    qip_close(rib);
    serving.join();
}

TEST(table_reader, a_rib_that_always_has_one_more_route_is_left) {
    const rib::rib_service rib(bus);
    bus::rib_link link(bus, RIB_CLIENT_TEST);
    add(link, RIB_CLIENT_FSPF, 1, table_of(3, 1));
    add(link, RIB_CLIENT_FSPF, 2, table_of(3, 1));
    EXPECT_EQ(read_routes(link, {.uuid = RIB_CLIENT_TEST, .vsan = {}, .most_routes = 6}).size(), 6U);
    EXPECT_THROW(read_routes(link, {.uuid = RIB_CLIENT_TEST, .vsan = {}, .most_routes = 5}), bus::no_answer);
}

TEST(table_reader, a_key_is_found_alone) {
    const rib::rib_service rib(bus);
    bus::rib_link link(bus, RIB_CLIENT_TEST);
    const model::destination last{UINT32_MAX, UINT32_MAX};
    add(link, RIB_CLIENT_FSPF, 1, {{{0, 0}, {}}, {last, {}}});
    add(link, RIB_CLIENT_FSPF, 2, table_of(3, 1));
    for (const auto &key : {model::route_key{1, {0, 0}}, {1, last}, {2, {0x100, 0xffff00}}}) {
        const auto found = read_routes(link, {.uuid = RIB_CLIENT_TEST, .key = key});
        ASSERT_EQ(found.size(), 1U);
        EXPECT_EQ(found.begin()->first, key);
    }
    EXPECT_TRUE(read_routes(link, {.uuid = RIB_CLIENT_TEST, .key = model::route_key{1, {5, 0}}}).empty());
}

TEST(table_reader, a_label_route_of_each_type_is_found_by_its_key) {
    const rib::rib_service rib(bus);
    bus::rib_link link(bus, RIB_CLIENT_TEST);
    const std::vector<model::label_key> keys{{1, RIB_ROUTE_SRC_LABEL, 0x01010005, {0, 0}, 1, {0x5000, 0}},
                                             {1, RIB_ROUTE_SRC_LABEL + 1, 0, {0, 0}, 1, {0x5000, 0}},
                                             {1, RIB_ROUTE_SRC_LABEL + 1, 0, {0, 0}, 2, {0x5000, 0x6000}},
                                             {1, RIB_ROUTE_FC_LABEL, 0, {0x020000, RIB_MASK_DOMAIN}, 0, {}}};
    for (const model::label_key &key : keys) {
        const std::span<const uint32_t> sources(&key.source, key.type == RIB_ROUTE_SRC_LABEL ? 1 : 0);
        auto update = update_with(RIB_CLIENT_FSPF, RIB_ACTION_ADD, key, model::label_values(sources, {}));
        link.ask(RIBKIT_OPCODE_FCLRT_UPDATE, update);
    }
    for (const model::label_key &key : keys) {
        std::vector<model::label_key> found;
        read_table<label_table>(link, {.uuid = RIB_CLIENT_TEST, .key = key},
                                [&](uint32_t, const auto &one, const auto &) { found.push_back(one); });
        ASSERT_EQ(found.size(), 1U) << key.type << ' ' << key.match_count;
        EXPECT_EQ(found.front(), key);
    }
}

TEST(table_reader, queries_are_traced_on_request) {
    rib::rib_service rib(bus);
    bus::rib_link link(bus, RIB_CLIENT_TEST);
    const std::string text =
        testing::printed_by([&] { read_routes(link, {.uuid = RIB_CLIENT_FSPF, .vsan = 7, .trace = true}); });
    EXPECT_EQ(text.substr(8), " Sent RIB uuid 12 query vsan all 1000 ucast (size 24)\n");
}

} // namespace
} // namespace ribkit::clients
