// Every failure text and result code of the wrappers that the service can cause, each by a fault script.
#include "platform/faults/fault_fixture.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "testing/capture.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <sstream>

namespace ribkit::platform {

namespace {

using ribkit::testing::printed_by;

void serve_envelopes(uint32_t server) {
    qip_ref asked{};
    while (qip_recv(server, &asked, nullptr) == 0) {
        qip_opcode_get(&asked) == 545 ? rib_wrap_cmi_rsp(server, &asked, "answer", 6)
                                      : rib_wrap_qip_rsp(server, &asked, "answer", 6);
        rib_wrap_qip_drop(RIB_CLIENT_RIB, server, &asked);
    }
}

/// What a client's wrapper returns and prints while a server runs.
class faulty_wrappers : public faulty {
  protected:
    using wrapper = std::function<uint32_t(uint32_t handle, rib_wrap_msg &request, rib_wrap_msg &answer)>;

    std::string run(const std::string &script, const wrapper &call) {
        load("clock virtual\n" + script);
        uint32_t code = 0;
        const std::string text = printed_by([&] {
            uint8_t payload = 1;
            rib_wrap_msg message{RIB_CLIENT_FSPF, 0, 77, {}, &payload, 1};
            rib_wrap_msg answer{};
            code = call(client, message, answer);
            if (answer.payload != nullptr) {
                qip_drop(client, &answer.ref);
            }
        });
        return code_text(code) + without_times(text);
    }

    std::string run_with_server(const std::string &script, const wrapper &call) {
        load("clock virtual\n"); // so that the server's thread takes its turns from the start
        server_thread serving{server, serve_envelopes};
        EXPECT_EQ(taken(client, within(1)), refused(ETIMEDOUT)); // once the server waits, with nothing left to answer
        std::string text = run(script, call);
        qip_faults_load(nullptr, nullptr, 0);
        qip_close(server);
        return text;
    }

    static std::string without_times(const std::string &text) {
        std::istringstream lines{text};
        std::string rest;
        for (std::string line; std::getline(lines, line);) {
            rest += line.substr(std::min(line.size(), std::strlen("HH:MM:SS "))) + "\n";
        }
        return rest;
    }

    static std::string code_text(uint32_t code) {
        char text[16];
        std::snprintf(text, sizeof text, "%08x ", code);
        return text;
    }
};

uint32_t qip_request(uint32_t handle, rib_wrap_msg &request, rib_wrap_msg &answer) {
    return rib_wrap_qip_req_rsp(handle, &request, &answer);
}
uint32_t cmi_request(uint32_t handle, rib_wrap_msg &request, rib_wrap_msg &answer) {
    return rib_wrap_cmi_req_rsp(handle, &request, &answer);
}

TEST_F(faulty_wrappers, sends_fail) {
    const std::pair<wrapper, const char *> rows[] = {
        {[](auto handle, auto &message, auto &) { return rib_wrap_qip_send(handle, &message); },
         "80520005 rib_wrap_qip_send() failed qip_send() 5!\n"},
        {[](auto handle, auto &message, auto &) { return rib_wrap_qip_send_non_blk(handle, nullptr, &message); },
         "80520005 rib_wrap_qip_send_non_blk() failed qip_send() 5!\n"},
        {qip_request, "80520005 rib_wrap_qip_req_rsp() failed qip_send() 5!\n"},
        {[](auto handle, auto &message, auto &answer) {
             return rib_wrap_qip_req_rsp_on_cub(handle, &message, &answer, 2);
         },
         "80520005 sending query request of cub 2 \nrib_wrap_qip_req_rsp() failed qip_send() 5!\n"},
        {[](auto handle, auto &message, auto &) { return rib_wrap_cmi_send(handle, &message); },
         "80520005 rib_wrap_cmi_send() failed qip_send() 5!\n"},
        {[](auto handle, auto &message, auto &) { return rib_wrap_cmi_send_non_blk(handle, nullptr, &message); },
         "80520005 rib_wrap_cmi_send_non_blk() failed qip_send() 5!\n"},
        {cmi_request, "80520005 rib_wrap_cmi_req_rsp() failed qip_send() 5!\n"},
    };
    for (const auto &[call, expected] : rows) {
        EXPECT_EQ(run("fail send 1 EIO", call), expected);
    }
}

TEST_F(faulty_wrappers, answers_do_not_come) {
    const std::string plain = "8052006e rib_wrap_qip_req_rsp() failed qip_recv() 110!\n";
    EXPECT_EQ(run("drop 1", qip_request), plain);
    EXPECT_EQ(run("drop 1", cmi_request), plain);
    EXPECT_EQ(run("delay every 1 20001", qip_request), plain);
    EXPECT_EQ(run("fail recv 1 EIO", qip_request), "80520005 rib_wrap_qip_req_rsp() failed qip_recv() 5!\n");
    EXPECT_EQ(run("fail recv 1 EIO", cmi_request), "80520005 rib_wrap_qip_req_rsp() failed qip_recv() 5!\n");
    EXPECT_EQ(run_with_server("drop 2", qip_request), plain);
}

TEST_F(faulty_wrappers, drops_and_answers_fail) {
    EXPECT_EQ(run("fail drop 1 EIO",
                  [](auto handle, auto &message, auto &) {
                      qip_ref sent{};
                      rib_wrap_qip_send_non_blk(handle, &sent, &message);
                      return static_cast<uint32_t>(rib_wrap_qip_drop(RIB_CLIENT_FSPF, handle, &sent));
                  }),
              "80520005 rib_wrap_qip_drop() failed qip_drop() 5!\n");
    const auto answering = [this](auto answer) {
        return [this, answer](auto /*handle*/, auto & /*message*/, auto & /*answer*/) {
            ask("question");
            qip_ref asked = request();
            const uint32_t code = answer(asked);
            qip_drop(server, &asked);
            return code;
        };
    };
    taken(server, now(QIP_RECV_INCOMING));
    const auto plain = answering([this](const qip_ref &asked) { return rib_wrap_qip_rsp(server, &asked, "x", 1); });
    const auto enveloped = answering([this](const qip_ref &asked) { return rib_wrap_cmi_rsp(server, &asked, "x", 1); });
    EXPECT_EQ(run("fail send 2 EIO", plain), "80520005 rib_wrap_qip_rsp() failed qip_send_response() 5!\n");
    EXPECT_EQ(run("fail drop 2 EIO", plain), "80520005 rib_wrap_qip_rsp() failed qip_drop() of resp_ref 5!\n");
    EXPECT_EQ(run("fail send 2 EIO", enveloped), "80520005 rib_wrap_cmi_rsp() failed qip_send_response() 5!\n");
}

TEST_F(faulty_wrappers, envelopes_are_cut) {
    EXPECT_EQ(run_with_server("truncate 2 115", cmi_request),
              "40520001 rib_wrap_cmi_req_rsp() bad size 6 for opc 77!\n");
    EXPECT_EQ(run("truncate 1 116",
                  [this](auto handle, auto &message, auto & /*answer*/) {
                      qip_addr address = rib;
                      EXPECT_EQ(qip_open(url.c_str(), &server), 0);
                      EXPECT_EQ(qip_listen(server, &address, 1), 0);
                      EXPECT_EQ(rib_wrap_cmi_send(handle, &message), RIB_OK);
                      qip_ref received = request();
                      uint32_t opcode = 0;
                      const uint8_t *payload = nullptr;
                      uint32_t length = 0;
                      const uint32_t code = rib_wrap_cmi_recv(qip_payload_get(&received), qip_payload_size(&received),
                                                              &opcode, &payload, &length);
                      qip_drop(server, &received);
                      return code;
                  }),
              "40520001 rib_wrap_cmi_recv() bad size 1 for opc 77!\n");
}

TEST_F(faulty_wrappers, notifications_fail) {
    yelk_hist_clear();
    const wrapper note = [](auto handle, auto & /*message*/, auto & /*answer*/) {
        return static_cast<uint32_t>(rib_wrap_qip_note(handle, 78, "x", 1));
    };
    EXPECT_EQ(run("fail send 1 EIO", note), "80520005 ");
    EXPECT_EQ(run("fail send 2 EIO", note), "80520005 ");
    const std::string history = printed_by(yelk_hist_print);
    EXPECT_NE(history.find("rib_wrap_qip_note() failed qip_send_notify() 0x80520005\n"), std::string::npos);
    EXPECT_NE(history.find("rib_wrap_qip_note() failed qip_send_notify() to LCs 0x80520005\n"), std::string::npos);
    yelk_hist_clear();
}

} // namespace

} // namespace ribkit::platform
