// What only holds among the processes of one machine: sizes, ends, bounds of each sender, slow members of a group.
#include "platform/unix/unix_fixture.h"

#include <chrono>
#include <thread>

namespace ribkit::platform {

namespace {

constexpr qip_addr group{0xfe000000, 0};

class over_unix : public on_one_bus {};

TEST_F(over_unix, large_messages) {
    for (const size_t size : {65519U, 65520U, 65521U, 131040U, 131041U, 1U << 20, 10U << 20}) {
        std::string text(size, '\0');
        for (size_t index = 0; index < size; ++index) {
            text[index] = static_cast<char>(index * 31 + (index >> 12));
        }
        std::thread serving{[this] {
            qip_ref asked = dirty_ref();
            ASSERT_EQ(qip_recv(server, &asked, nullptr), 0);
            EXPECT_EQ(answer_text(server, asked, text_of(asked)), 0);
            EXPECT_EQ(qip_drop(server, &asked), 0);
        }};
        EXPECT_TRUE(taken(client, within(100000, QIP_RECV_BY_TOKEN, ask(text))) == text) << size;
        serving.join();
    }
    const std::vector<uint8_t> larger(largest_message + 1);
    EXPECT_EQ(error_of(qip_send(client, &rib, 7, larger.data(), largest_message + 1, nullptr, nullptr, nullptr)),
              EMSGSIZE);
    ask("question");
    qip_ref asked = request();
    EXPECT_EQ(error_of(qip_send(server, &rib, 0, larger.data(), largest_message + 1, nullptr, &asked, nullptr)),
              EMSGSIZE);
    EXPECT_EQ(qip_drop(server, &asked), 0);
}

TEST_F(over_unix, a_listener_that_ends_and_one_that_comes_back) {
    const uint32_t token = ask("never answered");
    EXPECT_EQ(qip_close(server), 0);
    EXPECT_EQ(taken(client, within(60000, QIP_RECV_BY_TOKEN, token)), refused(ECONNRESET));
    EXPECT_EQ(send_text(client, "?"), ENOTCONN);
    EXPECT_EQ(qip_reconnections(client), 0U);
    server = listening(url);
    EXPECT_EQ(exchanged(client, server), "question!");
    EXPECT_EQ(qip_reconnections(client), 1U);
    EXPECT_EQ(qip_close(server), 0);
    server = listening(url); // before the client has noticed
    EXPECT_EQ(exchanged(client, server), "question!");
    EXPECT_EQ(qip_reconnections(client), 2U);
}

TEST_F(over_unix, what_was_sent_before_a_close_arrives) {
    ASSERT_EQ(send_text(client, "first"), 0);
    ASSERT_EQ(send_text(client, std::string(1000000, 'x')), 0);
    ASSERT_EQ(qip_close(client), 0);
    EXPECT_EQ(taken(server, within(60000)), "first");
    EXPECT_EQ(taken(server, within(60000)), std::string(1000000, 'x'));
}

TEST_F(over_unix, senders_do_not_fill_the_queue_of_one_another) {
    while (send_at_once(client, "mine") == 0) {
    }
    const uint32_t other = opened(url);
    for (uint32_t count = 0; count < rib_bound; ++count) {
        EXPECT_EQ(send_at_once(other, "other's"), 0);
    }
    EXPECT_EQ(send_at_once(other, "too many"), EAGAIN);
    EXPECT_EQ(qip_close(other), 0);
}

TEST_F(over_unix, a_request_counts_until_it_is_answered_or_the_listener_looks_for_more) {
    for (uint32_t count = 0; count < rib_bound; ++count) {
        ask("question");
    }
    EXPECT_EQ(send_at_once(client, "too many"), EAGAIN);
    qip_ref first = request();
    EXPECT_EQ(answer_text(server, first, "answer"), 0);
    EXPECT_EQ(send_at_once(client, "after an answer"), 0);
    EXPECT_EQ(send_at_once(client, "too many"), EAGAIN);
    qip_ref second = request();
    qip_ref third = request();
    EXPECT_EQ(send_at_once(client, "after another look"), 0);
    for (qip_ref *ref : {&first, &second, &third}) {
        EXPECT_EQ(qip_drop(server, ref), 0);
    }
    EXPECT_EQ(send_text(client, "after a drop"), 0);
}

TEST_F(over_unix, a_group_does_not_wait_for_ever_for_one_that_does_not_read) {
    yelk_hist_clear();
    ASSERT_EQ(error_of(qip_listen(server, &group, 100)), 0);
    const uint32_t idle = listening(url, 1, group);
    EXPECT_EQ(send_text(client, "first", nullptr, group), 0);
    EXPECT_EQ(send_at_once(client, "not now", group), EAGAIN);
    EXPECT_EQ(send_text(client, "second", nullptr, group), 0);
    EXPECT_EQ(send_at_once(client, "third", group), 0); // it is not waited for again
    EXPECT_EQ(taken(idle, now(QIP_RECV_INCOMING)), "first");
    EXPECT_EQ(send_at_once(client, "fourth", group), 0);
    EXPECT_EQ(taken(idle, now(QIP_RECV_INCOMING)), "fourth");
    for (const char *text : {"first", "second", "third", "fourth"}) {
        EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), text);
    }
    EXPECT_EQ(qip_close(idle), 0);
    EXPECT_EQ(send_at_once(client, "fifth", group), 0);
    yelk_hist_clear();
}

// As a service sends that waits for nobody: it comes again and again.
TEST_F(over_unix, a_member_that_does_not_read_holds_the_others_back_for_a_second_only) {
    yelk_hist_clear();
    ASSERT_EQ(error_of(qip_listen(server, &group, 100)), 0);
    const uint32_t idle = listening(url, 1, group);
    ASSERT_EQ(send_at_once(client, "first", group), 0);
    int error = EAGAIN;
    for (int tries = 0; error == EAGAIN && tries < 1000; tries++) {
        error = send_at_once(client, "second", group);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_EQ(error, 0);
    EXPECT_EQ(send_at_once(client, "third", group), 0);
    for (const char *text : {"first", "second", "third"}) {
        EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), text);
    }
    EXPECT_EQ(taken(idle, now(QIP_RECV_INCOMING)), "first");
    EXPECT_EQ(qip_reconnections(idle), 0U);
    EXPECT_EQ(send_at_once(client, "fourth", group), 0);
    EXPECT_EQ(taken(idle, now(QIP_RECV_INCOMING)), "fourth");
    EXPECT_EQ(qip_reconnections(idle), 1U) << "it hears that something is missing";
    EXPECT_EQ(qip_reconnections(server), 0U);
    EXPECT_EQ(qip_close(idle), 0);
    yelk_hist_clear();
}

} // namespace

} // namespace ribkit::platform
