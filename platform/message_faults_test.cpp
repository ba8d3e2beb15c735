// What a fault script does to calls and messages in real time, over any transport.
#include "platform/clock.h"
#include "platform/faults/fault_fixture.h"

namespace ribkit::platform {

namespace {

using std::chrono::milliseconds;

TEST_F(faulty, calls_fail) {
    load("fail open 1 EMSGSIZE\nfail listen 1 EPIPE\nfail send 2 EIO\nfail recv 1 ECONNRESET\nfail drop 2 EACCES");
    uint32_t handle = 0;
    EXPECT_EQ(error_of(qip_open(url.c_str(), &handle)), EMSGSIZE);
    const qip_addr other{2, 2};
    EXPECT_EQ(error_of(qip_listen(server, &other, 1)), EPIPE);
    EXPECT_EQ(send_text(client, "first"), 0);
    EXPECT_EQ(send_text(client, "second"), EIO);
    EXPECT_EQ(incoming(), refused(ECONNRESET));
    EXPECT_EQ(incoming(), "first");
    EXPECT_EQ(incoming(), refused(EAGAIN));
    qip_ref sent{};
    ASSERT_EQ(send_text(client, "third", &sent), 0);
    EXPECT_EQ(error_of(qip_drop(client, &sent)), EACCES);
    EXPECT_EQ(qip_refs_held(), 0U);
}

TEST_F(faulty, messages_are_lost_doubled_swapped_and_cut) {
    load("drop 2\nduplicate 3\nreorder 4\ntruncate every 6 2");
    ASSERT_EQ(qip_listen(client, &rib, 1), -1);
    const qip_addr other{2, 2};
    ASSERT_EQ(qip_listen(server, &other, 100), 0);
    for (const char *text : {"one", "two", "three", "four", "five", "six"}) {
        ASSERT_EQ(send_text(client, text, nullptr, other), 0);
    }
    for (const char *text : {"one", "three", "three", "five", "four", "si"}) {
        EXPECT_EQ(incoming(), text);
    }
    EXPECT_EQ(incoming(), refused(EAGAIN));
}

TEST_F(faulty, a_message_held_back_for_the_next_is_dropped_with_the_handle) {
    load("reorder 1");
    ASSERT_EQ(send_text(client, "never"), 0);
    EXPECT_EQ(incoming(), refused(EAGAIN));
}

TEST_F(faulty, messages_of_several_senders_are_held_back_together) {
    load("reorder 1\nreorder 2");
    uint32_t others[2]{};
    for (uint32_t &one : others) {
        ASSERT_EQ(qip_open(url.c_str(), &one), 0);
    }
    ASSERT_EQ(send_text(others[0], "one"), 0);
    ASSERT_EQ(send_text(others[1], "two"), 0);
    ASSERT_EQ(send_text(client, "three"), 0);
    for (const char *text : {"three", "one", "two"}) {
        EXPECT_EQ(incoming(), text);
    }
    for (const uint32_t one : others) {
        qip_close(one);
    }
}

TEST_F(faulty, a_doubled_request_is_answered_once) {
    load("duplicate every 1");
    const uint32_t token = ask("question");
    for (int count = 0; count < 2; ++count) {
        qip_ref asked = request();
        EXPECT_EQ(text_of(asked), "question");
        EXPECT_EQ(answer_text(server, asked, "answer"), 0);
        qip_drop(server, &asked);
    }
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, token)), "answer");
    EXPECT_EQ(taken(client, now(QIP_RECV_ANYTHING)), refused(EAGAIN));
}

TEST_F(faulty, a_late_message_on_the_real_clock) {
    load("delay 1 20\n");
    const time_point before = clock_now();
    ASSERT_EQ(send_text(client, "late"), 0);
    EXPECT_EQ(taken(server, within(0)), "late");
    EXPECT_GE(clock_now() - before, milliseconds{20});
}

TEST_F(faulty, a_handle_has_a_script_of_its_own_and_another_has_none) {
    uint32_t other = 0;
    ASSERT_EQ(qip_open(url.c_str(), &other), 0);
    ASSERT_EQ(load_script("fail send every 2 EIO", client), "");
    ASSERT_EQ(load_script("drop 2\n", server), "");
    EXPECT_EQ(send_text(other, "of the other"), 0);
    EXPECT_EQ(incoming(), "of the other");
    EXPECT_EQ(send_text(client, "lost where it arrives"), 0);
    EXPECT_EQ(incoming(), refused(EAGAIN));
    EXPECT_EQ(send_text(client, "not sent"), EIO);
    EXPECT_EQ(send_text(other, "of the other again"), 0);
    EXPECT_EQ(incoming(), "of the other again");

    load("fail send every 1 EAGAIN\ndrop every 1\n"); // for those that have none of their own
    EXPECT_EQ(send_text(other, "not sent"), EAGAIN);
    EXPECT_EQ(send_text(client, "by the script of its own"), 0);
    EXPECT_EQ(incoming(), "by the script of its own");
    ASSERT_EQ(load_script(nullptr, other), "");
    EXPECT_EQ(send_text(other, "undisturbed"), 0);
    EXPECT_EQ(incoming(), "undisturbed");
    qip_close(other);
}

TEST_F(faulty, a_handle_s_script_is_refused_like_any_other_and_has_no_clock) {
    EXPECT_EQ(load_script("fail send every 1 EIO", client), "");
    EXPECT_EQ(load_script("seed 1\nclock virtual\n", client), ":2: the clock is the process's, not a handle's");
    EXPECT_EQ(load_script("fly\n", client), ":1: no such event: fly");
    EXPECT_EQ(send_text(client, "by the script before"), EIO);
    EXPECT_EQ(error_of(qip_faults_load_for(UINT32_MAX, nullptr, nullptr, 0)), EBADF);
}

} // namespace

} // namespace ribkit::platform
