// Enveloped messages: the envelopes byte for byte, and every call, argument, text and allocation around them.
#include "rib_codes.h"
#include "rib_wrap.h"
#include "testing/alloc_failure.h"
#include "testing/fake_qip.h"
#include "testing/guarded.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

using ribkit::testing::failing_allocation;
using ribkit::testing::guarded;
using ribkit::testing::service;
using ribkit::testing::transcript_of;

const std::string cleared = std::string(50, '0') + "a5a5a5";
const std::string zero = std::string(56, '0');

std::string hex(const std::string &bytes) {
    std::string text;
    for (const char c : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(c));
        text += digits;
    }
    return text;
}

/// The fixed part: type, length, 0, and the name in its 100 bytes.
std::string head(const char *type, const char *length, const std::string &name) {
    return std::string(type) + length + "00000000" + hex(name) + std::string(200 - 2 * name.size(), '0');
}

std::string sent(const std::string &envelope, const std::string &ref) {
    return "> send 9 to fe000001/25 opcode 545 payload [" + envelope + "] ref " + ref + " request null opts null\n";
}

class wrap_cmi : public ::testing::Test {
  protected:
    void SetUp() override {
        service() = {};
        std::memset(&request.ref, 0xa5, sizeof request.ref);
        std::memset(&answer, 0xa5, sizeof answer);
        std::memset(&ref, 0xa5, sizeof ref);
    }

    std::string send() {
        return transcript_of([this] { code = rib_wrap_cmi_send(9, &request); });
    }
    std::string send_non_blk(qip_ref *out) {
        return transcript_of([&] { code = rib_wrap_cmi_send_non_blk(9, out, &request); });
    }
    std::string req_rsp() {
        return transcript_of([this] { code = rib_wrap_cmi_req_rsp(9, &request, &answer); });
    }
    std::string rsp() {
        return transcript_of([this] { code = rib_wrap_cmi_rsp(9, &ref, payload.data(), size); });
    }

    [[nodiscard]] bool answer_is_zero() const {
        const auto *bytes = reinterpret_cast<const uint8_t *>(&answer);
        return std::all_of(bytes, bytes + sizeof answer, [](uint8_t byte) { return byte == 0; });
    }

    uint32_t size = 3;
    std::vector<uint8_t> payload{0xde, 0xad, 0x01};
    rib_wrap_msg request{RIB_CLIENT_PORT_CHANNEL_MANAGER, 0xc0de, 0x01020304, {}, payload.data(), 3};
    rib_wrap_msg answer{};
    qip_ref ref{};
    uint32_t code = 1;

    const std::string one_way = head("00000003", "00000007", "Port Channel Manager") + "01020304dead01";
    const std::string awaited = head("00000002", "00000007", "Port Channel Manager") + "01020304dead01";
    const std::string untouched = [] {
        std::string text;
        for (int byte = 0; byte < 28; ++byte) {
            text += "a5";
        }
        return text;
    }();
};

TEST_F(wrap_cmi, send) {
    EXPECT_EQ(send(), sent(one_way, "null") + "> history 4 ref null 0 0\n");
    EXPECT_EQ(code, RIB_OK);
}

TEST_F(wrap_cmi, an_empty_payload) {
    request = {11, 0, 5, {}, nullptr, 0};
    const std::string envelope = head("00000003", "00000004", "client 11??") + "00000005";
    ASSERT_EQ(envelope.size(), 2 * 116U);
    EXPECT_EQ(send(), sent(envelope, "null") + "> history 4 ref null 0 0\n");
    size = 0;
    const std::string answered = head("00000000", "00000000", "rib");
    ASSERT_EQ(answered.size(), 2 * 112U);
    EXPECT_NE(rsp().find("payload [" + answered + "] "), std::string::npos);
}

TEST_F(wrap_cmi, send_fails_and_is_in_the_history) {
    service().fail["qip_send"] = {1, ENOTCONN};
    EXPECT_EQ(send(), sent(one_way, "null") + "HH:MM:SS rib_wrap_cmi_send() failed qip_send() 107!\n"
                                              "> history 4 ref null 0 0\n");
    EXPECT_EQ(code, 0x80520000U | ENOTCONN);
}

TEST_F(wrap_cmi, send_non_blk) {
    EXPECT_EQ(send_non_blk(&ref), sent(one_way, cleared) + "> history 4 ref #1 0 0\n");
    EXPECT_EQ(code, RIB_OK);
    EXPECT_EQ(send_non_blk(nullptr), sent(one_way, "null") + "> history 4 ref null 0 0\n");
    service().fail["qip_send"] = {3, 0x1234};
    std::memset(&ref, 0xa5, sizeof ref);
    EXPECT_EQ(send_non_blk(&ref), sent(one_way, cleared) +
                                      "HH:MM:SS rib_wrap_cmi_send_non_blk() failed qip_send() 4660!\n"
                                      "> history 4 ref " +
                                      cleared + " 0 0\n");
    EXPECT_EQ(code, 0x80520234U);
}

std::vector<uint8_t> answer_envelope(uint32_t length, size_t payload_size) {
    std::vector<uint8_t> bytes(112 + payload_size, 0x11);
    for (int byte = 0; byte < 4; ++byte) {
        bytes[4 + static_cast<size_t>(byte)] = static_cast<uint8_t>(length >> (24 - 8 * byte));
    }
    return bytes;
}

const std::string awaiting = "> history 4 ref #1 0 0\n"
                             "> token of #1\n"
                             "> drop 9 ref #1\n"
                             "> recv 9 ref " +
                             zero + " opts {0:1 2:a 3:70ce0001}\n";
const std::string taken = "> history 3 ref #2 0 0\n"
                          "> payload of #2\n"
                          "> size of #2\n";

TEST_F(wrap_cmi, req_rsp) {
    service().answer = answer_envelope(5, 5);
    EXPECT_EQ(req_rsp(), sent(awaited, cleared) + awaiting + taken);
    EXPECT_EQ(code, RIB_OK);
    EXPECT_EQ(answer.uuid, request.uuid);
    EXPECT_EQ(answer.context, 0xc0deU);
    EXPECT_EQ(answer.opcode, 0U);
    EXPECT_EQ(answer.payload, service().answer.data() + 112);
    EXPECT_EQ(answer.payload_size, 5U);
    EXPECT_EQ(answer.ref.word[0], 0xfeed0002U);
    SetUp();
    service().answer = answer_envelope(0, 0);
    EXPECT_EQ(req_rsp(), sent(awaited, cleared) + awaiting + taken);
    EXPECT_EQ(code, RIB_OK);
    EXPECT_EQ(answer.payload_size, 0U);
}

TEST_F(wrap_cmi, req_rsp_with_a_bad_answer_is_filled_all_the_same) {
    for (const uint32_t length : {4U, 6U, 0xffffffffU}) {
        SetUp();
        service().answer = answer_envelope(length, 5);
        std::string expected = sent(awaited, cleared);
        expected.append(awaiting).append(taken).append("HH:MM:SS rib_wrap_cmi_req_rsp() bad size ");
        expected.append(std::to_string(length)).append(" for opc 16909060!\n");
        EXPECT_EQ(req_rsp(), expected);
        EXPECT_EQ(code, RIB_BAD_PARAMETERS);
        EXPECT_EQ(answer.context, 0xc0deU);
        EXPECT_EQ(answer.payload, service().answer.data() + 112);
        EXPECT_EQ(answer.payload_size, length);
    }
}

TEST_F(wrap_cmi, req_rsp_refuses_an_answer_without_its_fixed_part) {
    for (const size_t received : {0U, 7U, 8U, 111U}) {
        SetUp();
        const auto wrapping = static_cast<uint32_t>(received - 112); // what the received size wraps to
        service().answer = answer_envelope(wrapping, 0);
        service().answer.resize(received);
        service().answer.shrink_to_fit();
        req_rsp();
        EXPECT_EQ(code, RIB_BAD_PARAMETERS);
        EXPECT_EQ(answer.payload_size, received < 8 ? 0 : wrapping);
    }
}

TEST_F(wrap_cmi, req_rsp_fails) {
    service().fail["qip_send"] = {1, EIO};
    EXPECT_EQ(req_rsp(), sent(awaited, cleared) + "HH:MM:SS rib_wrap_cmi_req_rsp() failed qip_send() 5!\n");
    EXPECT_EQ(code, 0x80520005U);
    EXPECT_TRUE(answer_is_zero());
    SetUp();
    service().fail["qip_recv"] = {1, ETIMEDOUT};
    EXPECT_EQ(req_rsp(),
              sent(awaited, cleared) + awaiting + "HH:MM:SS rib_wrap_qip_req_rsp() failed qip_recv() 110!\n");
    EXPECT_EQ(code, 0x80520000U | ETIMEDOUT);
}

TEST_F(wrap_cmi, rsp) {
    const std::string answering = "> send 9 to fe000000/0 opcode 0 payload [" + head("00000000", "00000003", "rib") +
                                  "dead01] ref null request " + untouched + " opts null\n";
    const std::string told = "> history 4 ref " + untouched + " 0 0\n";
    EXPECT_EQ(rsp(), answering + told);
    EXPECT_EQ(code, RIB_OK);
    service().fail["qip_send"] = {2, EINVAL};
    EXPECT_EQ(rsp(), answering + "HH:MM:SS rib_wrap_cmi_rsp() failed qip_send_response() 22!\n" + told);
    EXPECT_EQ(code, 0x80520000U | EINVAL);
}

TEST_F(wrap_cmi, no_memory) {
    const failing_allocation failing{1};
    EXPECT_EQ(rib_wrap_cmi_send(9, &request), RIB_OUT_OF_MEMORY);
    EXPECT_TRUE(failing.happened());
    EXPECT_TRUE(service().calls.empty());
}

TEST_F(wrap_cmi, sizes_that_cannot_be_said_are_no_memory) {
    for (const uint32_t huge : {0xffffff8cU, 0xfffffff0U, 0xffffffffU}) {
        SetUp();
        request.payload_size = huge;
        EXPECT_EQ(send(), "HH:MM:SS rib_wrap_cmi_send() no mem for cmi_msg!\n");
        EXPECT_EQ(code, RIB_OUT_OF_MEMORY);
        EXPECT_EQ(send_non_blk(&ref), "HH:MM:SS rib_wrap_cmi_send() no mem for cmi_msg!\n");
        EXPECT_EQ(code, RIB_OUT_OF_MEMORY);
        EXPECT_EQ(ref.word[0], 0U);
        EXPECT_EQ(req_rsp(), "HH:MM:SS rib_wrap_cmi_req_rsp() no mem for cmi_msg!\n");
        EXPECT_EQ(code, RIB_OUT_OF_MEMORY);
        EXPECT_EQ(request.ref.word[0], 0U);
        EXPECT_TRUE(answer_is_zero());
    }
    for (const uint32_t huge : {0xffffff90U, 0xffffffffU}) {
        size = huge;
        EXPECT_EQ(rsp(), "HH:MM:SS rib_wrap_cmi_rsp() no mem for cmi_msg!\n");
        EXPECT_EQ(code, RIB_OUT_OF_MEMORY);
    }
    request.uuid = RIB_CLIENT_CONFIG;
    EXPECT_EQ(send(), "Out of memory!\n");
}

// The fake allocates too, so the one allocation is made to fail outside of a transcript.
TEST_F(wrap_cmi, each_wrapper_allocates_once_and_frees) {
    {
        const failing_allocation failing{1};
        EXPECT_EQ(rib_wrap_cmi_send_non_blk(9, nullptr, &request), RIB_OUT_OF_MEMORY);
    }
    {
        const failing_allocation failing{1};
        EXPECT_EQ(rib_wrap_cmi_req_rsp(9, &request, &answer), RIB_OUT_OF_MEMORY);
    }
    {
        const failing_allocation failing{1};
        EXPECT_EQ(rib_wrap_cmi_rsp(9, &ref, payload.data(), 3), RIB_OUT_OF_MEMORY);
    }
    EXPECT_TRUE(service().calls.empty());
    const failing_allocation watching{1000};
    transcript_of([this] {
        service().answer = answer_envelope(0, 0);
        service().fail["qip_send"] = {2, EIO};
        rib_wrap_cmi_send(9, &request);
        rib_wrap_cmi_send(9, &request);
        rib_wrap_cmi_req_rsp(9, &request, &answer);
        rib_wrap_cmi_rsp(9, &ref, payload.data(), 3);
    });
    EXPECT_EQ(ribkit::testing::blocks_kept(), 0U);
}

class wrap_cmi_recv : public ::testing::Test {
  protected:
    std::string open(uint32_t length, uint32_t size, size_t bytes = 116) {
        std::vector<uint8_t> envelope = answer_envelope(length, bytes - 112);
        const uint8_t inner[] = {0x00, 0x00, 0x30, 0x39};
        std::copy(std::begin(inner), std::end(inner), envelope.begin() + 112);
        const guarded received{envelope};
        const uint8_t *payload = nullptr;
        std::string text =
            transcript_of([&] { code = rib_wrap_cmi_recv(received.data(), size, &opcode, &payload, &payload_length); });
        EXPECT_EQ(opcode, 12345U);
        EXPECT_EQ(payload, received.data() + 116);
        return text;
    }

    uint32_t code = 1;
    uint32_t opcode = 0;
    uint32_t payload_length = 0;
};

TEST_F(wrap_cmi_recv, opens) {
    EXPECT_EQ(open(4, 116), "");
    EXPECT_EQ(code, RIB_OK);
    EXPECT_EQ(payload_length, 0U);
    EXPECT_EQ(open(9, 121, 121), "");
    EXPECT_EQ(code, RIB_OK);
    EXPECT_EQ(payload_length, 5U);
}

TEST_F(wrap_cmi_recv, refuses_another_size) {
    EXPECT_EQ(open(8, 116), "HH:MM:SS rib_wrap_cmi_recv() bad size 4 for opc 12345!\n");
    EXPECT_EQ(code, RIB_BAD_PARAMETERS);
    EXPECT_EQ(open(0, 116), "HH:MM:SS rib_wrap_cmi_recv() bad size 4294967292 for opc 12345!\n");
    EXPECT_EQ(code, RIB_BAD_PARAMETERS);
    EXPECT_EQ(payload_length, 0xfffffffcU);
    open(4, 121, 121);
    EXPECT_EQ(code, RIB_BAD_PARAMETERS);
}

TEST_F(wrap_cmi_recv, refuses_less_than_the_fixed_part_whatever_the_length_wraps_to) {
    for (const uint32_t size : {0U, 111U, 112U, 113U, 115U}) {
        EXPECT_NE(open(size - 112, size), "");
        EXPECT_EQ(code, RIB_BAD_PARAMETERS);
        EXPECT_EQ(payload_length, size - 116);
    }
}

} // namespace
