// Several threads: waits that end by an arrival, a limit or a close; bounds that hold a sender back; and a crowd.
#include "platform/service_fixture.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace ribkit::platform {

namespace {

using std::chrono::milliseconds;

class waits : public on_one_bus {};

TEST_F(waits, request_and_answer_between_two_threads) {
    std::thread serving{[this] {
        for (int count = 0; count < 1000; ++count) {
            qip_ref asked = dirty_ref();
            ASSERT_EQ(qip_recv(server, &asked, nullptr), 0);
            EXPECT_EQ(answer_text(server, asked, text_of(asked) + "!"), 0);
            EXPECT_EQ(qip_drop(server, &asked), 0);
        }
    }};
    for (int count = 0; count < 1000; ++count) {
        const std::string text = std::to_string(count);
        EXPECT_EQ(taken(client, {{QIP_RECV_BY_TOKEN, 0, 100, ask(text)}}), text + "!");
    }
    serving.join();
}

TEST_F(waits, a_limit_is_seconds_and_milliseconds) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(taken(server, within(30)), refused(ETIMEDOUT));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds{30});
    const qip_recv_opts second{{QIP_RECV_BY_TOKEN, 0, 1, ask("never answered"), 5}};
    EXPECT_EQ(taken(client, second), refused(ETIMEDOUT));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds{1035});
}

TEST_F(waits, each_waiting_thread_gets_its_own_answer) {
    std::vector<std::thread> asking;
    asking.reserve(4);
    for (int number = 0; number < 4; ++number) {
        asking.emplace_back([this, number] {
            const std::string text = std::to_string(number);
            EXPECT_EQ(taken(client, {{QIP_RECV_BY_TOKEN, 0, 100, ask(text)}}), text);
        });
    }
    std::vector<qip_ref> requests(asking.size());
    for (qip_ref &asked : requests) {
        ASSERT_EQ(qip_recv(server, &asked, nullptr), 0);
    }
    std::reverse(requests.begin(), requests.end());
    for (qip_ref &asked : requests) {
        EXPECT_EQ(answer_text(server, asked, text_of(asked)), 0);
        qip_drop(server, &asked);
    }
    for (std::thread &one : asking) {
        one.join();
    }
}

TEST_F(waits, a_send_waits_for_room) {
    for (uint32_t count = 0; count < rib_bound; ++count) {
        ASSERT_EQ(send_text(client, std::to_string(count)), 0);
    }
    std::atomic<bool> sent{false};
    std::thread sending{[&] {
        EXPECT_EQ(send_text(client, "waited"), 0);
        sent = true;
    }};
    std::this_thread::sleep_for(milliseconds{20});
    EXPECT_FALSE(sent);
    for (const char *text : {"0", "1", "2", "3"}) {
        EXPECT_EQ(taken(server, within(0)), text);
    }
    EXPECT_EQ(taken(server, within(0)), "waited");
    sending.join();
}

TEST_F(waits, closing_ends_a_receive) {
    uint32_t handle = 0;
    qip_ref ref{};
    closed_while([&] { return error_of(qip_recv(handle, &ref, nullptr)); },
                 [&] { ASSERT_EQ(qip_open(url.c_str(), &handle), 0); }, [&] { qip_close(handle); }, ECANCELED);
}

TEST_F(waits, closing_ends_waiting_for_an_answer) {
    const qip_recv_opts opts{{QIP_RECV_ANY_ANSWER, 0, 100}};
    uint32_t handle = 0;
    qip_ref ref{};
    closed_while([&] { return error_of(qip_recv(handle, &ref, &opts)); },
                 [&] { ASSERT_EQ(qip_open(url.c_str(), &handle), 0); }, [&] { qip_close(handle); }, ECANCELED);
}

TEST_F(waits, closing_ends_a_send_that_waits_for_room) {
    uint32_t handle = 0;
    closed_while([&] { return send_text(handle, "no room"); },
                 [&] {
                     ASSERT_EQ(qip_open(url.c_str(), &handle), 0);
                     while (send_at_once(handle, "fill") == 0) {
                     }
                 },
                 [&] { qip_close(handle); }, ECANCELED);
}

TEST_F(waits, a_send_that_waits_sees_the_listener_go) {
    while (send_at_once(client, "fill") == 0) {
    }
    std::thread closing{[this] {
        std::this_thread::sleep_for(milliseconds{5});
        qip_close(server);
    }};
    EXPECT_EQ(send_text(client, "no room"), ENOTCONN);
    closing.join();
}

void serve(uint32_t handle) {
    qip_ref asked{};
    while (qip_recv(handle, &asked, nullptr) == 0) {
        EXPECT_EQ(answer_text(handle, asked, text_of(asked) + " answered"), 0);
        EXPECT_EQ(qip_drop(handle, &asked), 0);
    }
    EXPECT_TRUE(errno == ECANCELED || errno == EBADF);
}

TEST_F(waits, a_crowd_on_few_handles) {
    constexpr int clients = 8;
    constexpr int requests = 250;
    std::vector<std::thread> serving;
    std::vector<std::thread> asking;
    serving.reserve(3);
    asking.reserve(clients);
    for (int number = 0; number < 3; ++number) {
        serving.emplace_back(serve, server);
    }
    for (int number = 0; number < clients; ++number) {
        asking.emplace_back([this, number] {
            uint32_t own = client; // half of them share one handle
            if (number % 2 == 0) {
                ASSERT_EQ(qip_open(url.c_str(), &own), 0);
            }
            for (int count = 0; count < requests; ++count) {
                const std::string text = std::to_string(number) + "/" + std::to_string(count);
                qip_ref sent{};
                ASSERT_EQ(send_text(own, text, &sent), 0);
                const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 100, qip_rr_token_get(&sent)}};
                qip_drop(own, &sent);
                ASSERT_EQ(taken(own, opts), text + " answered");
            }
            if (own != client) {
                EXPECT_EQ(qip_close(own), 0);
            }
        });
    }
    for (std::thread &one : asking) {
        one.join();
    }
    qip_close(server);
    for (std::thread &one : serving) {
        one.join();
    }
}

TEST_F(waits, handles_opened_and_closed_under_fire) {
    std::atomic<bool> stop{false};
    std::thread firing{[&] {
        qip_ref sent{};
        while (!stop) {
            if (send_text(client, "fire", &sent) == 0) {
                taken(client, within(1, QIP_RECV_BY_TOKEN, qip_rr_token_get(&sent)));
                qip_drop(client, &sent);
            }
        }
    }};
    for (int round = 0; round < 100; ++round) {
        qip_close(server);
        ASSERT_EQ(qip_open(url.c_str(), &server), 0);
        ASSERT_EQ(qip_listen(server, &rib, 2), 0);
        taken(server, within(1));
    }
    stop = true;
    firing.join();
}

} // namespace

} // namespace ribkit::platform
