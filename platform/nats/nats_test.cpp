// The bus over a server that the tests start themselves.
#include "platform/faults/fault_fixture.h"
#include "platform/nats/nats_fixture.h"
#include "platform/transport.h"
#include "rib_codes.h"
#include "rib_wrap.h"

#include <chrono>
#include <climits>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace ribkit::platform {

namespace {

TEST_F(over_nats, requests_and_answers) {
    const answering serving{rib_handle};
    for (int number = 0; number < 200; ++number) {
        const std::string text = std::to_string(number);
        ASSERT_EQ(answer_to(client, text), text + "!");
    }
}

TEST_F(over_nats, the_wrappers) {
    std::thread serving{[this] {
        qip_ref asked{};
        ASSERT_EQ(qip_recv(rib_handle, &asked, nullptr), 0);
        EXPECT_EQ(qip_opcode_get(&asked), 77U);
        EXPECT_EQ(rib_wrap_qip_rsp(rib_handle, &asked, "done", 4), RIB_OK);
        EXPECT_EQ(rib_wrap_qip_drop(RIB_CLIENT_RIB, rib_handle, &asked), 0);
    }};
    uint8_t payload[] = {1, 2, 3};
    rib_wrap_msg message{RIB_CLIENT_FSPF, 5, 77, {}, payload, 3};
    rib_wrap_msg answer{};
    ASSERT_EQ(rib_wrap_qip_req_rsp(client, &message, &answer), RIB_OK);
    serving.join();
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(answer.payload), answer.payload_size), "done");
    EXPECT_EQ(rib_wrap_qip_drop(RIB_CLIENT_FSPF, client, &answer.ref), 0);
}

TEST_F(over_nats, both_sides_know_the_token) {
    qip_ref sent{};
    ASSERT_EQ(send_text(client, "question", &sent), 0);
    qip_ref asked{};
    ASSERT_EQ(qip_recv(rib_handle, &asked, nullptr), 0);
    EXPECT_NE(qip_rr_token_get(&sent), 0U);
    EXPECT_EQ(qip_rr_token_get(&asked), qip_rr_token_get(&sent));
    EXPECT_EQ(qip_opcode_get(&asked), 7U);
    qip_drop(client, &sent);
    qip_drop(rib_handle, &asked);
}

TEST_F(over_nats, nobody_listens) {
    EXPECT_EQ(answer_to(client, "?", {1, 1}), refused(ENOTCONN));
    EXPECT_EQ(send_text(client, "one way", nullptr, {1, 1}), 0);
}

TEST_F(over_nats, no_answer_comes) {
    qip_ref sent{};
    ASSERT_EQ(send_text(client, "?", &sent), 0);
    const uint32_t token = qip_rr_token_get(&sent);
    qip_drop(client, &sent);
    EXPECT_EQ(taken(client, within(20, QIP_RECV_BY_TOKEN, token)), refused(ETIMEDOUT));
    qip_ref asked{};
    ASSERT_EQ(qip_recv(rib_handle, &asked, nullptr), 0);
    EXPECT_EQ(answer_text(rib_handle, asked, "late"), 0);
    qip_drop(rib_handle, &asked);
    EXPECT_EQ(taken(client, within(20, QIP_RECV_ANYTHING)), refused(ETIMEDOUT));
}

TEST_F(over_nats, everyone_in_a_group_is_told) {
    const qip_addr group{0xfe000000, 0};
    ASSERT_EQ(error_of(qip_listen(client, &group, 5)), 0);
    ASSERT_EQ(error_of(qip_listen(rib_handle, &group, 5)), 0);
    EXPECT_EQ(error_of(qip_listen(rib_handle, &group, 5)), EADDRINUSE);
    EXPECT_EQ(rib_wrap_qip_note(rib_handle, 78, "news", 4), 0);
    EXPECT_EQ(taken(client, within(10000)), "news");
    EXPECT_EQ(taken(rib_handle, within(10000)), "news");
}

TEST_F(over_nats, one_of_a_queue_is_asked) {
    const uint32_t first = opened(server.url() + "/blue?queue=ribs");
    const uint32_t second = opened(server.url() + "/blue?queue=ribs");
    const uint32_t asking = opened(server.url() + "/blue");
    ASSERT_EQ(error_of(qip_listen(first, &rib, 100)), 0);
    ASSERT_EQ(error_of(qip_listen(second, &rib, 100)), 0);
    for (int number = 0; number < 20; ++number) {
        ASSERT_EQ(send_text(asking, std::to_string(number)), 0);
    }
    std::set<std::string> seen;
    for (int attempt = 0; seen.size() < 20 && attempt < 5000; ++attempt) {
        std::string text = taken(attempt % 2 == 0 ? first : second, within(10));
        EXPECT_TRUE(text == refused(ETIMEDOUT) || seen.insert(std::move(text)).second);
    }
    EXPECT_EQ(seen.size(), 20U);
    EXPECT_EQ(taken(first, now(QIP_RECV_INCOMING)), refused(EAGAIN));
    EXPECT_EQ(taken(second, now(QIP_RECV_INCOMING)), refused(EAGAIN));
    EXPECT_EQ(taken(rib_handle, within(1)), refused(ETIMEDOUT)); // another fabric
    for (const uint32_t handle : {first, second, asking}) {
        qip_close(handle);
    }
}

TEST_F(over_nats, groups_know_no_queue) {
    const qip_addr group{0xff000001, 0};
    const uint32_t handles[] = {opened(server.url() + "?queue=ribs"), opened(server.url() + "?queue=ribs")};
    for (const uint32_t handle : handles) {
        ASSERT_EQ(error_of(qip_listen(handle, &group, 5)), 0);
    }
    ASSERT_EQ(send_text(client, "news", nullptr, group), 0);
    for (const uint32_t handle : handles) {
        EXPECT_EQ(taken(handle, within(60000)), "news");
        qip_close(handle);
    }
}

TEST_F(over_nats, a_full_queue_holds_messages_back) {
    const qip_addr small{2, 2};
    ASSERT_EQ(error_of(qip_listen(rib_handle, &small, 1)), 0);
    for (int number = 0; number < 5; ++number) {
        ASSERT_EQ(send_text(client, std::to_string(number), nullptr, small), 0);
    }
    for (int number = 0; number < 5; ++number) {
        EXPECT_EQ(taken(rib_handle, within(10000)), std::to_string(number));
    }
    ASSERT_EQ(send_text(client, "unread", nullptr, small), 0);
    ASSERT_EQ(send_text(client, "held back when its handle is closed", nullptr, small), 0);
}

TEST_F(over_nats, too_much_for_the_server) {
    EXPECT_EQ(send_text(client, std::string(65536 - 8, 'x')), 0);
    EXPECT_EQ(send_text(client, std::string(65536 - 7, 'x')), EMSGSIZE);
    qip_ref ref{};
    EXPECT_EQ(send_text(client, std::string(65536, 'x'), &ref), EMSGSIZE);
    EXPECT_EQ(taken(rib_handle, within(10000)).size(), 65528U);
}

// Another thread may be in a call while its handle is closed.
TEST_F(over_nats, a_closed_endpoint_does_nothing_more) {
    endpoint_ptr end;
    ASSERT_EQ(open_endpoint(server.url(), std::chrono::seconds{60}, end), 0);
    message large = new_message(7, {});
    large.size = INT_MAX;
    EXPECT_EQ(end->send(rib, std::move(large), true, nullptr), EMSGSIZE) << "before a byte of it is touched";
    end->close();
    EXPECT_EQ(end->listen({2, 2}, 1, {}), ECANCELED);
    uint32_t token = 0;
    EXPECT_EQ(end->send(rib, new_message(7, {}), true, nullptr), ECANCELED);
    EXPECT_EQ(end->send(rib, new_message(7, {}), true, &token), ECANCELED);
    message letter;
    EXPECT_EQ(end->receive({}, letter), ECANCELED);
    EXPECT_EQ(taken(rib_handle, now(QIP_RECV_INCOMING)), refused(EAGAIN));
    end->close();
}

TEST_F(over_nats, an_answer_goes_no_way_once_its_handle_is_closed) {
    qip_ref sent{};
    ASSERT_EQ(send_text(client, "question", &sent), 0);
    qip_drop(client, &sent);
    qip_ref asked{};
    ASSERT_EQ(qip_recv(rib_handle, &asked, nullptr), 0);
    ASSERT_EQ(qip_close(rib_handle), 0);
    EXPECT_EQ(answer_text(client, asked, "from another handle"), ECANCELED);
    qip_drop(client, &asked);
}

// The thread of a NAME's own subscription waits for room then.
TEST_F(over_nats, closing_ends_the_wait_of_what_was_held_back) {
    const qip_addr small{2, 2};
    const char *const names[] = {"fspf"};
    const uint32_t listening = opened(server.url());
    const uint32_t fspf = opened(server.url() + "?name=fspf");
    ASSERT_EQ(error_of(qip_listen_to(listening, &small, 1, names, 1)), 0);
    for (int number = 0; number < 10; ++number) {
        ASSERT_EQ(send_text(fspf, std::to_string(number), nullptr, small), 0);
    }
    EXPECT_EQ(taken(listening, within(60000)), "0");
    EXPECT_EQ(taken(listening, within(60000)), "1");
    EXPECT_EQ(qip_close(listening), 0);
    EXPECT_EQ(qip_close(fspf), 0);
}

TEST_F(over_nats, answers_awaited_are_bounded) {
    const qip_addr other{2, 2};
    ASSERT_EQ(error_of(qip_listen(rib_handle, &other, 10000)), 0);
    qip_ref ref{};
    uint32_t token = 0;
    for (int count = 0; count < 4096; ++count) {
        ASSERT_EQ(send_text(client, "question", &ref, other), 0);
        token = qip_rr_token_get(&ref);
        qip_drop(client, &ref);
    }
    EXPECT_EQ(send_text(client, "one too many", &ref, other), ENOBUFS);
    EXPECT_EQ(taken(client, within(1, QIP_RECV_BY_TOKEN, token)), refused(ETIMEDOUT));
    EXPECT_EQ(send_text(client, "room for one", &ref, other), 0);
    qip_drop(client, &ref);
    EXPECT_EQ(send_text(client, "one too many", &ref, other), ENOBUFS);
}

TEST_F(over_nats, a_failed_send_awaits_nothing) {
    const std::string large(65536, 'x');
    qip_ref ref{};
    for (int count = 0; count < 5000; ++count) {
        ASSERT_EQ(send_text(client, large, &ref), EMSGSIZE);
    }
    EXPECT_EQ(answer_to(client, "?", {1, 1}), refused(ENOTCONN));
}

TEST_F(over_nats, closing_ends_a_receive) {
    uint32_t handle = 0;
    qip_ref ref{};
    closed_while([&] { return error_of(qip_recv(handle, &ref, nullptr)); }, [&] { handle = opened(server.url()); },
                 [&] { qip_close(handle); }, ECANCELED);
}

TEST_F(over_nats, several_threads_on_one_handle) {
    const answering serving{rib_handle};
    std::vector<std::thread> asking;
    asking.reserve(4);
    for (int number = 0; number < 4; ++number) {
        asking.emplace_back([this, number] {
            for (int count = 0; count < 50; ++count) {
                const std::string text = std::to_string(number) + "/" + std::to_string(count);
                ASSERT_EQ(answer_to(client, text), text + "!");
            }
        });
    }
    for (std::thread &one : asking) {
        one.join();
    }
}

// Faults are on our side of the server.

TEST_F(over_nats, under_a_fault_script) {
    ASSERT_EQ(load_script("drop 1\ntruncate 2 2\nfail recv 2 EIO"), "");
    ASSERT_EQ(send_text(client, "lost"), 0);
    ASSERT_EQ(send_text(client, "cut"), 0);
    EXPECT_EQ(taken(rib_handle, within(60000)), "cu");
    EXPECT_EQ(taken(rib_handle, within(60000)), refused(EIO));
    EXPECT_EQ(load_script(nullptr), "");
}

} // namespace

} // namespace ribkit::platform
