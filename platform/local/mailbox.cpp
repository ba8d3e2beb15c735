// A waiting thread spins for a moment before it sleeps: an answer that comes at once then costs no wake-up. Whoever
// hands it a message touches the waiter last by setting `ended`, so that a spinning thread may leave without the lock.
#include "platform/local/mailbox.h"

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

struct mailbox::waiter : ring_place {
    waiter(const selector &wanted, message &filled) : selected(wanted), letter(filled) {}

    const selector &selected;
    message &letter;
    int error = 0;
    bool asleep = false;
    std::atomic<bool> ended{false};
    std::condition_variable wake{};
    timed_wait timer{};

    void take(message &arrived) {
        leave();
        letter = std::move(arrived);
        end();
    }

    // It has left the ring before.
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

// False where no thread waits for what is sent here.
bool mailbox::hand_to_reader(message &letter) noexcept {
    waiter *reader = waiters_.find([](const waiter &one) { return wants_incoming(one.selected); });
    if (reader != nullptr) {
        reader->take(letter);
    }
    return reader != nullptr;
}

void mailbox::take_in(packet &one) noexcept {
    parcel &first = one.parcels.front();
    if (first.way_in == nullptr) {
        take_in_answer(first.letter);
    } else if (!closed_ && !hand_to_reader(first.letter)) {
        queue_.put(one);
        return;
    }
    queue_.recycle(one);
}

int mailbox::expect(uint32_t token) {
    if (awaited_.size() >= most_awaited) {
        return ENOBUFS;
    }
    awaited_.push_back(token);
    try {
        answers_.reserve(awaited_.capacity());
    } catch (...) {
        awaited_.pop_back();
        throw;
    }
    return 0;
}

uint32_t mailbox::new_token() {
    do {
        ++last_token_;
    } while (last_token_ == 0 || awaits(last_token_));
    return last_token_;
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
    std::erase_if(answers_, [=](const message &one) { return one.token == token; });
}

void mailbox::take_in_answer(message &letter) noexcept {
    const uint32_t token = letter.token;
    const auto same = [&](const message &one) { return one.token == token; };
    if (closed_ || !awaits(token) || std::any_of(answers_.begin(), answers_.end(), same)) {
        return;
    }
    if (waiter *reader = waiters_.find([&](const waiter &one) { return wants_answer(one.selected, token); })) {
        expect_no_more(token);
        reader->take(letter);
        return;
    }
    answers_.push_back(std::move(letter));
}

void mailbox::fail(uint32_t token, int error) noexcept {
    message news;
    news.token = token;
    news.error = error;
    take_in_answer(news);
}

// A token whose wait has ended gives its place to the last one.
void mailbox::fail_all(int error) noexcept {
    for (size_t place = 0; place < awaited_.size();) {
        const size_t before = awaited_.size();
        fail(awaited_[place], error);
        place += awaited_.size() == before ? 1 : 0;
    }
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
    return take_answer(selected, letter) || (wants_incoming(selected) && queue_.take(letter));
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
    waiter self{selected, letter};
    waiters_.push_back(self);
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
    self.leave();
    self.error = ETIMEDOUT;
    if (self.selected.wanted == selector::kind::by_token) {
        expect_no_more(self.selected.token);
    }
}

mailbox::leftovers mailbox::close() noexcept {
    closed_ = true;
    waiters_.for_each([](waiter &one) {
        one.leave();
        one.error = ECANCELED;
        one.end();
    });
    leftovers unread{queue_.emptied(), std::move(behind_the_next_), std::move(answers_)};
    awaited_.clear();
    office_->room_made_for_all();
    return unread;
}

} // namespace ribkit::platform
