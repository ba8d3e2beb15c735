// What only holds in one process, and mailboxes by themselves.
#include "platform/local/mailbox.h"
#include "platform/service_fixture.h"

#include <vector>

namespace ribkit::platform {

namespace {

class local_bus : public on_one_bus {};

TEST_F(local_bus, names_of_senders_are_checked_and_make_no_difference_in_process) {
    const qip_addr other{2, 2};
    for (const char *wrong : {"", "a.b", "*", ">", "a b", "a{", "\xc3\xa4", static_cast<const char *>(nullptr)}) {
        const char *const names[] = {"fspf", wrong};
        EXPECT_EQ(error_of(qip_listen_to(server, &other, 1, names, 2)), EINVAL);
    }
    const char *const names[] = {"fspf", "Static-7_x"};
    EXPECT_EQ(error_of(qip_listen_to(server, &other, 0, names, 2)), EINVAL);
    ASSERT_EQ(error_of(qip_listen_to(server, &other, 1, names, 2)), 0);
    EXPECT_EQ(error_of(qip_listen_to(server, &other, 1, nullptr, 0)), EADDRINUSE);
    EXPECT_EQ(send_at_once(client, "from anybody", other), 0);
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), "from anybody");
}

TEST_F(local_bus, any_handle_may_answer) {
    const uint32_t token = ask("question");
    qip_ref asked = request();
    ASSERT_EQ(qip_close(server), 0);
    EXPECT_EQ(answer_text(client, asked, "from another handle"), 0);
    EXPECT_EQ(qip_drop(server, &asked), 0);
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, token)), "from another handle");
}

TEST_F(local_bus, who_takes_part_twice_does_so_once) {
    ASSERT_EQ(qip_close(client), 0);
    ASSERT_EQ(qip_close(server), 0);
    const testing::input_file script{"clock virtual"};
    char error[100] = "";
    ASSERT_EQ(qip_faults_load(script.path().c_str(), error, sizeof error), 0) << error;
    qip_take_part();
    qip_take_part();
    qip_pause(1000);
    uint64_t passed = 0;
    EXPECT_EQ(qip_virtual_time(&passed), 0);
    EXPECT_EQ(passed, 1000000U);
    EXPECT_EQ(qip_faults_load(nullptr, nullptr, 0), 0);
}

TEST_F(local_bus, an_unknown_handle_was_never_connected_again) { EXPECT_EQ(qip_reconnections(client + 1000), 0U); }

class mailboxes : public ::testing::Test {
  protected:
    [[nodiscard]] static message letter(uint32_t size = 0) {
        static const sender_ptr somebody = new_sender("somebody");
        message made = new_message(7, std::vector<uint8_t>(size));
        made.from = somebody;
        return made;
    }

    std::shared_ptr<post_office> office = std::make_shared<post_office>();
    std::shared_ptr<mailbox> box = std::make_shared<mailbox>(office, std::make_shared<handle_faults>());
};

TEST_F(mailboxes, tokens_are_never_0_and_never_awaited_twice) {
    box->continue_after(UINT32_MAX - 1);
    for (const uint32_t token : {UINT32_MAX, 1U, 2U}) {
        EXPECT_EQ(box->new_token(), token);
        EXPECT_EQ(box->expect(token), 0);
    }
    box->continue_after(UINT32_MAX - 1);
    EXPECT_EQ(box->new_token(), 3U);
}

TEST_F(mailboxes, who_awaits_no_more_does_not_disturb_others) {
    EXPECT_EQ(box->expect(1), 0);
    EXPECT_EQ(box->expect(2), 0);
    box->expect_no_more(3);
    EXPECT_TRUE(box->awaits(1) && box->awaits(2));
    box->expect_no_more(1);
    EXPECT_FALSE(box->awaits(1));
    EXPECT_TRUE(box->awaits(2));
}

TEST_F(mailboxes, what_is_late_for_the_close_is_thrown_away) {
    door &way_in = box->add_door(1);
    arrival late = box->prepare(&way_in, letter());
    box->close();
    mailbox::complete(late);
    EXPECT_TRUE(box->has_room(way_in, letter().from->number));
    message none;
    EXPECT_EQ(box->receive({}, none), ECANCELED);
}

TEST_F(mailboxes, hold_so_many_bytes_back) {
    fair_queue queue{*office};
    door &way_in = queue.add_door(1);
    const uint32_t sender = letter().from->number;
    EXPECT_TRUE(queue.is_first_lost(way_in, sender)) << "nothing of it waits";
    EXPECT_TRUE(queue.is_first_lost(way_in, sender));
    constexpr uint32_t half = fair_queue::most_bytes_held_back / 2;
    const message large = letter(half);
    EXPECT_TRUE(queue.can_hold_back(way_in, large));
    packet first = queue.packed(&way_in, letter(half));
    queue.put(first);
    EXPECT_FALSE(queue.can_hold_back(way_in, large));
    EXPECT_TRUE(queue.can_hold_back(way_in, letter(half / 2)));
    EXPECT_TRUE(queue.is_first_lost(way_in, sender));
    EXPECT_FALSE(queue.is_first_lost(way_in, sender));
}

TEST(spin_habits, nobody_spins_alone) {
    spin_habit alone{1};
    EXPECT_EQ(alone.turns(), 0U);
    spin_habit two{2};
    EXPECT_GT(two.turns(), 0U);
}

} // namespace

} // namespace ribkit::platform
