// What updates do to the RIB's tables.
#include "rib/rib_tables.h"

#include "rib_codes.h"
#include "rib_show.h"
#include "testing/capture.h"
#include "testing/guarded.h"
#include "testing/literal_updates.h"
#include "testing/random_routes.h"

#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

constexpr model::destination two{0x020000, RIB_MASK_DOMAIN};
constexpr model::destination three{0x030000, RIB_MASK_DOMAIN};
const model::route near{500, RIB_FLAG_DIRECT | RIB_FLAG_ACTIVE, {{0x01010001, 2}}};
const model::route dearer{600, RIB_FLAG_ACTIVE, {{0x01010002, 3}}};

std::vector<uint8_t> message(std::vector<model::route_change> changes, uint32_t vsan = 1,
                             uint32_t oper = RIB_OPER_UPDATE_RSP) {
    return testing::literal_update({RIB_CLIENT_FSPF, vsan, oper, std::move(changes)});
}

void set_word(std::vector<uint8_t> &bytes, size_t at, uint32_t value) {
    for (size_t i = 0; i < 4; i++) {
        bytes[at + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
    }
}

class rib : public ::testing::Test {
  protected:
    protocol::fcurt_response take(std::vector<model::route_change> changes) {
        return tables.take_update(message(std::move(changes)));
    }
    [[nodiscard]] model::route held(const model::destination &to) const { return tables.routes().at({1, to}).what; }

    rib_tables tables;
};

TEST_F(rib, an_added_route_is_held_for_its_client_and_replaced_by_the_next) {
    EXPECT_EQ(take({{RIB_ACTION_ADD, two, near}}), (protocol::fcurt_response{RIB_OK, RIB_OPER_UPDATE_RSP, 1, 1, 1}));
    EXPECT_EQ(held(two), near);
    EXPECT_EQ(tables.routes().at({1, two}).uuid, RIB_CLIENT_FSPF);
    EXPECT_EQ(take({{RIB_ACTION_ADD, two, dearer}}).held, 1U);
    EXPECT_EQ(held(two), dearer);
}

TEST_F(rib, a_deleted_route_is_gone) {
    take({{RIB_ACTION_ADD, two, near}, {RIB_ACTION_ADD, three, near}});
    EXPECT_EQ(take({{RIB_ACTION_DELETE, two, {}}}), (protocol::fcurt_response{RIB_OK, RIB_OPER_UPDATE_RSP, 1, 1, 1}));
    EXPECT_FALSE(tables.routes().contains({1, two}));
    EXPECT_TRUE(tables.routes().contains({1, three}));
}

TEST_F(rib, metric_and_flag_change_alone_or_together) {
    take({{RIB_ACTION_ADD, two, near}});
    take({{RIB_ACTION_CHANGE_METRIC, two, dearer}});
    EXPECT_EQ(held(two), (model::route{dearer.metric, near.flag, near.hops}));
    take({{RIB_ACTION_CHANGE_FLAG, two, dearer}});
    EXPECT_EQ(held(two), (model::route{dearer.metric, dearer.flag, near.hops}));
    take({{RIB_ACTION_CHANGE_FLAG | RIB_ACTION_CHANGE_METRIC, two, near}});
    EXPECT_EQ(held(two), near);
}

TEST_F(rib, what_is_not_there_cannot_change_and_the_others_do) {
    take({{RIB_ACTION_ADD, two, near}});
    const auto response = take({{RIB_ACTION_DELETE, three, {}}, {RIB_ACTION_CHANGE_METRIC, two, dearer}});
    EXPECT_EQ(response, (protocol::fcurt_response{RIB_NO_ENTRY, RIB_OPER_UPDATE_RSP, 1, 1, 1}));
    EXPECT_EQ(held(two).metric, dearer.metric);
    EXPECT_EQ(take({{RIB_ACTION_CHANGE_FLAG, three, near}}).result, RIB_NO_ENTRY);
}

TEST_F(rib, vsans_have_tables_of_their_own) {
    take({{RIB_ACTION_ADD, two, near}});
    EXPECT_EQ(tables.take_update(message({{RIB_ACTION_ADD, two, dearer}}, 2)).held, 1U);
    EXPECT_EQ(held(two), near);
    EXPECT_EQ(tables.held(1), 1U);
    EXPECT_EQ(tables.held(2), 1U);
    EXPECT_EQ(tables.held(3), 0U);
}

TEST_F(rib, an_update_that_is_not_sound_changes_nothing) {
    take({{RIB_ACTION_ADD, two, near}});
    for (const uint32_t action : {0U, 0x3U, 0x10U, 0x18U}) {
        EXPECT_EQ(take({{RIB_ACTION_DELETE, two, {}}, {action, three, near}}),
                  (protocol::fcurt_response{RIB_BAD_PARAMETERS, RIB_OPER_UPDATE_RSP, 1, 0, 1}));
    }
    EXPECT_EQ(tables.take_update(message({{RIB_ACTION_DELETE, two, {}}}, 1, RIB_OPER_REMOVE)),
              (protocol::fcurt_response{RIB_NOT_SUPPORTED, RIB_OPER_REMOVE, 1, 0, 1}));
    EXPECT_EQ(tables.take_update(message({{RIB_ACTION_ADD, two, near}}, 0)).result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(tables.take_update(message({{RIB_ACTION_ADD, two, near}}, 4096)).result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(tables.routes().size(), 1U);
    EXPECT_EQ(tables.take_update(message({{RIB_ACTION_ADD, two, near}}, 4095)).result, RIB_OK);
}

TEST_F(rib, a_short_update_is_refused_with_what_its_header_tells) {
    take({{RIB_ACTION_ADD, two, near}});
    const std::vector<uint8_t> whole = message({{RIB_ACTION_DELETE, two, near}});
    for (size_t length = 0; length < whole.size(); length++) {
        const testing::guarded cut(std::span<const uint8_t>(whole).first(length));
        const bool header = length >= 980;
        const uint32_t oper = header ? RIB_OPER_UPDATE_RSP : 0;
        EXPECT_EQ(tables.take_update(cut.bytes()),
                  (protocol::fcurt_response{RIB_BAD_PARAMETERS, oper, header ? 1U : 0U, 0, header ? 1U : 0U}))
            << length;
    }
    EXPECT_EQ(held(two), near);
}

TEST_F(rib, counts_that_disagree_with_the_size_are_refused) {
    const auto result = [&](size_t at, uint32_t count) {
        std::vector<uint8_t> wrong = message({{RIB_ACTION_ADD, two, near}, {RIB_ACTION_ADD, three, near}});
        set_word(wrong, at, count);
        return tables.take_update(testing::guarded(wrong).bytes()).result;
    };
    for (const uint32_t count : {3U, 0x20000000U, 0x7fffffffU, 0xffffffffU}) {
        for (const size_t at : {size_t{16}, size_t{980 + 28}, size_t{980 + 40 + 28}}) {
            EXPECT_EQ(result(at, count), RIB_BAD_PARAMETERS) << count << " at " << at;
        }
    }
    EXPECT_EQ(result(12, 241), RIB_BAD_PARAMETERS);
    EXPECT_EQ(result(16, 1), RIB_EXCESS_DATA);
    EXPECT_TRUE(tables.routes().empty());
    EXPECT_EQ(result(12, 240), RIB_OK);
}

TEST_F(rib, random_updates_leave_what_the_client_has) {
    std::mt19937 random(3);
    model::route_table client;
    for (int round = 0; round < 300; round++) {
        const model::route_table after = testing::random_neighbour(random, client);
        const auto changes = model::changes_between(client, after);
        client = after;
        if (!changes.empty()) {
            EXPECT_EQ(take(changes),
                      (protocol::fcurt_response{RIB_OK, RIB_OPER_UPDATE_RSP, 1, static_cast<uint32_t>(changes.size()),
                                                static_cast<uint32_t>(after.size())}));
        }
        ASSERT_EQ(tables.routes().size(), after.size());
        for (const auto &[to, what] : after) {
            ASSERT_EQ(held(to), what) << "round " << round;
        }
    }
}

TEST_F(rib, an_entry_displays_its_route) {
    const model::route wide{1000, RIB_FLAG_ACTIVE, {{0x01010001, 0x65}, {0x01010002, 239}}};
    const auto entry = protocol::ucast_entry({20, two}, {RIB_CLIENT_FSPF, wide});
    uint32_t length = 0;
    const std::string text = testing::printed_by([&] { length = rib_show_fcu(0, entry.data()); });
    EXPECT_EQ(length, 52U);
    EXPECT_EQ(text, "fspf        20    020000 ff0000    00 00    R P A  2     1000   F  normal frm  \n"
                    "    fc1/1  Domain  0x65(101)\n"
                    "    fc1/2  Domain  0xef(239)\n");
    EXPECT_EQ(testing::printed_by([&] {
                  EXPECT_EQ(rib_show_fcu(0, protocol::ucast_entry({20, two}, {RIB_CLIENT_FSPF, {}}).data()), 36U);
              }).find("fc1/"),
              std::string::npos);
}

} // namespace
} // namespace ribkit::rib
