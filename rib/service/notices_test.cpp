// What listeners are told, in which messages, and what happens where they have no room.
#include "rib/service/notices.h"

#include "protocol/route_messages.h"
#include "rib_check.h"

#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

struct told {
    uint32_t opcode;
    bytes message;
};

class notices_test : public ::testing::Test {
  protected:
    notices_test() { listeners.listen(true); }

    void tell(uint32_t client, uint32_t vsan, uint32_t fcid, uint32_t action = RIB_ACTION_ADD,
              cause why = cause::change) {
        const unicast::key key{vsan, {fcid, 0xffffff}};
        const std::vector<model::next_hop> hops{{0x01010001, 2}};
        listeners.tell(route_event<unicast>{why, RIB_OPER_UPDATE, action, key, client, {1, 0, hops}});
    }

    /// What all messages told: client, VSAN, FC ID, action.
    [[nodiscard]] std::vector<std::array<uint32_t, 4>> changes() const {
        std::vector<std::array<uint32_t, 4>> all;
        for (const auto &[opcode, message] : sent) {
            EXPECT_EQ(opcode, RIBKIT_OPCODE_FCURT_NOTE);
            EXPECT_EQ(rib_check_fcurt_update(message.data(), message.size(), nullptr), RIB_OK);
            const protocol::update_view update(message.data());
            for (const auto route : update.list<"route">()) {
                all.push_back({update.get<"uuid">(), update.get<"vsan">(), route.get<"fcid">(), route.get<"action">()});
            }
        }
        return all;
    }

    std::vector<told> sent;
    bool has_room = true;
    notices listeners{[this](uint32_t opcode, std::span<const uint8_t> message) {
        if (has_room) {
            sent.push_back({opcode, {message.begin(), message.end()}});
        }
        return has_room;
    }};
};

TEST_F(notices_test, are_of_one_client_and_vsan_in_the_order_of_the_changes) {
    tell(12, 1, 1);
    tell(12, 1, 2, RIB_ACTION_DELETE);
    tell(39, 1, 3);
    tell(12, 2, 4);
    tell(12, 2, 5);
    listeners.flush();
    EXPECT_EQ(sent.size(), 3U);
    EXPECT_EQ(changes(), (std::vector<std::array<uint32_t, 4>>{
                             {12, 1, 1, 1}, {12, 1, 2, 2}, {39, 1, 3, 1}, {12, 2, 4, 1}, {12, 2, 5, 1}}));
    listeners.flush();
    EXPECT_EQ(sent.size(), 3U);
    EXPECT_FALSE(listeners.waits());
}

TEST_F(notices_test, go_on_in_the_next_message_where_one_is_full) {
    for (uint32_t fcid = 0; fcid < 5000; fcid++) {
        tell(12, 1, fcid);
    }
    listeners.flush();
    EXPECT_EQ(sent.size(), 4U);
    const auto all = changes();
    ASSERT_EQ(all.size(), 5000U);
    for (uint32_t fcid = 0; fcid < all.size(); fcid++) {
        EXPECT_EQ(all[fcid][2], fcid);
    }
}

TEST_F(notices_test, tell_no_restored_routes_and_nobody_who_does_not_listen) {
    tell(12, 1, 1, RIB_ACTION_ADD, cause::restore);
    listeners.flush();
    EXPECT_TRUE(sent.empty());
    listeners.listen(false);
    tell(12, 1, 1);
    listeners.flush();
    EXPECT_TRUE(sent.empty());
}

TEST_F(notices_test, tell_replayed_routes_as_such) {
    tell(12, 1, 1, RIB_ACTION_ADD, cause::replay);
    listeners.flush();
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(protocol::update_view(sent[0].message.data()).get<"oper">(), RIB_OPER_REPLAY);
}

TEST_F(notices_test, of_each_table_have_its_message) {
    const std::vector<uint32_t> members{4, 5};
    const multicast::key group{1, {0x010203, 0xffffff}};
    listeners.tell(route_event<multicast>{cause::change, RIB_OPER_UPDATE, RIB_ACTION_ADD, group, 14, {members}});
    const label::key key{1, 2, 0, {0, 0}, 1, {0x5140, 0}};
    const std::vector<uint32_t> hop{0x00010000, 0x01010001, 0x7140};
    listeners.tell(route_event<label>{cause::change, RIB_OPER_UPDATE, RIB_ACTION_ADD_LABEL, key, 13, {{}, hop}});
    listeners.flush();
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[0].opcode, RIBKIT_OPCODE_FCMRT_NOTE);
    EXPECT_EQ(rib_check_fcmrt_update(sent[0].message.data(), sent[0].message.size(), nullptr), RIB_OK);
    EXPECT_EQ(sent[1].opcode, RIBKIT_OPCODE_FCLRT_NOTE);
    EXPECT_EQ(rib_check_fclrt_update(sent[1].message.data(), sent[1].message.size(), nullptr), RIB_OK);
    const codec::view<wire::fclrt_update> labels(sent[1].message.data());
    EXPECT_EQ((*labels.list<"route">().begin()).get<"action">(), RIB_ACTION_ADD_LABEL);
}

TEST_F(notices_test, are_kept_while_there_is_no_room) {
    has_room = false;
    for (uint32_t fcid = 0; fcid < notices::most_kept; fcid++) {
        tell(12, 1, fcid);
        listeners.flush();
    }
    EXPECT_TRUE(sent.empty());
    EXPECT_TRUE(listeners.waits());
    has_room = true;
    listeners.flush();
    EXPECT_EQ(changes().size(), notices::most_kept);
    EXPECT_FALSE(listeners.waits());
}

TEST_F(notices_test, beyond_what_is_kept_listeners_are_told_that_some_are_missing) {
    has_room = false;
    for (uint32_t fcid = 0; fcid < 2 * notices::most_kept; fcid++) {
        tell(12, 1, fcid);
        listeners.flush();
    }
    has_room = true;
    listeners.flush();
    ASSERT_EQ(sent.size(), 1U);
    const protocol::update_view missing(sent[0].message.data());
    EXPECT_EQ(missing.get<"uuid">(), RIB_CLIENT_RIB);
    EXPECT_EQ(missing.get<"n_route">(), 0U);
    EXPECT_FALSE(listeners.waits());
    tell(12, 1, 7);
    listeners.flush();
    EXPECT_EQ(changes().size(), 1U);
}

TEST_F(notices_test, of_what_no_message_holds_listeners_are_told_that_it_is_missing) {
    tell(12, 1, 6);
    const std::vector<uint32_t> too_many(100'000, 0x01010001);
    const multicast::key group{1, {0xff0001, 0xffffff}};
    listeners.tell(route_event<multicast>{cause::change, RIB_OPER_UPDATE, RIB_ACTION_ADD, group, 14, {too_many}});
    EXPECT_TRUE(listeners.waits());
    listeners.flush();
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(protocol::update_view(sent[0].message.data()).get<"n_route">(), 1U) << "what came before";
    EXPECT_EQ(protocol::update_view(sent[1].message.data()).get<"uuid">(), RIB_CLIENT_RIB);
    EXPECT_FALSE(listeners.waits());
}

TEST_F(notices_test, that_some_are_missing_is_told_when_there_is_room_for_that) {
    has_room = false;
    for (uint32_t fcid = 0; fcid < 2 * notices::most_kept; fcid++) {
        tell(12, 1, fcid);
        listeners.flush();
    }
    listeners.flush();
    EXPECT_TRUE(listeners.waits());
    has_room = true;
    listeners.flush();
    EXPECT_EQ(sent.size(), 1U);
    EXPECT_FALSE(listeners.waits());
}

} // namespace
} // namespace ribkit::rib
