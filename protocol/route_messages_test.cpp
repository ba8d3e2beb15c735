// Messages by name against the same ones put together byte after byte: updates of every size in rooms of every size,
// answers, queries, entries of the tables.
#include "protocol/table_messages.h"

#include "rib_check.h"
#include "rib_codec.h"
#include "rib_codes.h"
#include "testing/literal_updates.h"
#include "testing/random_routes.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace ribkit::protocol {
namespace {

using bytes = std::vector<uint8_t>;

testing::fcurt_update random_update(std::mt19937 &random) {
    const auto changes = model::changes_between(testing::random_table(random), testing::random_table(random));
    return {testing::below(random, 500), 1 + testing::below(random, 4095), RIB_OPER_UPDATE_RSP, changes};
}

/// As much of the update as `limit` bytes hold.
bytes written(const testing::fcurt_update &update, size_t limit, size_t &routes) {
    bytes room(limit, 0xee);
    const update_writer message(room);
    message.set<"uuid">(update.uuid).set<"vsan">(update.vsan).set<"oper">(update.oper);
    routes = add_routes(message, update.changes);
    room.resize(message.size());
    return room;
}

TEST(route_messages, an_update_is_the_bytes_that_its_format_says) {
    const testing::fcurt_update update{
        RIB_CLIENT_FSPF,
        20,
        RIB_OPER_UPDATE_RSP,
        {{RIB_ACTION_ADD, {0x020000, RIB_MASK_DOMAIN}, {500, RIB_FLAG_ACTIVE, {{7, 2}, {8, 3}}}},
         {RIB_ACTION_DELETE, {0x030000, RIB_MASK_DOMAIN}, {}}}};
    size_t routes = 0;
    const bytes message = written(update, 2000, routes);
    EXPECT_EQ(routes, 2U);
    ASSERT_EQ(message.size(), 980U + 48U + 32U);
    const bytes header{0, 0, 0, 12, 0, 0, 0, 20, 0, 0, 0, 0x10, 0, 0, 0, 0, 0, 0, 0, 2};
    EXPECT_TRUE(std::equal(header.begin(), header.end(), message.begin()));
    EXPECT_EQ(std::count(message.begin() + 20, message.begin() + 980, 0), 960);
    const bytes first{0, 2, 0, 0, 0, 0xff, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0xf4,
                      0, 0, 0, 8, 0, 0,    0, 2, 0, 0, 0, 7, 0, 0, 0, 2, 0, 0, 0, 8, 0, 0, 0, 3};
    EXPECT_TRUE(std::equal(first.begin(), first.end(), message.begin() + 980));
    EXPECT_EQ(rib_sizeof_fcurt_update(message.data()), message.size());
}

// Whole routes only, the first that fit, and one more would not.
TEST(route_messages, an_update_holds_as_many_whole_routes_as_there_is_room_for) {
    std::mt19937 random(2);
    for (int round = 0; round < 1000; round++) {
        testing::fcurt_update update = random_update(random);
        const size_t limit = 980 + random() % 700;
        size_t routes = 0;
        const bytes message = written(update, limit, routes);
        if (routes < update.changes.size()) {
            EXPECT_GT(message.size() + 32 + 8 * update.changes[routes].what.hops.size(), limit);
        }
        update.changes.resize(routes);
        ASSERT_EQ(message, testing::literal_update(update)) << "round " << round;
        ASSERT_EQ(rib_check_fcurt_update(message.data(), static_cast<uint32_t>(message.size()), nullptr), RIB_OK);
    }
}

TEST(route_messages, a_route_without_room_for_all_its_hops_is_not_there) {
    bytes room(980 + 40, 0);
    const update_writer message(room);
    const std::vector<model::next_hop> two{{1, 2}, {3, 4}};
    EXPECT_FALSE(add_route(message, RIB_ACTION_ADD, {5, 6}, {7, 8, two}));
    EXPECT_EQ(bytes(room.data(), room.data() + message.size()), testing::literal_update({}));
    EXPECT_TRUE(add_route(message, RIB_ACTION_ADD, {5, 6}, {7, 8, std::span(two).first(1)}));
    EXPECT_EQ(message.size(), room.size());
}

TEST(route_messages, records_are_read_as_they_were_written_by_hand) {
    std::mt19937 random(3);
    for (int round = 0; round < 300; round++) {
        const testing::fcurt_update update = random_update(random);
        const bytes message = testing::literal_update(update);
        const update_view read(message.data());
        auto expected = update.changes.begin();
        for (const record_view record : read.list<"route">()) {
            ASSERT_NE(expected, update.changes.end());
            ASSERT_EQ((model::route_change{record.get<"action">(), destination_in(record), route_of(record)}),
                      *expected++);
        }
        ASSERT_EQ(expected, update.changes.end());
    }
}

TEST(route_messages, an_address_ends_where_its_mask_does) {
    const auto at = [](uint32_t fcid, uint32_t mask) {
        const bytes message = testing::literal_update({0, 0, 0, {{RIB_ACTION_ADD, {fcid, mask}, {}}}});
        return destination_in(*update_view(message.data()).list<"route">().begin());
    };
    EXPECT_EQ(at(0x12345678, 0xffff00), (model::destination{0x345600, 0xffff00}));
    EXPECT_EQ(at(0x12345678, UINT32_MAX), (model::destination{0x12345678, UINT32_MAX}));
    EXPECT_EQ(at(0x12345678, 0), (model::destination{0, 0}));
}

TEST(route_messages, an_answer_is_five_words) {
    const fcurt_response response{RIB_NO_ENTRY, RIB_OPER_UPDATE_RSP, 20, 3, 0x01020304};
    const auto answer = encode(response);
    const std::array<uint8_t, 20> expected{0x40, 0x52, 0, 0x10, 0, 0, 0, 0x10, 0, 0, 0, 20, 0, 0, 0, 3, 1, 2, 3, 4};
    EXPECT_EQ(answer, expected);
    EXPECT_EQ(decode_fcurt_response(answer), response);
}

TEST(route_messages, an_entry_of_the_tables_has_its_hops_eight_bytes_apart) {
    const auto entry = ucast_entry({20, {0x020000, 0xff0000}}, {12, {1000, 9, {{0x01010001, 0x65}, {7, 0x1ef}}}});
    bytes expected;
    for (const uint32_t word :
         {12U, 20U, 0x020000U, 0xff0000U, 0U, 0U, 1000U, 9U, 2U, 0x65U << 5, 0x01010001U, 0xefU << 5, 7U}) {
        testing::append_word(expected, word);
    }
    ASSERT_GE(entry.size(), expected.size() + 12); // behind the last hop stands the room for its labels
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), entry.begin()));
}

} // namespace
} // namespace ribkit::protocol
