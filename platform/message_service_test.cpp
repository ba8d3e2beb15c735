// Two parties on one bus: requests, answers, limits, bounds, and references that all come back.
#include "ribkit_platform.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

constexpr qip_addr rib{0xfe000001, 25};

class message_service : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(qip_open("local:test", &client), 0);
        ASSERT_EQ(qip_open("local:test", &server), 0);
        ASSERT_EQ(qip_listen(server, &rib, 4), 0);
    }
    void TearDown() override {
        qip_close(client);
        qip_close(server);
        EXPECT_EQ(qip_refs_held(), 0U);
    }

    uint32_t client = 0;
    uint32_t server = 0;
};

std::string text_of(const qip_ref &ref) {
    return {static_cast<const char *>(qip_payload_get(&ref)), qip_payload_size(&ref)};
}

TEST_F(message_service, request_and_answer_between_two_threads) {
    std::thread serving{[this] {
        qip_ref request{};
        ASSERT_EQ(qip_recv(server, &request, nullptr), 0);
        EXPECT_EQ(qip_opcode_get(&request), 7U);
        EXPECT_EQ(text_of(request), "question");
        EXPECT_EQ(qip_send(server, &rib, 9, "answer", 6, nullptr, &request, nullptr), 0);
        EXPECT_EQ(qip_drop(server, &request), 0);
    }};
    qip_ref sent{};
    ASSERT_EQ(qip_send(client, &rib, 7, "question", 8, &sent, nullptr, nullptr), 0);
    const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 10, qip_rr_token_get(&sent)}};
    EXPECT_EQ(qip_drop(client, &sent), 0);
    qip_ref answer{};
    ASSERT_EQ(qip_recv(client, &answer, &opts), 0);
    EXPECT_EQ(text_of(answer), "answer");
    EXPECT_EQ(qip_opcode_get(&answer), 0U);
    EXPECT_EQ(qip_rr_token_get(&answer), opts.word[3]);
    EXPECT_EQ(qip_drop(client, &answer), 0);
    serving.join();
}

} // namespace
