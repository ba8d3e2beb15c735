// Who may connect: as many as there are descriptors for, none of them more than a share, and whom the listener wants.
#include "platform/unix/unix_endpoint.h"

#include "platform/history.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>
#include <new>
#include <pwd.h>
#include <span>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace ribkit::platform {

namespace {

using namespace std::chrono_literals;

constexpr int accepts_a_turn = 64;
constexpr auto accept_again_after = 100ms;
constexpr auto shortage_said_every = 1s;

/// Connections that an endpoint serves: half the descriptors that the process may have at most.
size_t most_senders() {
    constexpr size_t most = 1024;
    rlimit limit{2 * most, 2 * most}; // what it stays where it cannot be known
    getrlimit(RLIMIT_NOFILE, &limit);
    return std::min<size_t>(most, limit.rlim_cur / 2);
}

constexpr bool is_shortage(int error) { return error == EMFILE || error == ENFILE || error == ENOMEM; }

// The C library ends the process where memory fails while it reads which services know users. Its file of users, which
// is asked first by default, is read without them. Both answer 0, or an errno: ENOENT where the user is not known.
int find_local_user(uid_t user, passwd &entry, std::span<char> room) {
    const std::unique_ptr<FILE, int (*)(FILE *)> users(std::fopen("/etc/passwd", "re"), std::fclose);
    if (users == nullptr) {
        return errno;
    }
    passwd *found = nullptr;
    int error = 0;
    do {
        error = fgetpwent_r(users.get(), &entry, room.data(), room.size(), &found);
    } while (error == 0 && entry.pw_uid != user);
    return error;
}

int find_any_user(uid_t user, passwd &entry, std::span<char> room) {
    passwd *found = nullptr;
    const int error = getpwuid_r(user, &entry, room.data(), room.size(), &found);
    return error == 0 && found == nullptr ? ENOENT : error;
}

} // namespace

void unix_endpoint::accept_from(unix_listener &listener) {
    for (int left = accepts_a_turn; left != 0; --left) {
        const int accepted = accept4(listener.name.socket(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        int error = accepted >= 0 ? 0 : errno;
        try {
            error = accepted >= 0 ? accept_one(listener, descriptor{accepted}) : error;
        } catch (const std::bad_alloc &) {
            record_event("unix: a connection was closed, since memory failed");
        }
        if (error == EAGAIN) {
            return;
        }
        if (error != 0 && error != ECONNABORTED && error != EINTR) {
            accept_later(listener);
            return;
        }
    }
}

// Whoever waits to be accepted would be news again and again.
void unix_endpoint::accept_later(const unix_listener &listener) {
    const auto now = std::chrono::steady_clock::now();
    if (now - shortage_said_ >= shortage_said_every) {
        record_event("unix: no descriptor for a connection");
        shortage_said_ = now;
    }
    epoll_ctl(events_.get(), EPOLL_CTL_DEL, listener.name.socket(), nullptr);
    constexpr itimerspec soon{{}, {0, std::chrono::nanoseconds(accept_again_after).count()}};
    timerfd_settime(accept_timer_.get(), 0, &soon, nullptr);
}

void unix_endpoint::accept_again() {
    uint64_t expired = 0;
    if (::read(accept_timer_.get(), &expired, sizeof expired) < 0) {
        return; // another thread was faster
    }
    for (const auto &[socket, listener] : listeners_) {
        epoll_event arrives{.events = EPOLLIN, .data = {.fd = socket}};
        epoll_ctl(events_.get(), EPOLL_CTL_ADD, socket, &arrives); // does nothing where it is watched
    }
}

// 0, or an errno where somebody else would fare no better now.
int unix_endpoint::accept_one(const unix_listener &listener, descriptor socket) {
    ucred who{};
    socklen_t size = sizeof who;
    if (getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &who, &size) != 0) {
        return 0;
    }
    const std::string *name = nullptr;
    if (const int error = find_user_name(who.uid, name); error != 0) {
        return error;
    }
    auto made = std::make_shared<unix_connection>(std::move(socket));
    made->listener = &listener;
    made->process = who.pid;
    made->user = who.uid;
    made->from = new_sender(*name);
    if (const int error = refusal_of(listener, *made); error != 0) {
        record_event("unix: a connection was refused");
        made->refuse(error);
        return 0;
    }
    connections_[made->socket()] = made;
    ++senders_;
    watch(*made);
    return 0;
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

// Who is not known goes by a number. What could not be read is no reason for that: it would be kept.
int unix_endpoint::find_user_name(uid_t user, const std::string *&name) {
    std::string &known = user_names_[user];
    if (known.empty()) {
        std::array<char, 4096> room{};
        passwd entry{};
        int error = find_local_user(user, entry, room);
        if (error != 0 && !is_shortage(error)) {
            error = find_any_user(user, entry, room);
        }
        if (is_shortage(error)) {
            return error;
        }
        known = error == 0 && *entry.pw_name != '\0' ? entry.pw_name : std::to_string(user);
    }
    name = &known;
    return 0;
}

} // namespace ribkit::platform
