// A waiting thread spins for a moment before it sleeps: an answer that comes at once then costs no wake-up. Whoever
// hands it a message touches the waiter last by setting `ended`, so that a spinning thread may leave without the lock.
#include "platform/mailbox.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

namespace ribkit::platform {

namespace {

using clock = std::chrono::steady_clock;

uint32_t spins() {
    static const uint32_t count = std::thread::hardware_concurrency() > 1 ? 400 : 0;
    return count;
}

void pause_processor() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

bool wants_answer(const selector &selected, uint32_t token) {
    return selected.wanted == selector::kind::by_token ? selected.token == token
                                                       : selected.wanted != selector::kind::incoming;
}

bool wants_incoming(const selector &selected) {
    return selected.wanted == selector::kind::incoming || selected.wanted == selector::kind::anything;
}

} // namespace

void post_office::wait_for_room(std::unique_lock<std::mutex> &locked) {
    ++waiting_;
    room_.wait(locked);
    --waiting_;
}

void post_office::room_made() {
    if (waiting_ != 0) {
        room_.notify_all();
    }
}

struct mailbox::waiter {
    const selector &selected;
    message_ptr letter{};
    int error = 0;
    bool asleep = false;
    std::atomic<bool> ended{false};
    std::condition_variable wake{};

    void end() {
        if (asleep) {
            ended.store(true, std::memory_order_relaxed); // the lock orders it
            wake.notify_one();
        } else {
            ended.store(true, std::memory_order_release);
        }
    }

    [[nodiscard]] bool spin() const {
        for (uint32_t left = spins(); left != 0; --left) {
            if (ended.load(std::memory_order_acquire)) {
                return true;
            }
            pause_processor();
        }
        return false;
    }
};

door &mailbox::add_door(uint32_t bound) { return doors_.emplace_back(door{.bound = bound}); }

mailbox::waiter *mailbox::waiter_for(const message &letter, bool is_answer) {
    const auto found = std::find_if(waiters_.begin(), waiters_.end(), [&](const waiter *one) {
        return is_answer ? wants_answer(one->selected, letter.token) : wants_incoming(one->selected);
    });
    if (found == waiters_.end()) {
        return nullptr;
    }
    waiter *first = *found;
    waiters_.erase(found);
    return first;
}

void mailbox::put(door &way_in, message_ptr letter) {
    if (waiter *reader = waiter_for(*letter, false)) {
        reader->letter = std::move(letter);
        reader->end();
        return;
    }
    incoming_.push_back({std::move(letter), &way_in});
    ++way_in.waiting;
}

int mailbox::expect(uint32_t token) {
    if (awaited_.size() >= most_awaited) {
        return ENOBUFS;
    }
    awaited_.insert(token);
    return 0;
}

void mailbox::put_answer(message_ptr &letter) {
    const uint32_t token = letter->token;
    const bool known = awaited_.contains(token) && std::none_of(answers_.begin(), answers_.end(),
                                                                [&](const auto &one) { return one->token == token; });
    if (!known) {
        return;
    }
    if (waiter *reader = waiter_for(*letter, true)) {
        awaited_.erase(token);
        reader->letter = std::move(letter);
        reader->end();
        return;
    }
    answers_.push_back(std::move(letter));
}

message_ptr mailbox::take_incoming() {
    if (incoming_.empty()) {
        return nullptr;
    }
    queued oldest = std::move(incoming_.front());
    incoming_.pop_front();
    --oldest.way_in->waiting;
    office_.room_made();
    return std::move(oldest.letter);
}

message_ptr mailbox::take_answer(const selector &selected) {
    const auto found = std::find_if(answers_.begin(), answers_.end(),
                                    [&](const auto &one) { return wants_answer(selected, one->token); });
    if (found == answers_.end()) {
        return nullptr;
    }
    message_ptr letter = std::move(*found);
    answers_.erase(found);
    awaited_.erase(letter->token);
    return letter;
}

message_ptr mailbox::take(const selector &selected) {
    message_ptr answer = take_answer(selected);
    return answer != nullptr || !wants_incoming(selected) ? std::move(answer) : take_incoming();
}

int mailbox::receive(const selector &selected, message_ptr &letter) {
    std::unique_lock locked{office_.lock};
    if (closed_) {
        return ECANCELED;
    }
    if (selected.wanted == selector::kind::by_token && !awaited_.contains(selected.token)) {
        return EINVAL;
    }
    letter = take(selected);
    if (letter != nullptr) {
        return 0;
    }
    if (!selected.may_wait) {
        return EAGAIN;
    }
    waiter self{.selected = selected};
    waiters_.push_back(&self);
    locked.unlock();
    const int error = self.spin() ? self.error : sleep(self, selected, locked);
    letter = std::move(self.letter);
    return error;
}

int mailbox::sleep(waiter &self, const selector &selected, std::unique_lock<std::mutex> &locked) {
    const auto deadline = clock::now() + selected.limit;
    const auto ended = [&] { return self.ended.load(std::memory_order_relaxed); };
    locked.lock();
    self.asleep = true;
    if (selected.limit.count() == 0) {
        self.wake.wait(locked, ended);
    } else if (!self.wake.wait_until(locked, deadline, ended)) {
        give_up(self, selected);
    }
    return self.error;
}

void mailbox::give_up(waiter &self, const selector &selected) {
    waiters_.erase(std::find(waiters_.begin(), waiters_.end(), &self));
    self.error = ETIMEDOUT;
    if (selected.wanted == selector::kind::by_token) {
        awaited_.erase(selected.token);
    }
}

std::vector<message_ptr> mailbox::close() {
    closed_ = true;
    for (waiter *one : waiters_) {
        one->error = ECANCELED;
        one->end();
    }
    waiters_.clear();
    std::vector<message_ptr> unread;
    for (queued &one : incoming_) {
        unread.push_back(std::move(one.letter));
    }
    std::move(answers_.begin(), answers_.end(), std::back_inserter(unread));
    incoming_.clear();
    answers_.clear();
    awaited_.clear();
    office_.room_made();
    return unread;
}

} // namespace ribkit::platform
