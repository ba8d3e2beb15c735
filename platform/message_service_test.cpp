// What the service answers, one thread at a time: addresses, tokens, references, bounds and errors.
#include "platform/service_fixture.h"
#include "platform/tokens.h"
#include "platform/transport.h"

#include <vector>

namespace ribkit::platform {

namespace {

class message_service : public on_one_bus {};

TEST_F(message_service, request_and_answer) {
    qip_ref sent = dirty_ref();
    ASSERT_EQ(send_text(client, "question", &sent), 0);
    const uint32_t token = qip_rr_token_get(&sent);
    EXPECT_EQ(qip_payload_get(&sent), nullptr);
    EXPECT_EQ(qip_drop(client, &sent), 0);
    qip_ref asked = request();
    EXPECT_EQ(qip_opcode_get(&asked), 7U);
    EXPECT_EQ(text_of(asked), "question");
    EXPECT_EQ(answer_text(server, asked, "answer"), 0);
    EXPECT_EQ(text_of(asked), "question");
    EXPECT_EQ(qip_drop(server, &asked), 0);
    qip_ref answer = dirty_ref();
    const qip_recv_opts opts = now(QIP_RECV_BY_TOKEN, token);
    ASSERT_EQ(qip_recv(client, &answer, &opts), 0);
    EXPECT_EQ(text_of(answer), "answer");
    EXPECT_EQ(qip_opcode_get(&answer), 0U);
    EXPECT_EQ(qip_rr_token_get(&answer), token);
    EXPECT_EQ(qip_sender_get(&answer), 0U);
    EXPECT_STREQ(qip_sender_name(&answer), "");
    EXPECT_EQ(qip_drop(client, &answer), 0);
}

// Another thread may be in a call while its handle is closed.
TEST_F(message_service, a_closed_endpoint_does_nothing_more) {
    endpoint_ptr end;
    ASSERT_EQ(open_endpoint(url, std::chrono::seconds{60}, end), 0);
    end->close();
    EXPECT_EQ(end->listen({2, 2}, 1, {}), ECANCELED);
    uint32_t token = 0;
    for (const qip_addr &to : {rib, qip_addr{0xfe000000, 0}}) {
        EXPECT_EQ(end->send(to, new_message(7, {}), true, nullptr), ECANCELED);
        EXPECT_EQ(end->send(to, new_message(7, {}), true, &token), ECANCELED);
    }
    message letter;
    EXPECT_EQ(end->receive({}, letter), ECANCELED);
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), refused(EAGAIN));
    end->close();
}

TEST(messages, larger_than_memory_are_refused) {
    static constexpr uint8_t first = 0;
    EXPECT_THROW(new_message(7, {&first, SIZE_MAX}), std::bad_alloc);
}

TEST_F(message_service, a_message_tells_its_sender) {
    ASSERT_EQ(send_text(client, "one"), 0);
    ASSERT_EQ(send_text(client, "two"), 0);
    ASSERT_EQ(send_text(server, "three"), 0);
    qip_ref one = request();
    qip_ref three = request(); // senders take turns
    qip_ref two = request();
    EXPECT_NE(qip_sender_get(&one), 0U);
    EXPECT_EQ(qip_sender_get(&one), qip_sender_get(&two));
    EXPECT_NE(qip_sender_get(&one), qip_sender_get(&three));
    EXPECT_EQ(qip_sender_name(&one), own_name());
    for (qip_ref *ref : {&one, &two, &three}) {
        EXPECT_EQ(qip_drop(server, ref), 0);
        EXPECT_EQ(qip_sender_get(ref), 0U);
        EXPECT_STREQ(qip_sender_name(ref), "");
    }
}

TEST_F(message_service, every_byte_of_a_reference_is_written) {
    qip_ref once = dirty_ref();
    qip_ref again{};
    ASSERT_EQ(send_text(client, "", &once), 0);
    ASSERT_EQ(send_text(client, "", &again), 0);
    for (size_t word = 2; word < 7; ++word) {
        EXPECT_EQ(once.word[word], again.word[word]);
    }
    std::memset(reinterpret_cast<uint8_t *>(&once) + 25, 0xff, 3); // as a caller may leave them
    EXPECT_EQ(qip_drop(client, &once), 0);
    EXPECT_EQ(qip_drop(client, &again), 0);
}

TEST_F(message_service, a_cleared_or_dropped_reference_holds_nothing) {
    qip_ref cleared = dirty_ref();
    std::memset(&cleared, 0, 25);
    EXPECT_EQ(error_of(qip_drop(client, &cleared)), EBADF);
    EXPECT_EQ(error_of(qip_drop(client, nullptr)), EBADF);
    qip_ref wild = dirty_ref();
    EXPECT_EQ(error_of(qip_drop(client, &wild)), EBADF);
    EXPECT_EQ(qip_payload_size(&wild), 0U);
    EXPECT_EQ(qip_opcode_get(&wild), 0U);
    EXPECT_EQ(qip_rr_token_get(&wild), 0U);
    qip_ref sent{};
    ASSERT_EQ(send_text(client, "once", &sent), 0);
    EXPECT_EQ(qip_refs_held(), 1U);
    EXPECT_EQ(qip_drop(client, &sent), 0);
    EXPECT_EQ(error_of(qip_drop(client, &sent)), EBADF);
    EXPECT_EQ(qip_payload_get(&sent), nullptr);
    ++sent.word[1]; // the generation of an empty slot
    EXPECT_EQ(error_of(qip_drop(client, &sent)), EBADF);
    EXPECT_EQ(qip_refs_held(), 0U);
}

TEST_F(message_service, answers_are_found_by_token_in_any_order) {
    const uint32_t first = ask("1");
    const uint32_t second = ask("2");
    const uint32_t third = ask("3");
    for (const char *text : {"one", "two", "three"}) {
        qip_ref asked = request();
        EXPECT_EQ(answer_text(server, asked, text), 0);
        qip_drop(server, &asked);
    }
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, third)), "three");
    EXPECT_EQ(taken(client, now(QIP_RECV_INCOMING)), refused(EAGAIN));
    EXPECT_EQ(taken(client, now(QIP_RECV_ANY_ANSWER)), "one");
    EXPECT_EQ(taken(client, now(QIP_RECV_ANYTHING)), "two");
    EXPECT_EQ(taken(client, now(QIP_RECV_ANYTHING)), refused(EAGAIN));
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, first)), refused(EINVAL));
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, second)), refused(EINVAL));
}

TEST_F(message_service, anything_prefers_answers) {
    const uint32_t token = ask("question");
    ASSERT_NE(token, 0U);
    const qip_addr mine{1, 1};
    ASSERT_EQ(qip_listen(client, &mine, 1), 0);
    ASSERT_EQ(send_text(server, "incoming", nullptr, mine), 0);
    qip_ref asked = request();
    ASSERT_EQ(answer_text(server, asked, "answer"), 0);
    qip_drop(server, &asked);
    EXPECT_EQ(taken(client, now(QIP_RECV_ANYTHING)), "answer");
    EXPECT_EQ(taken(client, now(QIP_RECV_ANYTHING)), "incoming");
}

TEST_F(message_service, a_late_answer_is_thrown_away) {
    const uint32_t token = ask("question");
    qip_ref asked = request();
    EXPECT_EQ(taken(client, within(1, QIP_RECV_BY_TOKEN, token)), refused(ETIMEDOUT));
    EXPECT_EQ(answer_text(server, asked, "late"), 0);
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, token)), refused(EINVAL));
    EXPECT_EQ(taken(client, now(QIP_RECV_ANYTHING)), refused(EAGAIN));
    qip_drop(server, &asked);
}

TEST_F(message_service, a_second_answer_is_thrown_away) {
    const uint32_t token = ask("question");
    qip_ref asked = request();
    EXPECT_EQ(answer_text(server, asked, "first"), 0);
    EXPECT_EQ(answer_text(server, asked, "second"), 0);
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, token)), "first");
    EXPECT_EQ(answer_text(server, asked, "third"), 0);
    EXPECT_EQ(taken(client, now(QIP_RECV_ANYTHING)), refused(EAGAIN));
    qip_drop(server, &asked);
}

TEST_F(message_service, an_answer_that_nobody_awaits_is_thrown_away) {
    ASSERT_EQ(send_text(client, "one way"), 0);
    qip_ref asked = request();
    EXPECT_EQ(qip_rr_token_get(&asked), 0U);
    EXPECT_EQ(answer_text(server, asked, "?"), 0);
    EXPECT_EQ(taken(client, now(QIP_RECV_ANYTHING)), refused(EAGAIN));
    qip_drop(server, &asked);
}

TEST_F(message_service, answering_fills_a_reference_of_its_own) {
    const uint32_t token = ask("question");
    qip_ref asked = request();
    qip_ref sent = dirty_ref();
    ASSERT_EQ(qip_send(server, &rib, 0, "answer", 6, &sent, &asked, nullptr), 0);
    EXPECT_EQ(qip_refs_held(), 2U);
    EXPECT_EQ(qip_drop(server, &sent), 0);
    EXPECT_EQ(text_of(asked), "question");
    EXPECT_EQ(qip_drop(server, &asked), 0);
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, token)), "answer");
}

TEST_F(message_service, only_a_received_message_can_be_answered) {
    qip_ref sent{};
    ASSERT_EQ(send_text(client, "question", &sent), 0);
    EXPECT_EQ(answer_text(client, sent, "to myself"), EINVAL);
    qip_drop(client, &sent);
    EXPECT_EQ(answer_text(client, sent, "to nobody"), EINVAL);
}

TEST_F(message_service, a_full_queue) {
    for (uint32_t count = 0; count < rib_bound; ++count) {
        EXPECT_EQ(send_at_once(client, std::to_string(count)), 0);
    }
    EXPECT_EQ(send_at_once(client, "too many"), EAGAIN);
    const qip_send_opts by_word_1{{0, 1}};
    EXPECT_EQ(error_of(qip_send(client, &rib, 7, nullptr, 0, nullptr, nullptr, &by_word_1)), EAGAIN);
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), "0");
    EXPECT_EQ(send_at_once(client, "4"), 0);
    for (const char *text : {"1", "2", "3", "4"}) {
        EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), text);
    }
}

TEST_F(message_service, every_address_has_its_own_bound) {
    const qip_addr other{0xfe010001, 25};
    ASSERT_EQ(qip_listen(server, &other, 1), 0);
    EXPECT_EQ(send_at_once(client, "partition", other), 0);
    EXPECT_EQ(send_at_once(client, "full", other), EAGAIN);
    EXPECT_EQ(send_at_once(client, "rib"), 0);
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), "partition");
    EXPECT_EQ(send_at_once(client, "again", other), 0);
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), "rib");
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), "again");
}

TEST_F(message_service, an_address_has_one_listener) {
    EXPECT_EQ(error_of(qip_listen(client, &rib, 1)), EADDRINUSE);
    EXPECT_EQ(error_of(qip_listen(server, &rib, 1)), EADDRINUSE);
    const qip_addr other{1, 1};
    EXPECT_EQ(error_of(qip_listen(client, &other, 0)), EINVAL);
    EXPECT_EQ(send_text(client, "?", nullptr, other), ENOTCONN);
    qip_ref ref = dirty_ref();
    EXPECT_EQ(send_text(client, "?", &ref, other), ENOTCONN);
    EXPECT_EQ(qip_close(server), 0);
    EXPECT_EQ(send_text(client, "?"), ENOTCONN);
    EXPECT_EQ(qip_listen(client, &rib, 1), 0);
}

TEST_F(message_service, everyone_in_a_group_is_told_or_nobody) {
    const qip_addr group{0xfe000000, 0};
    EXPECT_EQ(send_text(client, "nobody there", nullptr, group), 0);
    ASSERT_EQ(qip_listen(server, &group, 2), 0);
    ASSERT_EQ(qip_listen(client, &group, 1), 0);
    EXPECT_EQ(error_of(qip_listen(client, &group, 1)), EADDRINUSE);
    EXPECT_EQ(send_at_once(client, "news", group), 0);
    EXPECT_EQ(send_at_once(client, "client is full", group), EAGAIN);
    EXPECT_EQ(taken(client, now(QIP_RECV_INCOMING)), "news");
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), "news");
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), refused(EAGAIN));
}

TEST_F(message_service, the_first_answer_of_a_group_counts) {
    const qip_addr group{0xff000001, 0};
    ASSERT_EQ(qip_listen(server, &group, 2), 0);
    ASSERT_EQ(qip_listen(client, &group, 2), 0);
    qip_ref sent{};
    ASSERT_EQ(send_text(client, "who?", &sent, group), 0);
    const uint32_t token = qip_rr_token_get(&sent);
    qip_drop(client, &sent);
    for (const uint32_t handle : {client, server}) {
        qip_ref asked{};
        const qip_recv_opts opts = now(QIP_RECV_INCOMING);
        ASSERT_EQ(qip_recv(handle, &asked, &opts), 0);
        EXPECT_EQ(answer_text(handle, asked, handle == client ? "client" : "server"), 0);
        qip_drop(handle, &asked);
    }
    EXPECT_EQ(taken(client, now(QIP_RECV_ANY_ANSWER)), "client");
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, token)), refused(EINVAL));
}

TEST_F(message_service, unknown_handles_and_words) {
    const uint32_t closed = client;
    ASSERT_EQ(qip_close(closed), 0);
    EXPECT_EQ(error_of(qip_close(closed)), EBADF);
    EXPECT_EQ(error_of(qip_listen(closed, &rib, 1)), EBADF);
    EXPECT_EQ(send_text(closed, "?"), EBADF);
    EXPECT_EQ(taken(closed, now(QIP_RECV_INCOMING)), refused(EBADF));
    EXPECT_EQ(taken(server, now(4)), refused(EINVAL));
    uint32_t reopened = 0;
    ASSERT_EQ(qip_open(url.c_str(), &reopened), 0);
    EXPECT_NE(reopened, closed);
    qip_close(reopened);
}

TEST_F(message_service, urls) {
    uint32_t handle = 77;
    EXPECT_EQ(error_of(qip_open("", &handle)), EINVAL);
    EXPECT_EQ(error_of(qip_open("local", &handle)), EINVAL);
    EXPECT_EQ(error_of(qip_open(":test", &handle)), EINVAL);
    EXPECT_EQ(error_of(qip_open("pigeon:test", &handle)), EPROTONOSUPPORT);
    EXPECT_EQ(handle, 77U);
    ASSERT_EQ(qip_open("local:", &handle), 0);
    EXPECT_EQ(send_text(handle, "?"), ENOTCONN); // another bus
    qip_close(handle);
}

TEST_F(message_service, what_was_received_outlives_the_handle) {
    ask("question");
    qip_ref asked = request();
    ASSERT_EQ(send_text(client, "never read"), 0);
    ASSERT_EQ(qip_close(server), 0);
    EXPECT_EQ(text_of(asked), "question");
    EXPECT_EQ(answer_text(server, asked, "?"), EBADF);
    EXPECT_EQ(qip_drop(server, &asked), 0);
}

TEST_F(message_service, an_answer_to_a_closed_handle_is_thrown_away) {
    ask("question");
    qip_ref asked = request();
    ASSERT_EQ(qip_close(client), 0);
    EXPECT_EQ(answer_text(server, asked, "?"), 0);
    qip_drop(server, &asked);
}

TEST_F(message_service, answers_awaited_are_bounded) {
    for (int count = 0; count < 4096; ++count) {
        ask("question");
        qip_ref asked = request();
        qip_drop(server, &asked);
    }
    qip_ref ref{};
    EXPECT_EQ(send_text(client, "one too many", &ref), ENOBUFS);
    EXPECT_EQ(send_text(client, "one way"), 0);
}

TEST_F(message_service, empty_and_large_payloads) {
    const std::string large(100000, 'x');
    ASSERT_EQ(send_text(client, ""), 0);
    ASSERT_EQ(send_text(client, large), 0);
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), "");
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), large);
}

TEST(tokens_of_requests, skip_zero_and_those_in_use) {
    auto source = std::make_shared<token_source>();
    const token_holder first{source};
    const token_holder second{source};
    EXPECT_EQ(first.value(), 1U);
    EXPECT_EQ(second.value(), 2U);
    source->continue_at(0xffffffff);
    EXPECT_EQ(token_holder{source}.value(), 0xffffffffU);
    EXPECT_EQ(token_holder{source}.value(), 3U);
    EXPECT_EQ(token_holder{source}.value(), 4U);
    source->continue_at(3);
    EXPECT_EQ(token_holder{source}.value(), 3U);
}

} // namespace

} // namespace ribkit::platform
