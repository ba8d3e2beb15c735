// Handles on a server, and a party that answers, for the tests over a server.
#pragma once

#include "platform/nats/nats_server_fixture.h"
#include "platform/service_fixture.h"
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace ribkit::platform {

inline uint32_t opened(const std::string &url) {
    uint32_t handle = 0;
    EXPECT_EQ(error_of(qip_open(url.c_str(), &handle)), 0);
    return handle;
}

/// 0, or the errno of opening a handle, which is closed again.
inline int error_of_opening(const std::string &url) {
    uint32_t handle = 0;
    const int error = error_of(qip_open(url.c_str(), &handle));
    if (error == 0) {
        qip_close(handle);
    }
    return error;
}

inline std::string not_sent(int error) { return "not sent " + std::to_string(error); }

/// A request's answer; refused(ERRNO) where the wait for it failed, not_sent(ERRNO) where the request did.
inline std::string answer_to(uint32_t handle, const std::string &question, const qip_addr &to = rib) {
    qip_ref sent = dirty_ref();
    if (const int error = send_text(handle, question, &sent, to); error != 0) {
        return not_sent(error);
    }
    const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 60, qip_rr_token_get(&sent)}};
    EXPECT_EQ(qip_drop(handle, &sent), 0);
    return taken(handle, opts);
}

/// Answers with the question and "!" until the handle, which it closes, is closed.
class answering {
  public:
    explicit answering(uint32_t handle) : handle_(handle), thread_{[handle] { serve(handle); }} {}
    answering(const answering &) = delete;
    answering &operator=(const answering &) = delete;
    ~answering() {
        qip_close(handle_);
        thread_.join();
    }

  private:
    static void serve(uint32_t handle) {
        qip_ref asked{};
        while (qip_recv(handle, &asked, nullptr) == 0) {
            answer_text(handle, asked, text_of(asked) + "!");
            qip_drop(handle, &asked);
        }
    }

    uint32_t handle_;
    std::thread thread_;
};

/// A server, a party that asks, and one that listens at the address of the RIB.
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

/// A request from one handle on this server to another and its answer.
inline std::string exchanged(const std::string &url) {
    const uint32_t client = opened(url);
    const uint32_t listening = opened(url);
    EXPECT_EQ(error_of(qip_listen(listening, &rib, 10)), 0);
    const answering serving{listening};
    std::string answer = answer_to(client, "question");
    qip_close(client);
    return answer;
}

/// A variable of the environment as long as the object lives.
class environment {
  public:
    environment(const char *name, const std::string &value) : name_(name) { setenv(name, value.c_str(), 1); }
    environment(const environment &) = delete;
    environment &operator=(const environment &) = delete;
    ~environment() { unsetenv(name_); }

  private:
    const char *name_;
};

struct user_variables {
    user_variables(const std::string &name, const std::string &password)
        : first{"RIBKIT_NATS_USER", name}, second{"RIBKIT_NATS_PASSWORD", password} {}

    environment first;
    environment second;
};

/// The content of a file of the source tree.
inline std::string in_the_tree(const std::string &file) {
    std::ifstream stream{RIBKIT_SOURCE_DIR "/" + file};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

} // namespace ribkit::platform
