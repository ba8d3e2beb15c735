// Who may connect: as many as there are descriptors for, none of them more than a share, and whom the listener wants.
#include "platform/unix_endpoint.h"

#include "platform/history.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <pwd.h>
#include <span>
#include <sys/resource.h>
#include <sys/socket.h>

namespace ribkit::platform {

namespace {

constexpr int accepts_a_turn = 64;

/// Connections that an endpoint serves: half the descriptors that the process may have at most.
size_t most_senders() {
    constexpr size_t most = 1024;
    rlimit limit{};
    return getrlimit(RLIMIT_NOFILE, &limit) == 0 ? std::min<size_t>(most, limit.rlim_cur / 2) : most;
}

// The C library ends the process where memory fails while it reads which services know users. Its file of users, which
// is asked first by default, is read without them.
bool find_local_user(uid_t user, passwd &entry, std::span<char> room) {
    const std::unique_ptr<FILE, int (*)(FILE *)> users(std::fopen("/etc/passwd", "re"), std::fclose);
    passwd *found = nullptr;
    while (users != nullptr && fgetpwent_r(users.get(), &entry, room.data(), room.size(), &found) == 0) {
        if (entry.pw_uid == user) {
            return true;
        }
    }
    return false;
}

bool find_any_user(uid_t user, passwd &entry, std::span<char> room) {
    passwd *found = nullptr;
    return getpwuid_r(user, &entry, room.data(), room.size(), &found) == 0 && found != nullptr;
}

} // namespace

void unix_endpoint::accept_from(unix_listener &listener) {
    for (int left = accepts_a_turn; left != 0; --left) {
        const int accepted = accept4(listener.name.socket(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (accepted >= 0) {
            try {
                accept_one(listener, descriptor{accepted});
            } catch (const std::bad_alloc &) {
                record_event("unix: a connection was closed, since memory failed");
            }
        } else if (errno == EAGAIN) {
            return;
        } else if (errno != ECONNABORTED && errno != EINTR) {
            record_event("unix: no descriptor for a connection");
            epoll_ctl(events_.get(), EPOLL_CTL_DEL, listener.name.socket(), nullptr);
            accepts_later_ = true;
            return;
        }
    }
}

void unix_endpoint::accept_again() {
    for (const auto &[socket, listener] : listeners_) {
        epoll_event arrives{.events = EPOLLIN, .data = {.fd = socket}};
        epoll_ctl(events_.get(), EPOLL_CTL_ADD, socket, &arrives); // does nothing where it is watched
    }
}

void unix_endpoint::accept_one(const unix_listener &listener, descriptor socket) {
    ucred who{};
    socklen_t size = sizeof who;
    if (getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &who, &size) != 0) {
        return;
    }
    auto made = std::make_shared<unix_connection>(std::move(socket));
    made->listener = &listener;
    made->process = who.pid;
    made->user = who.uid;
    made->from = new_sender(user_name(who.uid));
    if (const int error = refusal_of(listener, *made); error != 0) {
        record_event("unix: a connection was refused");
        made->refuse(error);
        return;
    }
    connections_[made->socket()] = made;
    ++senders_;
    watch(*made);
}

// A user has at most half of the connections, one of his processes a quarter.
int unix_endpoint::refusal_of(const unix_listener &listener, const unix_connection &sender) const {
    const auto &wanted = listener.senders;
    if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), sender.from->name) == wanted.end()) {
        return EACCES;
    }
    const size_t most = most_senders();
    size_t of_user = 0;
    size_t of_process = 0;
    for (const auto &[number, one] : connections_) {
        const bool is_same_user = one->listener != nullptr && one->user == sender.user;
        of_user += is_same_user ? 1 : 0;
        of_process += is_same_user && one->process == sender.process ? 1 : 0;
    }
    return senders_ >= most || of_user >= most / 2 || of_process >= most / 4 ? ENOBUFS : 0;
}

const std::string &unix_endpoint::user_name(uid_t user) {
    std::string &known = user_names_[user];
    if (known.empty()) {
        std::array<char, 4096> room{};
        passwd entry{};
        const bool is_known = find_local_user(user, entry, room) || find_any_user(user, entry, room);
        known = is_known && *entry.pw_name != '\0' ? entry.pw_name : std::to_string(user);
    }
    return known;
}

} // namespace ribkit::platform
