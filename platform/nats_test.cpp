// The bus over a server that the tests start themselves.
#include "platform/fault_fixture.h"
#include "platform/nats_fixture.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "testing/capture.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstdlib>
#include <netinet/in.h>
#include <set>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace ribkit::platform {

namespace {

class over_nats : public ::testing::Test {
  protected:
    void SetUp() override {
        client = opened(server.url());
        rib_handle = opened(server.url());
        ASSERT_EQ(error_of(qip_listen(rib_handle, &rib, 100)), 0);
    }

    void TearDown() override {
        qip_close(client);
        qip_close(rib_handle);
        EXPECT_EQ(qip_refs_held(), 0U);
    }

    nats_server server{"max_payload: 65536"};
    uint32_t client = 0;
    uint32_t rib_handle = 0;
};

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

TEST_F(over_nats, what_is_held_back_too_long_is_lost_and_told) {
    constexpr uint32_t kept = 65536;
    const qip_addr small{2, 2};
    ASSERT_EQ(error_of(qip_listen(rib_handle, &small, 1)), 0);
    yelk_hist_clear();
    for (uint32_t number = 0; number < kept + 1000; ++number) {
        ASSERT_EQ(send_text(client, std::to_string(number), nullptr, small), 0);
    }
    const auto told = [] {
        return testing::printed_by(yelk_hist_print).find("nats: Slow Consumer") != std::string::npos;
    };
    for (int attempt = 0; !told() && attempt < 6000; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
    }
    EXPECT_TRUE(told());
    for (uint32_t number = 0; number < kept; ++number) {
        ASSERT_EQ(taken(rib_handle, within(60000)), std::to_string(number));
    }
    ASSERT_EQ(send_text(client, "end", nullptr, small), 0);
    uint32_t more = 0;
    while (taken(rib_handle, within(60000)) != "end") {
        ++more;
    }
    EXPECT_LT(more, 1000U);
}

TEST_F(over_nats, too_much_for_the_server) {
    EXPECT_EQ(send_text(client, std::string(65536 - 8, 'x')), 0);
    EXPECT_EQ(send_text(client, std::string(65536 - 7, 'x')), EMSGSIZE);
    qip_ref ref{};
    EXPECT_EQ(send_text(client, std::string(65536, 'x'), &ref), EMSGSIZE);
    EXPECT_EQ(taken(rib_handle, within(10000)).size(), 65528U);
}

TEST_F(over_nats, a_lost_server_ends_waits_and_comes_back) {
    std::thread stopping{[this] {
        taken(rib_handle, within(0));
        server.stop();
    }};
    EXPECT_EQ(answer_to(client, "never answered"), refused(ECONNRESET));
    stopping.join();
    EXPECT_EQ(send_text(client, "?"), ENOTCONN);
    server.start();
    const answering serving{rib_handle};
    std::string text;
    for (int attempt = 0; text != "again!" && attempt < 3000; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds{20});
        text = answer_to(client, "again");
    }
    EXPECT_EQ(text, "again!");
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

// A server keeps real time.
TEST_F(over_nats, no_virtual_clock_while_a_handle_is_open) {
    ASSERT_EQ(load_script("fail send 1 EIO"), "");
    EXPECT_EQ(load_script("seed 1\nclock virtual\n"), ":2: no virtual clock while a handle on a server is open");
    EXPECT_EQ(send_text(client, "?"), EIO); // the script before stays in force
    qip_close(client);
    EXPECT_EQ(load_script("clock virtual"), ":1: no virtual clock while a handle on a server is open");
    qip_close(rib_handle);
    EXPECT_EQ(load_script("clock virtual"), "");
    EXPECT_EQ(error_of_opening(server.url()), ENOTSUP);
    EXPECT_EQ(error_of_opening("local:"), 0);
    EXPECT_EQ(load_script(nullptr), "");
    EXPECT_EQ(error_of_opening(server.url()), 0);
}

// A handle that could not be opened claims nothing.
TEST(nats_servers, that_are_not_there_keep_no_time) {
    EXPECT_EQ(error_of_opening("nats://127.0.0.1:1"), ECONNREFUSED);
    EXPECT_EQ(load_script("clock virtual"), "");
    EXPECT_EQ(load_script(nullptr), "");
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

/// Says something to whoever connects first, and hangs up.
class something_else {
  public:
    explicit something_else(std::string text) : text_(std::move(text)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr *>(&address), size), 0);
        EXPECT_EQ(listen(socket_, 1), 0);
        EXPECT_EQ(getsockname(socket_, reinterpret_cast<sockaddr *>(&address), &size), 0);
        port_ = ntohs(address.sin_port);
        thread_ = std::thread{[this] {
            const int peer = accept(socket_, nullptr, nullptr);
            EXPECT_EQ(send(peer, text_.data(), text_.size(), 0), static_cast<ssize_t>(text_.size()));
            close(peer);
        }};
    }
    something_else(const something_else &) = delete;
    something_else &operator=(const something_else &) = delete;
    ~something_else() {
        thread_.join();
        close(socket_);
    }

    [[nodiscard]] std::string url() const { return "nats://127.0.0.1:" + std::to_string(port_); }

  private:
    std::string text_;
    int socket_ = socket(AF_INET, SOCK_STREAM, 0);
    uint16_t port_ = 0;
    std::thread thread_;
};

TEST(nats_servers, that_are_something_else) {
    EXPECT_EQ(error_of_opening(something_else{"220 mail\r\n"}.url()), EPROTO);
    EXPECT_EQ(error_of_opening(something_else{""}.url()), ECONNREFUSED);
}

TEST(nats_servers, that_are_not_there) {
    nats_server server;
    server.stop();
    EXPECT_EQ(error_of_opening(server.url()), ECONNREFUSED);
}

} // namespace

} // namespace ribkit::platform
