// Fault scripts: what they say, what they do to calls and messages, and that a run goes the same way twice.
#include "platform/clock.h"
#include "platform/fault_script.h"
#include "platform/service_fixture.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "testing/capture.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <functional>
#include <thread>
#include <unistd.h>
#include <vector>

namespace ribkit::platform {

namespace {

/// Of this process: tests run beside one another.
std::string script_path() { return ::testing::TempDir() + "faults_test." + std::to_string(getpid()) + ".script"; }

using ribkit::testing::printed_by;
using std::chrono::milliseconds;
using std::chrono::seconds;

std::string parsed(const std::string &text) {
    fault_script script;
    return script.parse(text);
}

TEST(fault_script_text, is_accepted) {
    EXPECT_EQ(parsed(""), "");
    EXPECT_EQ(parsed("# comment\n\n  seed 7  # and another\nclock virtual\n"), "");
    EXPECT_EQ(parsed("fail send 3 ETIMEDOUT\nfail recv every 2 5\nfail drop one-in 10 EBADF"), "");
    EXPECT_EQ(parsed("drop 1\ndelay every 3 250\nduplicate 2\nreorder one-in 4\ntruncate 5 0"), "");
}

TEST(fault_script_text, is_refused_with_its_line) {
    const std::pair<const char *, const char *> rows[] = {
        {"seed 1\nfly 3", "2: no such event: fly"},
        {"seed", "1: seed takes one number"},
        {"seed x", "1: seed takes one number"},
        {"clock real", "1: no such event: clock"},
        {"fail", "1: no such call: "},
        {"fail fly 1 EIO", "1: no such call: fly"},
        {"fail send EIO", "1: a count from 1 is missing"},
        {"fail send 1", "1: an errno is missing"},
        {"fail send 1 EFLY", "1: an errno is missing"},
        {"fail send 1 0", "1: an errno is missing"},
        {"drop", "1: a count from 1 is missing"},
        {"drop 0", "1: a count from 1 is missing"},
        {"drop -1", "1: a count from 1 is missing"},
        {"drop 4294967296", "1: a count from 1 is missing"},
        {"drop every", "1: a count from 1 is missing"},
        {"drop 1 2", "1: too many words"},
        {"\n\ndelay 1", "3: milliseconds is missing"},
        {"truncate one-in 2 x", "1: bytes is missing"},
    };
    for (const auto &[text, wrong] : rows) {
        EXPECT_EQ(parsed(text), wrong) << text;
    }
}

TEST(fault_script_text, counts) {
    fault_script script;
    ASSERT_EQ(script.parse("fail send 2 EIO\nfail send every 3 EAGAIN\nfail recv 1 EBADF\ndrop 2\ntruncate every 2 9"),
              "");
    std::vector<int> failures(6);
    for (int &one : failures) {
        one = script.failure_of(service_call::send);
    }
    EXPECT_EQ(failures, (std::vector<int>{0, EIO, EAGAIN, 0, 0, EAGAIN}));
    EXPECT_EQ(script.failure_of(service_call::recv), EBADF);
    EXPECT_EQ(script.failure_of(service_call::recv), 0);
    EXPECT_FALSE(script.next_message().lost);
    const disturbance second = script.next_message();
    EXPECT_TRUE(second.lost);
    EXPECT_EQ(second.most_bytes, 9U);
    EXPECT_EQ(script.next_message().most_bytes, UINT32_MAX);
}

std::string losses(const std::string &seed) {
    fault_script script;
    EXPECT_EQ(script.parse("seed " + seed + "\ndrop one-in 4"), "");
    std::string text;
    for (int message = 0; message < 400; ++message) {
        text += script.next_message().lost ? 'x' : '.';
    }
    return text;
}

TEST(fault_script_text, one_seed_is_one_sequence) {
    const std::string text = losses("5");
    EXPECT_EQ(losses("5"), text);
    EXPECT_NE(losses("6"), text);
    const auto lost = std::count(text.begin(), text.end(), 'x');
    EXPECT_GT(lost, 60);
    EXPECT_LT(lost, 140);
}

/// A thread that serves until its handle is closed. Once constructed it is known to the virtual clock.
class server_thread {
  public:
    server_thread(uint32_t handle, const std::function<void(uint32_t)> &serve)
        : thread_{[handle, serve, this] {
              taken(handle, now(QIP_RECV_INCOMING));
              started_ = true;
              serve(handle);
          }} {
        while (!started_) {
            std::this_thread::yield();
        }
    }
    server_thread(const server_thread &) = delete;
    server_thread &operator=(const server_thread &) = delete;
    ~server_thread() { thread_.join(); }

  private:
    std::atomic<bool> started_{false};
    std::thread thread_;
};

class faulty : public on_one_bus {
  protected:
    void TearDown() override {
        std::remove(script_path().c_str());
        EXPECT_EQ(qip_faults_load(nullptr, nullptr, 0), 0);
        on_one_bus::TearDown();
    }

    void load(const std::string &text) {
        const std::string file = script_path();
        std::ofstream{file} << text;
        char error[200] = "";
        ASSERT_EQ(qip_faults_load(file.c_str(), error, sizeof error), 0) << error;
    }

    [[nodiscard]] std::string incoming() const { return taken(server, now(QIP_RECV_INCOMING)); }
};

TEST_F(faulty, files_that_cannot_be_read_or_parsed) {
    char error[40] = "";
    EXPECT_EQ(error_of(qip_faults_load("/no/such/file", error, sizeof error)), EINVAL);
    EXPECT_STREQ(error, "/no/such/file: cannot be read");
    const std::string file = script_path();
    std::ofstream{file} << "fly\n";
    char cut[4] = "";
    EXPECT_EQ(error_of(qip_faults_load(file.c_str(), cut, sizeof cut)), EINVAL);
    EXPECT_EQ(std::strlen(cut), 3U);
}

TEST_F(faulty, calls_fail) {
    load("fail open 1 EMSGSIZE\nfail listen 1 EPIPE\nfail send 2 EIO\nfail recv 1 ECONNRESET\nfail drop 2 EACCES");
    uint32_t handle = 0;
    EXPECT_EQ(error_of(qip_open("local:test", &handle)), EMSGSIZE);
    const qip_addr other{2, 2};
    EXPECT_EQ(error_of(qip_listen(server, &other, 1)), EPIPE);
    EXPECT_EQ(send_text(client, "first"), 0);
    EXPECT_EQ(send_text(client, "second"), EIO);
    EXPECT_EQ(incoming(), refused(ECONNRESET));
    EXPECT_EQ(incoming(), "first");
    EXPECT_EQ(incoming(), refused(EAGAIN));
    qip_ref sent{};
    ASSERT_EQ(send_text(client, "third", &sent), 0);
    EXPECT_EQ(error_of(qip_drop(client, &sent)), EACCES);
    EXPECT_EQ(qip_refs_held(), 0U);
}

TEST_F(faulty, messages_are_lost_doubled_swapped_and_cut) {
    load("drop 2\nduplicate 3\nreorder 4\ntruncate every 6 2");
    ASSERT_EQ(qip_listen(client, &rib, 1), -1);
    const qip_addr other{2, 2};
    ASSERT_EQ(qip_listen(server, &other, 100), 0);
    for (const char *text : {"one", "two", "three", "four", "five", "six"}) {
        ASSERT_EQ(send_text(client, text, nullptr, other), 0);
    }
    for (const char *text : {"one", "three", "three", "five", "four", "si"}) {
        EXPECT_EQ(incoming(), text);
    }
    EXPECT_EQ(incoming(), refused(EAGAIN));
}

TEST_F(faulty, a_message_held_back_for_the_next_is_dropped_with_the_handle) {
    load("reorder 1");
    ASSERT_EQ(send_text(client, "never"), 0);
    EXPECT_EQ(incoming(), refused(EAGAIN));
}

TEST_F(faulty, a_doubled_request_is_answered_once) {
    load("duplicate every 1");
    const uint32_t token = ask("question");
    for (int count = 0; count < 2; ++count) {
        qip_ref asked = request();
        EXPECT_EQ(text_of(asked), "question");
        EXPECT_EQ(answer_text(server, asked, "answer"), 0);
        qip_drop(server, &asked);
    }
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, token)), "answer");
    EXPECT_EQ(taken(client, now(QIP_RECV_ANYTHING)), refused(EAGAIN));
}

TEST_F(faulty, a_virtual_clock_needs_no_time) {
    load("clock virtual\n");
    const qip_recv_opts hour{{QIP_RECV_BY_TOKEN, 0, 3600, ask("never answered")}};
    const time_point before = clock_now();
    EXPECT_EQ(taken(client, hour), refused(ETIMEDOUT));
    EXPECT_EQ(clock_now() - before, seconds{3600});
    EXPECT_EQ(taken(client, within(7)), refused(ETIMEDOUT));
    EXPECT_EQ(clock_now() - before, seconds{3600} + milliseconds{7});
}

TEST_F(faulty, a_late_message_arrives_in_its_turn) {
    load("clock virtual\ndelay 1 250\ndelay 2 100\n");
    const time_point before = clock_now();
    for (const char *text : {"latest", "late", "at once"}) {
        ASSERT_EQ(send_text(client, text), 0);
    }
    EXPECT_EQ(incoming(), "at once");
    EXPECT_EQ(incoming(), refused(EAGAIN));
    EXPECT_EQ(taken(server, within(99)), refused(ETIMEDOUT));
    EXPECT_EQ(taken(server, within(99)), "late");
    EXPECT_EQ(clock_now() - before, milliseconds{100});
    EXPECT_EQ(taken(server, within(1000)), "latest");
    EXPECT_EQ(clock_now() - before, milliseconds{250});
}

TEST_F(faulty, a_late_message_on_the_real_clock) {
    load("delay 1 20\n");
    ASSERT_EQ(send_text(client, "late"), 0);
    EXPECT_EQ(incoming(), refused(EAGAIN));
    EXPECT_EQ(taken(server, within(0)), "late");
}

TEST_F(faulty, a_late_message_for_a_closed_handle_is_thrown_away) {
    load("clock virtual\ndelay every 1 20\n");
    ASSERT_EQ(send_text(client, "late"), 0);
    qip_close(server);
    EXPECT_EQ(taken(client, within(100)), refused(ETIMEDOUT));
}

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
        return code_text(code) + text.substr(std::min(text.size(), size_t{9}));
    }

    std::string run_with_server(const std::string &script, const wrapper &call) {
        load("clock virtual\n"); // so that the server's thread takes its turns from the start
        server_thread serving{server, serve_envelopes};
        std::string text = run(script, call);
        qip_faults_load(nullptr, nullptr, 0);
        qip_close(server);
        return text;
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
                      EXPECT_EQ(qip_open("local:test", &server), 0);
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

/// A client and a server under a script: when each request ended, and how.
class transcripts : public faulty {
  protected:
    std::string run(int requests) {
        SetUp();
        load("seed 9\nclock virtual\ndrop one-in 10\ndelay one-in 7 300\nduplicate one-in 9\nreorder one-in 12\n"
             "truncate one-in 8 3\nfail send one-in 20 EAGAIN\nfail recv one-in 30 EIO\nfail drop one-in 15 EBADF\n");
        std::string text;
        {
            const server_thread serving{server, serve_all};
            for (int number = 0; number < requests; ++number) {
                text += one_request(std::to_string(number));
            }
            qip_faults_load(nullptr, nullptr, 0);
            qip_close(server);
        }
        on_one_bus::TearDown();
        return text;
    }

    static void serve_all(uint32_t handle) {
        qip_ref asked{};
        for (;;) {
            if (qip_recv(handle, &asked, nullptr) == 0) {
                answer_text(handle, asked, text_of(asked) + "!");
                qip_drop(handle, &asked);
            } else if (errno == ECANCELED || errno == EBADF) {
                return;
            }
        }
    }

    [[nodiscard]] std::string one_request(const std::string &question) const {
        qip_ref sent{};
        std::string result;
        if (const int error = send_text(client, question, &sent); error != 0) {
            result = "not sent " + std::to_string(error);
        } else {
            const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 1, qip_rr_token_get(&sent)}};
            qip_drop(client, &sent);
            qip_ref answer{};
            const int missing = error_of(qip_recv(client, &answer, &opts));
            result = missing != 0 ? refused(missing) : text_of(answer);
            qip_drop(client, &answer);
        }
        const auto at = std::chrono::duration_cast<milliseconds>(clock_now().time_since_epoch()).count();
        return std::to_string(at) + " " + question + ": " + result + "\n";
    }
};

TEST_F(transcripts, are_the_same_twice) {
    TearDown();
    const std::string first = run(300);
    EXPECT_EQ(run(300), first);
    for (const char *part : {": not sent 11\n", ": errno 110\n", ": errno 5\n", " 7: 7!\n"}) {
        EXPECT_NE(first.find(part), std::string::npos) << part << "\n" << first;
    }
    SetUp();
}

} // namespace

} // namespace ribkit::platform
