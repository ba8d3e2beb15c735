// What comes from the other processes, on the endpoint's thread or on whichever looks first. Nothing here waits: a
// connection whose queue is full is not read, and one that breaks the rules, or that memory fails for, is closed.
#include "platform/unix_endpoint.h"

#include "platform/history.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <pwd.h>
#include <span>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>

namespace ribkit::platform {

namespace {

constexpr uint64_t most_unread = 1 << 20; // bytes beyond which a connection is not read
constexpr uint64_t most_held = 256 << 20; // bytes that wait for a reader, or for the rest of their message
constexpr int packets_a_turn = 16;        // then it is another connection's
constexpr int accepts_a_turn = 64;
constexpr int accept_again_after = 100; // milliseconds

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

class way_home final : public return_path {
  public:
    way_home(std::weak_ptr<unix_endpoint> end, std::shared_ptr<unix_waker> waker, unix_endpoint::connection_ptr from,
             const message &letter)
        : end_(std::move(end)), waker_(std::move(waker)), from_(std::move(from)), token_(letter.token),
          size_(letter.size) {
        ++from_->arrived.unread;
        from_->arrived.bytes += size_;
        waker_->unread_bytes += size_;
    }
    way_home(const way_home &) = delete;
    way_home &operator=(const way_home &) = delete;
    ~way_home() override {
        was_read(); // or thrown away
        if (from_->arrived.room_owed != 0) {
            waker_->wake(); // its sender has to be told, whom no answer has
        }
    }

    /// Whether that is news.
    bool was_read() {
        const bool first = !read_.exchange(true);
        if (first) {
            --from_->arrived.unread;
            from_->arrived.bytes -= size_;
            waker_->unread_bytes -= size_;
            ++from_->arrived.room_owed;
        }
        return first;
    }

    [[nodiscard]] const unix_endpoint::connection_ptr &from() const { return from_; }

    int answer(message letter) override {
        if (token_ == 0) {
            return 0;
        }
        letter.token = token_;
        const auto end = end_.lock();
        return end == nullptr ? ECANCELED : end->send_answer(from_, std::move(letter));
    }

  private:
    std::weak_ptr<unix_endpoint> end_;
    std::shared_ptr<unix_waker> waker_;
    unix_endpoint::connection_ptr from_;
    std::atomic<bool> read_{false};
    uint32_t token_;
    uint32_t size_;
};

} // namespace

void record_quietly(const char *text) {
    try {
        record_event(text);
    } catch (const std::bad_alloc &) {
    }
}

int unix_waker::open() {
    event_ = descriptor{eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    return event_.is_open() ? 0 : errno;
}

void unix_waker::wake() const { eventfd_write(event_.get(), 1); }

void unix_waker::sleep() const {
    eventfd_t count = 0;
    eventfd_read(event_.get(), &count);
}

void unix_endpoint::serve() {
    std::array<epoll_event, 64> events{};
    for (bool accepts_later = false;;) {
        const int count = epoll_wait(events_.get(), events.data(), static_cast<int>(events.size()),
                                     accepts_later ? accept_again_after : -1);
        const std::scoped_lock lock{office_->lock};
        if (box_->closed()) {
            return;
        }
        handle({events.data(), static_cast<size_t>(std::max(count, 0))});
        if (std::exchange(accepts_later_, false)) {
            accepts_later = true;
        } else if (std::exchange(accepts_later, false)) {
            accept_again();
        }
    }
}

// With the lock held, on the thread of whoever calls.
void unix_endpoint::look_for_arrivals() {
    constexpr int rounds = 8;
    std::array<epoll_event, 16> events{};
    for (int round = 0; round < rounds; ++round) {
        const int count = epoll_wait(events_.get(), events.data(), static_cast<int>(events.size()), 0);
        if (count <= 0) {
            return;
        }
        handle({events.data(), static_cast<size_t>(count)});
    }
}

void unix_endpoint::handle(std::span<const epoll_event> events) {
    for (const epoll_event &one : events) {
        try {
            handle(one);
        } catch (const std::bad_alloc &) {
            record_quietly("unix: memory failed");
        }
    }
}

// Another thread may have been faster, and the connection be closed.
void unix_endpoint::handle(const epoll_event &event) {
    if (event.data.fd == waker_->number()) {
        waker_->sleep();
        settle_all();
    } else if (const auto listener = listeners_.find(event.data.fd); listener != listeners_.end()) {
        accept_from(*listener->second);
    } else if (const auto found = connections_.find(event.data.fd); found != connections_.end()) {
        const connection_ptr one = found->second;
        if ((event.events & EPOLLOUT) != 0) {
            flush(one);
        }
        if ((event.events & ~static_cast<uint32_t>(EPOLLOUT)) != 0) {
            read(one);
        }
    }
}

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

bool unix_endpoint::has_full_queue(const unix_connection &from) const {
    const uint32_t unread = from.arrived.unread;
    const bool has_much = from.arrived.bytes >= most_unread || waker_->unread_bytes >= most_held / 2;
    return from.listener != nullptr && (unread >= from.listener->bound || (unread != 0 && has_much));
}

void unix_endpoint::read(const connection_ptr &from) {
    for (int left = packets_a_turn; left != 0 && from->is_open() && !has_full_queue(*from); --left) {
        std::span<const uint8_t> packet;
        const int error = from->receive({packet_room_.get(), packet_size}, packet);
        if (error == EAGAIN) {
            break;
        }
        try {
            if (error != 0) {
                drop(from, error == EPROTO ? ECONNRESET : error);
            } else if (!take_packet(from, packet)) {
                record_event("unix: a connection that does not keep the rules was closed");
                drop(from, ECONNRESET);
            }
        } catch (const std::bad_alloc &) {
            record_event("unix: a connection was closed, since memory failed");
            drop(from, ECONNRESET);
        }
    }
    watch(*from);
}

// Whether the rules are kept.
bool unix_endpoint::take_packet(const connection_ptr &from, std::span<const uint8_t> packet) {
    packet_head head;
    const bool is_sender = from->listener != nullptr; // who sends messages to us, and no answers
    if (!parse_head(packet, head) || (is_sender && head.room != 0)) {
        return false;
    }
    if (head.room != 0) {
        from->room += std::min(head.room, UINT32_MAX - from->room);
        changed_.notify_all();
    }
    const std::span<const uint8_t> rest = packet.subspan(packet_head_size);
    switch (head.kind) {
    case packet_kind::room:
        return !is_sender && rest.empty();
    case packet_kind::refusal:
        if (!is_sender && rest.empty()) {
            drop(from, head.opcode == EACCES ? EACCES : ENOBUFS);
        }
        return !is_sender && rest.empty();
    case packet_kind::message:
        return is_sender && take_piece(from, head, rest);
    case packet_kind::answer:
        return !is_sender && take_piece(from, head, rest);
    default:
        return take_piece(from, head, rest);
    }
}

bool unix_endpoint::take_piece(const connection_ptr &from, const packet_head &head, std::span<const uint8_t> piece) {
    message_builder &incoming = from->incoming;
    if (!incoming.add(head, piece)) {
        return false;
    }
    from->last_fed = ++pieces_;
    held_pieces_ += piece.size();
    if (!incoming.is_whole()) {
        make_room_for_pieces();
    } else {
        held_pieces_ -= incoming.arrived();
        incoming.kind() == packet_kind::message ? take_message(from, incoming.take())
                                                : take_answer(*from, incoming.take());
    }
    return true;
}

// Those that stopped in the middle of a message, if there are any, have waited longest for their next piece.
void unix_endpoint::make_room_for_pieces() {
    while (held_pieces_ + waker_->unread_bytes > most_held) {
        connection_ptr oldest;
        for (const auto &[number, one] : connections_) {
            if (one->incoming.is_begun() && (oldest == nullptr || one->last_fed < oldest->last_fed)) {
                oldest = one;
            }
        }
        if (oldest == nullptr) {
            return;
        }
        record_quietly("unix: a connection was closed, since too many large messages arrive at once");
        drop(oldest, ENOBUFS);
    }
}

void unix_endpoint::take_message(const connection_ptr &from, message letter) {
    letter.from = from->from;
    letter.reply = std::make_shared<way_home>(weak_from_this(), waker_, from, letter);
    box_->put(*from->listener->way_in, std::move(letter));
}

void unix_endpoint::take_answer(unix_connection &from, message letter) {
    if (from.asked.erase(letter.token) != 0) {
        box_->put_answer(std::move(letter));
    }
}

int unix_endpoint::receive(const selector &selected, message &letter) {
    {
        const std::scoped_lock lock{office_->lock};
        for (const connection_ptr &one : std::exchange(owing_, {})) {
            settle(one);
        }
        look_for_arrivals();
    }
    const int error = box_->receive(selected, letter);
    if (error == 0 && letter.reply != nullptr) {
        was_read(letter);
    }
    return error;
}

// Who waits for an answer learns with it that there is room again, or at our next look for messages.
void unix_endpoint::was_read(message &letter) {
    auto &way = static_cast<way_home &>(*letter.reply);
    if (!way.was_read()) {
        return;
    }
    const std::scoped_lock lock{office_->lock};
    if (letter.token != 0) {
        try {
            owing_.push_back(way.from());
            watch(*way.from());
            return;
        } catch (const std::bad_alloc &) { // then it is said at once
        }
    }
    settle(way.from());
}

void unix_endpoint::settle(const connection_ptr &from) {
    if (from->is_open()) {
        flush(from);
    }
}

void unix_endpoint::settle_all() {
    const auto all = connections_;
    for (const auto &[number, one] : all) {
        settle(one);
    }
}

void unix_endpoint::flush(const connection_ptr &to) {
    const uint64_t sent_before = to->sent();
    const int error = to->flush();
    to->is_socket_full = error == EAGAIN;
    if (error != 0 && error != EAGAIN) {
        read(to); // what it has said before it went
        return;
    }
    if (to->sent() != sent_before) {
        changed_.notify_all();
    }
    watch(*to);
}

void unix_endpoint::watch(unix_connection &one) {
    const uint32_t wanted = !one.is_open() ? 0
                                           : (has_full_queue(one) ? 0 : static_cast<uint32_t>(EPOLLIN)) |
                                                 (one.is_socket_full ? static_cast<uint32_t>(EPOLLOUT) : 0);
    if (wanted == one.watched || !one.is_open()) {
        return;
    }
    epoll_event event{.events = wanted, .data = {.fd = one.socket()}};
    const int act = wanted == 0 ? EPOLL_CTL_DEL : one.watched == 0 ? EPOLL_CTL_ADD : EPOLL_CTL_MOD;
    epoll_ctl(events_.get(), act, one.socket(), &event);
    one.watched = wanted;
}

// The waits for its answers end, unless another member of the group may answer.
void unix_endpoint::drop(const connection_ptr &lost, int reason) {
    if (!lost->is_open()) {
        return;
    }
    lost->ended_by = reason;
    connections_.erase(lost->socket());
    held_pieces_ -= lost->incoming.arrived();
    lost->close();
    if (lost->listener != nullptr) {
        --senders_;
        return;
    }
    to_.erase(lost->name);
    changed_.notify_all();
    const auto may_answer = [](uint32_t token) {
        return [=](const auto &one) { return one.second->asked.contains(token); };
    };
    for (const uint32_t token : std::exchange(lost->asked, {})) {
        if (std::none_of(to_.begin(), to_.end(), may_answer(token))) {
            box_->fail(token, reason);
        }
    }
    if (!unix_place::is_member(lost->name)) {
        lost_.insert(lost->name);
    }
}

} // namespace ribkit::platform
