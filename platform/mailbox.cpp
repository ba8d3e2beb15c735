// A waiting thread spins for a moment before it sleeps: an answer that comes at once then costs no wake-up. Whoever
// hands it a message touches the waiter last by setting `ended`, so that a spinning thread may leave without the lock.
#include "platform/mailbox.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace ribkit::platform {

namespace {

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

struct mailbox::waiter {
    const selector &selected;
    message &letter;
    int error = 0;
    bool asleep = false;
    std::atomic<bool> ended{false};
    std::condition_variable wake{};
    timed_wait timer{};

    void end() {
        if (asleep) {
            ended.store(true, std::memory_order_relaxed); // the lock orders it
            timer.end();
            wake.notify_one();
        } else {
            ended.store(true, std::memory_order_release);
        }
    }

    [[nodiscard]] bool spin(uint32_t turns) const {
        for (uint32_t left = turns; left != 0; --left) {
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

void mailbox::take_in(parcel one) {
    if (closed_) {
        return;
    }
    if (one.way_in == nullptr) {
        take_in_answer(std::move(one.letter));
    } else if (waiter *reader = waiter_for(one.letter, false)) {
        reader->letter = std::move(one.letter);
        reader->end();
    } else {
        ++one.way_in->waiting;
        incoming_.push_back(std::move(one));
    }
}

int mailbox::expect(uint32_t token) {
    if (awaited_.size() >= most_awaited) {
        return ENOBUFS;
    }
    awaited_.push_back(token);
    return 0;
}

bool mailbox::awaits(uint32_t token) const {
    return std::find(awaited_.rbegin(), awaited_.rend(), token) != awaited_.rend();
}

void mailbox::expect_no_more(uint32_t token) {
    const auto found = std::find(awaited_.rbegin(), awaited_.rend(), token);
    if (found != awaited_.rend()) {
        *found = awaited_.back();
        awaited_.pop_back();
    }
}

void mailbox::take_in_answer(message letter) {
    const uint32_t token = letter.token;
    const auto same = [&](const message &one) { return one.token == token; };
    if (!awaits(token) || std::any_of(answers_.begin(), answers_.end(), same)) {
        return;
    }
    if (waiter *reader = waiter_for(letter, true)) {
        expect_no_more(token);
        reader->letter = std::move(letter);
        reader->end();
        return;
    }
    answers_.push_back(std::move(letter));
}

void mailbox::fail(uint32_t token, int error) {
    message news;
    news.token = token;
    news.error = error;
    take_in_answer(std::move(news));
}

void mailbox::fail_all(int error) {
    for (const uint32_t token : std::vector<uint32_t>{awaited_}) {
        fail(token, error);
    }
}

bool mailbox::take_incoming(message &letter) {
    if (incoming_.empty()) {
        return false;
    }
    parcel &oldest = incoming_.front();
    letter = std::move(oldest.letter);
    --oldest.way_in->waiting;
    incoming_.pop_front();
    office_->room_made();
    return true;
}

bool mailbox::take_answer(const selector &selected, message &letter) {
    const auto found = std::find_if(answers_.begin(), answers_.end(),
                                    [&](const message &one) { return wants_answer(selected, one.token); });
    if (found == answers_.end()) {
        return false;
    }
    letter = std::move(*found);
    answers_.erase(found);
    expect_no_more(letter.token);
    return true;
}

bool mailbox::take(const selector &selected, message &letter) {
    return take_answer(selected, letter) || (wants_incoming(selected) && take_incoming(letter));
}

int mailbox::receive(const selector &selected, message &letter) {
    std::unique_lock locked{office_->lock};
    if (closed_) {
        return ECANCELED;
    }
    if (selected.wanted == selector::kind::by_token && !awaits(selected.token)) {
        return EINVAL;
    }
    if (take(selected, letter)) {
        return letter.error;
    }
    if (!selected.may_wait) {
        return EAGAIN;
    }
    waiter self{.selected = selected, .letter = letter};
    waiters_.push_back(&self);
    const int error = spin(self, locked) ? self.error : sleep(self, locked);
    return error != 0 ? error : letter.error;
}

// Without the lock; says whether the wait is over, and otherwise takes the lock again.
bool mailbox::spin(waiter &self, std::unique_lock<std::mutex> &locked) {
    const uint32_t turns = habit_.turns();
    if (turns == 0) {
        return false;
    }
    locked.unlock();
    const bool ended = self.spin(turns);
    habit_.learn(turns, ended);
    if (!ended) {
        locked.lock();
    }
    return ended;
}

int mailbox::sleep(waiter &self, std::unique_lock<std::mutex> &locked) {
    const auto ended = [&] { return self.ended.load(std::memory_order_relaxed); };
    const time_point deadline = self.selected.limit.count() == 0 ? never : clock_now() + self.selected.limit;
    self.asleep = true;
    if (!self.timer.wait(self.wake, locked, deadline, ended)) {
        give_up(self);
    }
    return self.error;
}

void mailbox::give_up(waiter &self) {
    waiters_.erase(std::find(waiters_.begin(), waiters_.end(), &self));
    self.error = ETIMEDOUT;
    if (self.selected.wanted == selector::kind::by_token) {
        expect_no_more(self.selected.token);
    }
}

std::vector<message> mailbox::close() {
    closed_ = true;
    for (waiter *one : waiters_) {
        one->error = ECANCELED;
        one->end();
    }
    waiters_.clear();
    std::vector<message> unread;
    for (parcel &one : incoming_) {
        unread.push_back(std::move(one.letter));
    }
    for (parcel &one : behind_the_next_) {
        unread.push_back(std::move(one.letter));
    }
    std::move(answers_.begin(), answers_.end(), std::back_inserter(unread));
    incoming_.clear();
    behind_the_next_.clear();
    answers_.clear();
    awaited_.clear();
    office_->room_made();
    return unread;
}

} // namespace ribkit::platform
