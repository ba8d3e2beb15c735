// A directory to meet in, children that act there, and a peer that keeps to no rules.
#pragma once

#include "platform/service_fixture.h"
#include "platform/unix/unix_packet.h"
#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace ribkit::platform {

/// Does something in a process of its own, which ends at once with what it returns: nothing of the test's is cleaned up
/// there. Only before this process has opened a handle.
template <typename Action> pid_t started(const Action &action) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(action());
    }
    return child;
}

inline int ended(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline size_t entries(const std::string &directory) {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator{directory}, {}));
}

inline uint32_t opened(const std::string &url) {
    uint32_t handle = 0;
    EXPECT_EQ(error_of(qip_open(url.c_str(), &handle)), 0);
    return handle;
}

inline uint32_t listening(const std::string &url, uint32_t bound = rib_bound, const qip_addr &address = rib) {
    const uint32_t handle = opened(url);
    EXPECT_EQ(error_of(qip_listen(handle, &address, bound)), 0);
    return handle;
}

/// A request from one handle to the other, and its answer.
inline std::string exchanged(uint32_t client, uint32_t server, const std::string &text = "question") {
    qip_ref sent = dirty_ref();
    if (const int error = send_text(client, text, &sent); error != 0) {
        return refused(error);
    }
    const qip_recv_opts opts = within(60000, QIP_RECV_BY_TOKEN, qip_rr_token_get(&sent));
    qip_drop(client, &sent);
    qip_ref asked = dirty_ref();
    const qip_recv_opts soon = within(60000);
    if (qip_recv(server, &asked, &soon) == 0) {
        EXPECT_EQ(answer_text(server, asked, text_of(asked) + "!"), 0);
        qip_drop(server, &asked);
    }
    return taken(client, opts);
}

/// A connection without any manners.
class raw_peer {
  public:
    raw_peer() : socket_(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {}
    explicit raw_peer(int accepted) : socket_(accepted) {}
    explicit raw_peer(const std::string &path) : raw_peer() { connect_to(path); }
    raw_peer(raw_peer &&other) noexcept : socket_(std::exchange(other.socket_, -1)), error_(other.error_) {}
    raw_peer &operator=(raw_peer &&) = delete;
    ~raw_peer() {
        if (socket_ >= 0) {
            close(socket_);
        }
    }

    void connect_to(const std::string &path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        error_ = error_of(connect(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address));
    }

    [[nodiscard]] int error() const { return error_; }
    [[nodiscard]] int socket() const { return socket_; }

    [[nodiscard]] bool send(std::span<const uint8_t> bytes, int flags = 0) const {
        return ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | flags) >= 0;
    }

    [[nodiscard]] bool send(const packet_head &head, size_t payload = 0, int flags = 0) const {
        const head_bytes bytes = bytes_of(head);
        std::vector<uint8_t> packet(bytes.begin(), bytes.end());
        packet.resize(bytes.size() + payload, 0x5a);
        return send(packet, flags);
    }

    /// The next packet; empty once the connection is closed.
    [[nodiscard]] std::vector<uint8_t> packet() const {
        std::vector<uint8_t> room(packet_size);
        const ssize_t size = recv(socket_, room.data(), room.size(), 0);
        room.resize(size < 0 ? 0 : static_cast<size_t>(size));
        return room;
    }

    [[nodiscard]] bool is_cut_off() const {
        while (!packet().empty()) {
        }
        return true;
    }

  private:
    int socket_;
    int error_ = 0;
};

/// Listens where a handle might, and does what it likes with those who connect.
class raw_listener {
  public:
    explicit raw_listener(const std::string &path, int backlog = 8) {
        unlink(path.c_str());
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(error_of(bind(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address)), 0);
        EXPECT_EQ(error_of(listen(socket_, backlog)), 0);
    }
    raw_listener(const raw_listener &) = delete;
    raw_listener &operator=(const raw_listener &) = delete;
    ~raw_listener() { close(socket_); }

    [[nodiscard]] raw_peer accepted() const { return raw_peer{accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC)}; }

  private:
    int socket_ = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
};

} // namespace ribkit::platform
