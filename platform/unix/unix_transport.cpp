// The life of an endpoint: it is opened, listens, and is shut when what it still has to say is sent.
#include "platform/transports.h"

#include "platform/clock.h"
#include "platform/unix/unix_endpoint.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <sys/timerfd.h>

namespace ribkit::platform {

namespace {

using namespace std::chrono_literals;

constexpr auto closing_limit = 1s; // for what was sent and is still queued

/// Signals are for the program's own threads.
class all_signals_blocked {
  public:
    all_signals_blocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    all_signals_blocked(const all_signals_blocked &) = delete;
    all_signals_blocked &operator=(const all_signals_blocked &) = delete;
    ~all_signals_blocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_{};
};

} // namespace

int unix_endpoint::start() {
    has_real_time_ = claim_real_time(); // which the other processes keep
    if (!has_real_time_) {
        return ENOTSUP;
    }
    events_ = descriptor{epoll_create1(EPOLL_CLOEXEC)};
    accept_timer_ = descriptor{timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)};
    if (!events_.is_open() || !accept_timer_.is_open()) {
        return errno;
    }
    if (const int error = waker_->open(); error != 0) {
        return error;
    }
    for (const int number : {waker_->number(), accept_timer_.get()}) {
        epoll_event woken{.events = EPOLLIN, .data = {.fd = number}};
        if (epoll_ctl(events_.get(), EPOLL_CTL_ADD, number, &woken) != 0) {
            return errno;
        }
    }
    const all_signals_blocked during_start;
    thread_ = std::thread{[this] { serve(); }};
    return 0;
}

int unix_endpoint::listen(const qip_addr &address, uint32_t bound, std::span<const char *const> names) {
    const std::scoped_lock lock{office_->lock};
    if (box_->closed()) {
        return ECANCELED;
    }
    const auto is_here = [&](const auto &one) {
        return one.second->address.node == address.node && one.second->address.sap == address.sap;
    };
    if (is_group(address) && std::any_of(listeners_.begin(), listeners_.end(), is_here)) {
        return EADDRINUSE;
    }
    auto made = std::make_unique<unix_listener>();
    if (const int error = place_.take(address, bound, made->name); error != 0) {
        return error;
    }
    made->address = address;
    made->bound = bound;
    made->senders.assign(names.begin(), names.end());
    made->way_in = &box_->add_door(bound);
    const int socket = made->name.socket();
    epoll_event arrives{.events = EPOLLIN, .data = {.fd = socket}};
    if (epoll_ctl(events_.get(), EPOLL_CTL_ADD, socket, &arrives) != 0) {
        return errno;
    }
    listeners_.emplace(socket, std::move(made));
    return 0;
}

void unix_endpoint::shut() {
    mailbox::leftovers unread;
    {
        const std::scoped_lock lock{office_->lock};
        if (box_->closed()) {
            return;
        }
        unread = box_->close();
        for (const auto &[socket, listener] : listeners_) { // which their connections still point at
            listener->name.release();
        }
        changed_.notify_all();
    }
    waker_->wake();
    if (thread_.joinable()) {
        thread_.join();
    }
    send_the_rest();
    if (has_real_time_) {
        release_real_time();
    }
}

void unix_endpoint::send_the_rest() {
    const auto limit = std::chrono::steady_clock::now() + closing_limit;
    const std::scoped_lock lock{office_->lock};
    for (const auto &[number, one] : connections_) {
        while (one->bytes_to_send() != 0 && one->flush() == EAGAIN) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(limit - std::chrono::steady_clock::now());
            pollfd writable{number, POLLOUT, 0};
            if (poll(&writable, 1, std::max<int>(0, static_cast<int>(left.count()))) <= 0) {
                break;
            }
        }
        one->close();
    }
    connections_.clear();
    to_.clear();
    owing_.clear();
}

int open_unix(std::string_view url, std::chrono::milliseconds /*server_limit*/, endpoint_ptr &opened) {
    unix_place place;
    if (const int error = place.parse(url); error != 0) {
        return error;
    }
    auto end = std::make_shared<unix_endpoint>(std::move(place));
    const int error = end->start();
    if (error == 0) {
        opened = std::move(end);
    }
    return error;
}

} // namespace ribkit::platform
