// Whatever is lost, late, damaged or said again: what is told of it leads from what was known to what the RIB has,
// once.
#include "clients/change_reader.h"

#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "testing/capture.h"
#include "testing/fault_script.h"
#include "testing/literal_updates.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ribkit::clients {
namespace {

using bytes = std::vector<uint8_t>;
using lines = std::vector<std::string>;

constexpr const char *url = "local:change_reader_test";

bytes update_of(uint32_t metric) {
    return testing::literal_update({RIB_CLIENT_FSPF,
                                    1,
                                    RIB_OPER_UPDATE,
                                    {{RIB_ACTION_ADD, {0x650000, RIB_MASK_DOMAIN}, {metric, 0, {{0x01010001, 101}}}}}});
}

/// What is told, as lines.
class change_reader_test : public ::testing::Test {
  protected:
    void note(uint32_t opcode, std::span<const uint8_t> update) {
        if (opcode != RIBKIT_OPCODE_FCURT_NOTE) {
            return say("of another table");
        }
        for (const auto &one : testing::literal_contents(update).changes) {
            say((one.action == RIB_ACTION_DELETE ? "delete " : "cost ") + std::to_string(one.what.metric));
        }
    }
    void say(const std::string &line) {
        told.push_back(line);
        if (line == last_ && --times_ == 0) {
            link.close();
        }
    }
    /// Until that has been told so often.
    void follow_until(const std::string &last, int times = 1) {
        last_ = last;
        times_ = times;
        EXPECT_THROW(reader.follow(), bus::link_closed);
    }
    void ask(bytes update) { operator_link.ask(RIBKIT_OPCODE_FCURT_UPDATE, update); }
    void notify(uint32_t opcode, const bytes &payload) {
        EXPECT_EQ(qip_send(by_hand.number(), &ribkit_listeners_address, opcode, payload.data(),
                           static_cast<uint32_t>(payload.size()), nullptr, nullptr, nullptr),
                  0);
    }

    testing::fault_script script{"clock virtual\n"};
    rib::rib_service rib{url};
    bus::rib_link operator_link{url, RIB_CLIENT_FSPF};
    bus::service_handle by_hand{url};
    lines told;
    bus::rib_link link{url, RIB_CLIENT_OPERATOR};
    change_reader reader{link,
                         RIB_CLIENT_OPERATOR,
                         {[this](uint32_t opcode, std::span<const uint8_t> update) { note(opcode, update); },
                          [this](const held_counts &held) { say("read " + std::to_string(held.unicast)); },
                          [this](const std::string &why) { say("missed: " + why); }}};

  private:
    std::string last_;
    int times_ = 0; ///< that are left
};

TEST_F(change_reader_test, whoever_was_forgotten_reads_again) {
    reader.start();
    const qip_recv_opts for_a_minute{{QIP_RECV_INCOMING, 0, 60}};
    qip_ref none{};
    EXPECT_NE(qip_recv(by_hand.number(), &none, &for_a_minute), 0);
    ask(update_of(500)); // nobody is told
    follow_until("read 1");
    EXPECT_EQ(told, (lines{"read 0", "missed: it was not registered all the time", "cost 500", "read 1"}));
}

TEST_F(change_reader_test, what_arrives_after_it_was_read_is_not_told_again) {
    reader.start();
    const testing::fault_script late("clock virtual\ndelay 3 100\ndelay 4 100\ndelay 7 5000\ndelay 8 5000\n");
    ask(update_of(500)); // and a notification for each link
    notify(RIBKIT_OPCODE_FCURT_NOTE, {});
    notify(RIBKIT_OPCODE_FCURT_NOTE, {});
    follow_until("read 1", 2);
    const std::string missed = "missed: a notification of unicast routes came damaged";
    EXPECT_EQ(told, (lines{"read 0", missed, "cost 500", "read 1", missed, "read 1"}));
}

TEST_F(change_reader_test, what_changes_nothing_is_not_told) {
    reader.start();
    ask(update_of(500));
    ask(update_of(500));
    ask(testing::literal_update({RIB_CLIENT_FSPF, 1, RIB_OPER_REPLAY, {}}));
    ask(update_of(700));
    follow_until("cost 700");
    EXPECT_EQ(told, (lines{"read 0", "cost 500", "cost 700"}));
}

TEST_F(change_reader_test, of_a_notification_only_the_news_are_told) {
    reader.start();
    const model::destination to{0x670000, RIB_MASK_DOMAIN};
    notify(RIBKIT_OPCODE_FCURT_NOTE, testing::literal_update({RIB_CLIENT_FSPF,
                                                              1,
                                                              RIB_OPER_UPDATE,
                                                              {{RIB_ACTION_DELETE, {0x660000, RIB_MASK_DOMAIN}, {}},
                                                               {RIB_ACTION_ADD, to, {800, 0, {}}},
                                                               {RIB_ACTION_ADD, to, {800, 0, {}}},
                                                               {RIB_ACTION_ADD, to, {900, 0, {}}},
                                                               {RIB_ACTION_DELETE, to, {900, 0, {}}}}}));
    follow_until("delete 900");
    EXPECT_EQ(told, (lines{"read 0", "cost 800", "cost 900", "delete 900"}));
}

TEST_F(change_reader_test, a_change_that_was_lost_is_found_where_the_rest_stayed_as_it_was) {
    const bytes other = testing::literal_update(
        {RIB_CLIENT_FSPF, 1, RIB_OPER_UPDATE, {{RIB_ACTION_ADD, {0x660000, RIB_MASK_DOMAIN}, {300, 0, {}}}}});
    ask(update_of(500));
    ask(other);
    reader.start();
    const testing::fault_script lost("clock virtual\ndrop 3\ndrop 4\n");
    ask(update_of(700));
    notify(RIBKIT_OPCODE_FCURT_NOTE, testing::literal_update({RIB_CLIENT_FSPF, 1, RIB_OPER_UPDATE, {}}));
    follow_until("read 2", 1);
    EXPECT_EQ(told, (lines{"read 2", "missed: the RIB had more to tell than it could keep", "cost 700", "read 2"}));
}

TEST_F(change_reader_test, what_arrives_while_it_is_read_is_told_once) {
    reader.start();
    const testing::fault_script late("clock virtual\ndelay 3 500\ndelay 4 500\ndelay 8 1000\n");
    ask(update_of(500)); // and a notification for each link
    notify(RIBKIT_OPCODE_FCURT_NOTE, {});
    follow_until("read 1");
    const std::string missed = "missed: a notification of unicast routes came damaged";
    EXPECT_EQ(told, (lines{"read 0", missed, "cost 500", "read 1"}));
}

TEST_F(change_reader_test, whoever_registers_in_time_misses_nothing) {
    reader.start();
    const testing::fault_script late("clock virtual\ndelay 3 15000\ndelay 4 15000\n");
    ask(update_of(500));
    notify(RIBKIT_OPCODE_STARTED - 1, bytes(7)); // nobody knows what that is
    follow_until("cost 500");
    EXPECT_EQ(told, (lines{"read 0", "cost 500"}));
}

TEST_F(change_reader_test, a_rib_that_is_gone_is_told_of) {
    reader.start();
    rib.stop();
    const std::string missed = "missed: no answer from the RIB: nobody listens";
    follow_until(missed);
    EXPECT_EQ(told, (lines{"read 0", missed}));
}

TEST_F(change_reader_test, each_damaged_notification_leaves_a_line_in_the_history) {
    reader.start();
    yelk_hist_clear();
    notify(RIBKIT_OPCODE_FCURT_NOTE, bytes(7));
    notify(RIBKIT_OPCODE_FCMRT_NOTE, bytes(7));
    notify(RIBKIT_OPCODE_FCLRT_NOTE, bytes(7));
    follow_until("read 0");
    EXPECT_EQ(told, (lines{"read 0", "missed: a notification of unicast routes came damaged", "read 0"}));
    const std::string history = testing::printed_by(yelk_hist_print);
    for (const uint32_t opcode : {RIBKIT_OPCODE_FCURT_NOTE, RIBKIT_OPCODE_FCMRT_NOTE, RIBKIT_OPCODE_FCLRT_NOTE}) {
        EXPECT_NE(history.find("client: notification of 7 bytes with opcode " + std::to_string(opcode) +
                               " dropped: it is damaged"),
                  std::string::npos)
            << history;
    }
    yelk_hist_clear();
}

} // namespace
} // namespace ribkit::clients
