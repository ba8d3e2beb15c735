// The wrappers on top of the real service, end to end.
#include "platform/service_fixture.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "testing/capture.h"

#include <thread>

namespace ribkit::platform {

namespace {

using ribkit::testing::printed_by;

class wrappers : public on_one_bus {
  protected:
    void TearDown() override {
        on_one_bus::TearDown();
        yelk_hist_clear();
    }

    std::string text = "update";
    rib_wrap_msg message{RIB_CLIENT_FSPF, 5, 77, dirty_ref(), reinterpret_cast<uint8_t *>(text.data()), 6};
    rib_wrap_msg answer{};
};

void answer_one(uint32_t server) {
    qip_ref asked = dirty_ref();
    ASSERT_EQ(qip_recv(server, &asked, nullptr), 0);
    EXPECT_EQ(qip_opcode_get(&asked), 77U);
    const std::string said = text_of(asked) + " done";
    EXPECT_EQ(rib_wrap_qip_rsp(server, &asked, said.data(), static_cast<uint32_t>(said.size())), RIB_OK);
    EXPECT_EQ(rib_wrap_qip_drop(RIB_CLIENT_RIB, server, &asked), 0);
}

TEST_F(wrappers, request_and_answer) {
    std::thread serving{answer_one, server};
    ASSERT_EQ(rib_wrap_qip_req_rsp(client, &message, &answer), RIB_OK);
    serving.join();
    EXPECT_EQ(answer.context, 5U);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(answer.payload), answer.payload_size), "update done");
    EXPECT_EQ(rib_wrap_qip_drop(RIB_CLIENT_FSPF, client, &answer.ref), 0);
}

TEST_F(wrappers, request_to_a_partition) {
    const qip_addr second{0xfe010001, 25};
    ASSERT_EQ(qip_listen(server, &second, 1), 0);
    std::thread serving{answer_one, server};
    printed_by([this] { ASSERT_EQ(rib_wrap_qip_req_rsp_on_cub(client, &message, &answer, 2), RIB_OK); });
    serving.join();
    EXPECT_EQ(rib_wrap_qip_drop(RIB_CLIENT_FSPF, client, &answer.ref), 0);
}

TEST_F(wrappers, sends) {
    EXPECT_EQ(rib_wrap_qip_send(client, &message), RIB_OK);
    qip_ref sent = dirty_ref();
    EXPECT_EQ(rib_wrap_qip_send_non_blk(client, &sent, &message), RIB_OK);
    EXPECT_EQ(rib_wrap_qip_drop(RIB_CLIENT_FSPF, client, &sent), 0);
    EXPECT_EQ(rib_wrap_qip_send_non_blk(client, nullptr, &message), RIB_OK);
    EXPECT_EQ(rib_wrap_qip_send(client, &message), RIB_OK);
    uint32_t code = 0;
    const std::string trace = printed_by([&] { code = rib_wrap_qip_send_non_blk(client, nullptr, &message); });
    EXPECT_EQ(code, RIB_PLATFORM_FAILURE | EAGAIN);
    EXPECT_NE(trace.find("rib_wrap_qip_send_non_blk() failed qip_send() 11!\n"), std::string::npos);
}

TEST_F(wrappers, notifications_go_to_local_listeners_and_modules) {
    const qip_addr local{0xfe000000, 0};
    const qip_addr modules{0xff000001, 0};
    EXPECT_EQ(rib_wrap_qip_note(client, 78, "x", 1), 0);
    ASSERT_EQ(qip_listen(server, &local, 1), 0);
    ASSERT_EQ(qip_listen(server, &modules, 1), 0);
    EXPECT_EQ(rib_wrap_qip_note(client, 78, "news", 4), 0);
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), "news");
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), "news");
}

TEST_F(wrappers, failures) {
    qip_close(server);
    uint32_t code = 0;
    EXPECT_NE(printed_by([&] { code = rib_wrap_qip_req_rsp(client, &message, &answer); }).find("qip_send() 107!"),
              std::string::npos);
    EXPECT_EQ(code, RIB_PLATFORM_FAILURE | ENOTCONN);
    int32_t result = 0;
    EXPECT_NE(printed_by([&] { result = rib_wrap_qip_drop(RIB_CLIENT_FSPF, client, &message.ref); }).find("drop() 9!"),
              std::string::npos);
    EXPECT_EQ(result, static_cast<int32_t>(RIB_PLATFORM_FAILURE | EBADF));
}

TEST_F(wrappers, a_failed_notification_is_in_the_history) {
    yelk_hist_clear();
    yelk_dbg_level_set(100);
    int32_t result = 0;
    qip_close(client);
    EXPECT_EQ(printed_by([&] { result = rib_wrap_qip_note(client, 78, "x", 1); }),
              "ribkit: rib_wrap_qip_note() failed qip_send_notify() 0x80520009\n");
    yelk_dbg_level_set(0);
    const std::string history = printed_by(yelk_hist_print);
    EXPECT_NE(history.find("event 0x730000 subtype 100: rib_wrap_qip_note() failed qip_send_notify() 0x80520009\n"),
              std::string::npos)
        << history;
}

} // namespace

} // namespace ribkit::platform
