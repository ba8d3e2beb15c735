// Every wrapper's calls of the service, their arguments, what is cleared and what is printed, in order.
#include "rib_codes.h"
#include "rib_wrap.h"
#include "testing/fake_qip.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

using ribkit::testing::service;
using ribkit::testing::transcript_of;

// A reference of 0xa5 bytes as the service meets it: 25 bytes cleared, the last three as they were.
const std::string cleared = std::string(50, '0') + "a5a5a5";
const std::string untouched = [] {
    std::string text;
    for (int byte = 0; byte < 28; ++byte) {
        text += "a5";
    }
    return text;
}();
const std::string zero = std::string(56, '0');

class wrap_qip : public ::testing::Test {
  protected:
    void SetUp() override {
        service() = {};
        std::memset(&request.ref, 0xa5, sizeof request.ref);
        std::memset(&answer, 0xa5, sizeof answer);
        std::memset(&ref, 0xa5, sizeof ref);
    }

    std::vector<uint8_t> payload{0xde, 0xad, 0x01};
    rib_wrap_msg request{RIB_CLIENT_FSPF, 0xc0de, 77, {}, payload.data(), 3};
    rib_wrap_msg answer{};
    qip_ref ref{};
    uint32_t code = 1;
};

TEST_F(wrap_qip, send) {
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_send(9, &request); }),
              "> send 9 to fe000001/25 opcode 77 payload [dead01] ref null request null opts null\n"
              "> history 4 ref null 0 0\n");
    EXPECT_EQ(code, RIB_OK);
}

TEST_F(wrap_qip, send_fails) {
    service().fail["qip_send"] = {1, EAGAIN};
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_send(9, &request); }),
              "> send 9 to fe000001/25 opcode 77 payload [dead01] ref null request null opts null\n"
              "HH:MM:SS rib_wrap_qip_send() failed qip_send() 11!\n");
    EXPECT_EQ(code, 0x80520000U | EAGAIN);
}

TEST_F(wrap_qip, failures_for_an_operator_are_sentences) {
    service().fail["qip_send"] = {1, EIO};
    request.uuid = RIB_CLIENT_CONFIG;
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_send(9, &request); }),
              "> send 9 to fe000001/25 opcode 77 payload [dead01] ref null request null opts null\n"
              "Cannot communicate with RIB!\n");
    service() = {};
    service().fail["qip_recv"] = {1, ETIMEDOUT};
    request.uuid = RIB_CLIENT_OPERATOR;
    const std::string text = transcript_of([&] { code = rib_wrap_qip_req_rsp(9, &request, &answer); });
    EXPECT_EQ(text.substr(text.rfind('\n', text.size() - 2)), "\nNo response from RIB!\n");
}

TEST_F(wrap_qip, errno_is_cut_to_twelve_bits) {
    service().fail["qip_send"] = {1, 0x1234};
    transcript_of([&] { code = rib_wrap_qip_send(9, &request); });
    EXPECT_EQ(code, 0x80520234U);
}

TEST_F(wrap_qip, send_non_blk) {
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_send_non_blk(9, &ref, &request); }),
              "> send 9 to fe000001/25 opcode 77 payload [dead01] ref " + cleared +
                  " request null opts {0:1 1:1}\n"
                  "> history 4 ref #1 0 0\n");
    EXPECT_EQ(code, RIB_OK);
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_send_non_blk(9, nullptr, &request); }),
              "> send 9 to fe000001/25 opcode 77 payload [dead01] ref null request null opts {0:1 1:1}\n"
              "> history 4 ref null 0 0\n");
    EXPECT_EQ(code, RIB_OK);
}

TEST_F(wrap_qip, send_non_blk_fails) {
    service().fail["qip_send"] = {1, EAGAIN};
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_send_non_blk(9, nullptr, &request); }),
              "> send 9 to fe000001/25 opcode 77 payload [dead01] ref null request null opts {0:1 1:1}\n"
              "HH:MM:SS rib_wrap_qip_send_non_blk() failed qip_send() 11!\n");
    EXPECT_EQ(code, 0x80520000U | EAGAIN);
}

std::string request_and_await(const std::string &node) {
    return "> send 9 to " + node + "/25 opcode 77 payload [dead01] ref " + cleared +
           " request null opts null\n"
           "> history 4 ref #1 0 0\n"
           "> token of #1\n"
           "> drop 9 ref #1\n"
           "> recv 9 ref " +
           zero + " opts {0:1 2:14 3:70ce0001}\n";
}

const std::string taken = "> history 3 ref #2 0 0\n"
                          "> payload of #2\n"
                          "> size of #2\n";

TEST_F(wrap_qip, req_rsp) {
    service().answer = {1, 2, 3, 4};
    service().fail["qip_drop"] = {1, EBADF}; // not looked at
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_req_rsp(9, &request, &answer); }),
              request_and_await("fe000001") + taken);
    EXPECT_EQ(code, RIB_OK);
    EXPECT_EQ(answer.uuid, RIB_CLIENT_FSPF);
    EXPECT_EQ(answer.context, 0xc0deU);
    EXPECT_EQ(answer.opcode, 0U);
    EXPECT_EQ(answer.ref.word[6], 0xfeed0002U);
    EXPECT_EQ(answer.payload, service().answer.data());
    EXPECT_EQ(answer.payload_size, 4U);
    EXPECT_EQ(request.payload, payload.data());
}

TEST_F(wrap_qip, req_rsp_fails_to_send) {
    service().fail["qip_send"] = {1, ENOTCONN};
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_req_rsp(9, &request, &answer); }),
              "> send 9 to fe000001/25 opcode 77 payload [dead01] ref " + cleared +
                  " request null opts null\n"
                  "HH:MM:SS rib_wrap_qip_req_rsp() failed qip_send() 107!\n");
    EXPECT_EQ(code, 0x80520000U | ENOTCONN);
    const auto *bytes = reinterpret_cast<const uint8_t *>(&answer);
    EXPECT_TRUE(std::all_of(bytes, bytes + sizeof answer, [](uint8_t byte) { return byte == 0; }));
}

TEST_F(wrap_qip, req_rsp_fails_to_receive) {
    service().fail["qip_recv"] = {1, ETIMEDOUT};
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_req_rsp(9, &request, &answer); }),
              request_and_await("fe000001") + "HH:MM:SS rib_wrap_qip_req_rsp() failed qip_recv() 110!\n");
    EXPECT_EQ(code, 0x80520000U | ETIMEDOUT);
}

TEST_F(wrap_qip, req_rsp_on_cub) {
    const struct {
        uint32_t cub;
        const char *told, *node;
    } rows[] = {{1, "1", "fe000001"}, {2, "2", "fe010001"},     {0, "0", "feff0001"},
                {3, "3", "fe020001"}, {256, "256", "feff0001"}, {258, "258", "fe010001"}};
    for (const auto &row : rows) {
        SetUp();
        EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_req_rsp_on_cub(9, &request, &answer, row.cub); }),
                  std::string{"HH:MM:SS sending query request of cub "} + row.told + " \n" +
                      request_and_await(row.node) + taken);
        EXPECT_EQ(code, RIB_OK);
    }
}

TEST_F(wrap_qip, req_rsp_on_cub_fails_with_the_texts_of_req_rsp) {
    service().fail["qip_send"] = {1, EIO};
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_req_rsp_on_cub(9, &request, &answer, 2); }),
              "HH:MM:SS sending query request of cub 2 \n"
              "> send 9 to fe010001/25 opcode 77 payload [dead01] ref " +
                  cleared +
                  " request null opts null\n"
                  "HH:MM:SS rib_wrap_qip_req_rsp() failed qip_send() 5!\n");
    EXPECT_EQ(code, 0x80520005U);
    SetUp();
    service().fail["qip_recv"] = {1, EIO};
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_req_rsp_on_cub(9, &request, &answer, 2); }),
              "HH:MM:SS sending query request of cub 2 \n" + request_and_await("fe010001") +
                  "HH:MM:SS rib_wrap_qip_req_rsp() failed qip_recv() 5!\n");
    EXPECT_EQ(code, 0x80520005U);
}

const std::string answering =
    "> send 9 to fe000000/0 opcode 0 payload [dead01] ref " + zero + " request " + untouched + " opts null\n";

TEST_F(wrap_qip, rsp) {
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_rsp(9, &ref, payload.data(), 3); }),
              answering + "> history 4 ref #1 0 0\n"
                          "> drop 9 ref #1\n");
    EXPECT_EQ(code, RIB_OK);
}

TEST_F(wrap_qip, rsp_fails) {
    service().fail["qip_send"] = {1, EINVAL};
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_rsp(9, &ref, payload.data(), 3); }),
              answering + "HH:MM:SS rib_wrap_qip_rsp() failed qip_send_response() 22!\n");
    EXPECT_EQ(code, 0x80520000U | EINVAL);
    service() = {};
    service().fail["qip_drop"] = {1, EBADF};
    EXPECT_EQ(transcript_of([&] { code = rib_wrap_qip_rsp(9, &ref, payload.data(), 3); }),
              answering + "> history 4 ref #1 0 0\n"
                          "> drop 9 ref #1\n"
                          "HH:MM:SS rib_wrap_qip_rsp() failed qip_drop() of resp_ref 9!\n");
    EXPECT_EQ(code, 0x80520000U | EBADF);
}

TEST_F(wrap_qip, drop) {
    int32_t result = 1;
    EXPECT_EQ(transcript_of([&] { result = rib_wrap_qip_drop(RIB_CLIENT_FSPF, 9, &ref); }),
              "> drop 9 ref " + untouched + "\n");
    EXPECT_EQ(result, 0);
    service().fail["qip_drop"] = {2, EBADF};
    EXPECT_EQ(transcript_of([&] { result = rib_wrap_qip_drop(RIB_CLIENT_FSPF, 9, &ref); }),
              "> drop 9 ref " + untouched + "\nHH:MM:SS rib_wrap_qip_drop() failed qip_drop() 9!\n");
    EXPECT_EQ(result, static_cast<int32_t>(0x80520009U));
    service().fail["qip_drop"] = {3, EBADF};
    EXPECT_EQ(transcript_of([&] { result = rib_wrap_qip_drop(RIB_CLIENT_CONFIG, 9, &ref); }),
              "> drop 9 ref " + untouched + "\nFailed IPC drop reference!\n");
}

class wrap_note : public ::testing::Test {
  protected:
    void SetUp() override { service() = {}; }

    std::string note() {
        return transcript_of([this] { result = rib_wrap_qip_note(9, 78, "\x01\x02", 2); });
    }

    const std::string first = "> send 9 to fe000000/0 opcode 78 payload [0102] ref null request null opts null\n";
    const std::string second = "> send 9 to ff000001/0 opcode 78 payload [0102] ref null request null opts {0:2 8:1}\n";
    const std::string asked = "> check 730000 100\n";
    const std::string level = "> level 100 0 0 1\n";
    int32_t result = 1;
};

TEST_F(wrap_note, to_both) {
    EXPECT_EQ(note(), first + second + "> history 4 ref null 0 0\n");
    EXPECT_EQ(result, 0);
}

TEST_F(wrap_note, first_fails) {
    service().fail["qip_send"] = {1, EAGAIN};
    EXPECT_EQ(note(), first + asked + level);
    EXPECT_EQ(result, static_cast<int32_t>(0x8052000bU));
}

TEST_F(wrap_note, first_fails_and_is_reported) {
    service().fail["qip_send"] = {1, EAGAIN};
    service().subtype_check = 0;
    service().debug_enabled = 1;
    const std::string text = "rib_wrap_qip_note() failed qip_send_notify() 0x8052000b\n";
    EXPECT_EQ(note(), first + asked + "> event 730000 length " + std::to_string(text.size() + 5) +
                          " subtype 100 text " + text + level + "> yapout 1 module 0 " + text);
}

TEST_F(wrap_note, second_fails_and_is_reported) {
    const std::string text = "rib_wrap_qip_note() failed qip_send_notify() to LCs 0x80520234\n";
    service().fail["qip_send"] = {2, 0x1234};
    service().subtype_check = 0;
    EXPECT_EQ(note(), first + second + asked + "> event 730000 length " + std::to_string(text.size() + 5) +
                          " subtype 100 text " + text + level);
    EXPECT_EQ(result, static_cast<int32_t>(0x80520234U));
    service() = {};
    service().fail["qip_send"] = {2, 0x1234};
    service().debug_enabled = -1;
    EXPECT_EQ(note(), first + second + asked + level + "> yapout 1 module 0 " + text);
}

} // namespace
