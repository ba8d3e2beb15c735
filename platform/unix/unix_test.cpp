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

TEST_F(over_unix, a_group_waits_for_one_that_reads_soon) {
    yelk_hist_clear();
    const uint32_t slow = listening(url, 1, group);
    EXPECT_EQ(send_text(client, "first", nullptr, group), 0);
    std::thread sending{[this] { EXPECT_EQ(send_text(client, "second", nullptr, group), 0); }};
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // it is likely to wait then
    EXPECT_EQ(taken(slow, within(60000)), "first");
    sending.join();
    const bool has_second = send_at_once(client, "third", group) == EAGAIN; // it may be too late on a busy machine
    EXPECT_EQ(taken(slow, within(60000)), has_second ? "second" : "third");
    EXPECT_EQ(qip_close(slow), 0);
    yelk_hist_clear();
}

TEST_F(over_unix, a_member_that_ends_leaves_the_answer_to_the_others) {
    const uint32_t ends = listening(url, 1, group);
    const uint32_t answers = listening(url, 1, group);
    qip_ref sent{};
    ASSERT_EQ(send_text(client, "question", &sent, group), 0);
    const uint32_t token = qip_rr_token_get(&sent);
    EXPECT_EQ(qip_drop(client, &sent), 0);
    EXPECT_EQ(qip_close(ends), 0);
    EXPECT_EQ(taken(client, now(QIP_RECV_ANY_ANSWER)), refused(EAGAIN)); // it knows that one is gone
    qip_ref asked{};
    const qip_recv_opts soon = within(60000);
    ASSERT_EQ(qip_recv(answers, &asked, &soon), 0);
    EXPECT_EQ(answer_text(answers, asked, "answer"), 0);
    EXPECT_EQ(qip_drop(answers, &asked), 0);
    EXPECT_EQ(taken(client, within(60000, QIP_RECV_BY_TOKEN, token)), "answer");
    EXPECT_EQ(qip_close(answers), 0);
}

TEST_F(over_unix, an_answer_goes_no_way_once_its_handle_is_closed) {
    ask("question");
    qip_ref asked = request();
    ASSERT_EQ(qip_close(server), 0);
    EXPECT_EQ(answer_text(client, asked, "from another handle"), ECANCELED);
    EXPECT_EQ(qip_drop(client, &asked), 0);
}

TEST_F(over_unix, an_address_of_one_is_no_group) {
    const qip_addr one{group.node, 5};
    ASSERT_EQ(error_of(qip_listen(server, &one, 1)), 0);
    EXPECT_EQ(error_of(qip_listen(server, &group, 1)), 0);
    EXPECT_EQ(error_of(qip_listen(server, &group, 1)), EADDRINUSE);
    EXPECT_EQ(send_text(client, "news", nullptr, group), 0);
    EXPECT_EQ(taken(server, within(60000)), "news");
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), refused(EAGAIN));
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
