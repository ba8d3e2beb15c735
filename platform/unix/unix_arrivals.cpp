// What comes from the other processes, on the endpoint's thread or on whichever looks first. Nothing here waits: a
// connection whose queue is full is not read, and one that breaks the rules, or that memory fails for, is closed.
#include "platform/unix/unix_endpoint.h"

#include "platform/history.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <sys/eventfd.h>

namespace ribkit::platform {

namespace {

constexpr int packets_a_turn = 16; // then it is another connection's

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
    for (;;) {
        const int count = epoll_wait(events_.get(), events.data(), static_cast<int>(events.size()), -1);
        const std::scoped_lock lock{office_->lock};
        if (box_->closed()) {
            return;
        }
        handle({events.data(), static_cast<size_t>(std::max(count, 0))});
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
    } else if (event.data.fd == accept_timer_.get()) {
        accept_again();
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
    case packet_kind::gap:
        reconnections_ += is_sender && rest.empty() ? 1 : 0;
        return is_sender && rest.empty();
    case packet_kind::message:
        return is_sender && take_piece(from, head, rest);
    case packet_kind::answer:
        return !is_sender && take_piece(from, head, rest);
    default:
        return take_piece(from, head, rest);
    }
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
