// Two parties on one bus, for tests: every reference has to come back. The tests are built once for every transport
// that keeps to the same rules.
#pragma once

#include "ribkit_platform.h"
#include "ribkit_rib.h"
#include "testing/temporary_directory.h"
#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#ifdef RIBKIT_TEST_UNIX
#include <pwd.h>
#include <unistd.h>
#endif

namespace ribkit::platform {

#ifdef RIBKIT_TEST_UNIX
inline std::string test_url(const std::string &directory) { return "unix:" + directory; }
inline std::string own_name() {
    const passwd *self = getpwuid(geteuid());
    return self == nullptr ? std::to_string(geteuid()) : self->pw_name;
}
#else
inline std::string test_url(const std::string & /*directory*/) { return "local:test"; }
inline std::string own_name() { return ""; }
#endif

inline constexpr qip_addr rib{RIB_WRAP_NODE_RIB, RIB_WRAP_SAP_RIB};
inline constexpr uint32_t rib_bound = 4;

/// A reference as the stack may leave it.
inline qip_ref dirty_ref() {
    qip_ref ref;
    std::memset(&ref, 0xa5, sizeof ref);
    return ref;
}

/// 0, or the errno of a failed call.
inline int error_of(int result) { return result == 0 ? 0 : errno; }

inline int send_text(uint32_t handle, const std::string &text, qip_ref *ref_out = nullptr, const qip_addr &to = rib) {
    return error_of(
        qip_send(handle, &to, 7, text.data(), static_cast<uint32_t>(text.size()), ref_out, nullptr, nullptr));
}

inline int send_at_once(uint32_t handle, const std::string &text, const qip_addr &to = rib) {
    static constexpr qip_send_opts at_once{{1, 1}};
    return error_of(
        qip_send(handle, &to, 7, text.data(), static_cast<uint32_t>(text.size()), nullptr, nullptr, &at_once));
}

inline int answer_text(uint32_t handle, const qip_ref &request, const std::string &text) {
    const qip_addr nowhere{0, 0};
    return error_of(
        qip_send(handle, &nowhere, 9, text.data(), static_cast<uint32_t>(text.size()), nullptr, &request, nullptr));
}

inline std::string text_of(const qip_ref &ref) {
    return {static_cast<const char *>(qip_payload_get(&ref)), qip_payload_size(&ref)};
}

/// Options of a receive that does not wait.
inline qip_recv_opts now(uint32_t kind, uint32_t token = 0) { return {{kind, 1, 0, token}}; }

/// Options of a receive that waits some milliseconds.
inline qip_recv_opts within(uint32_t milliseconds, uint32_t kind = QIP_RECV_INCOMING, uint32_t token = 0) {
    return {{kind, 0, 0, token, milliseconds}};
}

/// Receives and drops: the text, or "errno N".
inline std::string taken(uint32_t handle, const qip_recv_opts &opts) {
    qip_ref ref = dirty_ref();
    if (const int error = error_of(qip_recv(handle, &ref, &opts)); error != 0) {
        return "errno " + std::to_string(error);
    }
    std::string text = text_of(ref);
    EXPECT_EQ(qip_drop(handle, &ref), 0);
    return text;
}

inline std::string refused(int error) { return "errno " + std::to_string(error); }

/// Closes while another thread waits, and expects how the wait ends. The thread may not have begun to wait when the
/// handle is closed, and then finds no handle: it tries again, and has longer.
inline void closed_while(const std::function<int()> &waiting, const std::function<void()> &begin,
                         const std::function<void()> &close, int expected) {
    int error = EBADF;
    for (int attempt = 0; error == EBADF && attempt < 100; ++attempt) {
        begin();
        std::thread blocked{[&] { error = waiting(); }};
        std::this_thread::sleep_for(std::chrono::milliseconds{5 * (attempt + 1)});
        close();
        blocked.join();
    }
    EXPECT_EQ(error, expected);
}

class on_one_bus : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(qip_open(url.c_str(), &client), 0);
        ASSERT_EQ(qip_open(url.c_str(), &server), 0);
        ASSERT_EQ(qip_listen(server, &rib, rib_bound), 0);
    }

    void TearDown() override {
        qip_close(client);
        qip_close(server);
        EXPECT_EQ(qip_refs_held(), 0U);
    }

    /// Sends a request, drops its reference, and says its token.
    uint32_t ask(const std::string &text) const {
        qip_ref sent = dirty_ref();
        EXPECT_EQ(send_text(client, text, &sent), 0);
        const uint32_t token = qip_rr_token_get(&sent);
        EXPECT_EQ(qip_drop(client, &sent), 0);
        return token;
    }

    /// Takes the oldest request at the server, which drops it later.
    [[nodiscard]] qip_ref request() const {
        qip_ref ref = dirty_ref();
        const qip_recv_opts opts = now(QIP_RECV_INCOMING);
        EXPECT_EQ(qip_recv(server, &ref, &opts), 0);
        return ref;
    }

    testing::temporary_directory home;
    std::string url = test_url(home.file("bus"));
    uint32_t client = 0;
    uint32_t server = 0;
};

} // namespace ribkit::platform
