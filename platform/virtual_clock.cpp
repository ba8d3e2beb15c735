// Under the virtual clock one thread runs at a time. When all wait, the time moves on to the first that is due.
#include "platform/virtual_clock.h"

#include "platform/descriptor.h"
#include "platform/lasting.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace ribkit::platform {

static constinit lasting<virtual_clock> only_clock;

virtual_clock &virtual_time() { return only_clock.it; }

thread_turn::~thread_turn() { virtual_time().leave(*this); }

namespace {

// By the letter behind the name in "1234 (name) S ..."; a thread that has ended sleeps, too.
bool sleeps(pid_t thread) {
    std::array<char, 64> path{};
    std::snprintf(path.data(), path.size(), "/proc/self/task/%d/stat", thread);
    const descriptor file{open(path.data(), O_RDONLY | O_CLOEXEC)};
    std::array<char, 512> text{};
    const ssize_t size = read(file.get(), text.data(), text.size());
    const std::string_view line{text.data(), static_cast<size_t>(std::max<ssize_t>(size, 0))};
    return line.empty() || line.substr(line.rfind(')'), 3) == ") S";
}

} // namespace

time_point virtual_clock::now() {
    const std::scoped_lock lock{lock_};
    return now_;
}

bool virtual_clock::set(bool on) {
    const std::scoped_lock lock{lock_};
    if (on && claims_on_real_time_ != 0) {
        return false;
    }
    in_force = on;
    now_ = {};
    holder_ = nullptr;
    ready_.for_each([](thread_turn &one) {
        one.leave();
        one.handed_over.notify_one();
    });
    ahead_.drop_actions();
    return true;
}

bool virtual_clock::claim_real_time() {
    const std::scoped_lock lock{lock_};
    claims_on_real_time_ += in_force ? 0 : 1;
    return !in_force;
}

void virtual_clock::release_real_time() {
    const std::scoped_lock lock{lock_};
    --claims_on_real_time_;
}

void virtual_clock::take_turn(thread_turn &self) {
    take_part(self);
    std::unique_lock locked{lock_};
    await_turn(locked, self);
}

void virtual_clock::take_part(thread_turn &self) {
    const std::scoped_lock lock{lock_};
    if (in_force && holder_ != &self && !self.joined()) {
        ready_.push_back(self);
    }
}

void virtual_clock::leave(thread_turn &self) {
    std::unique_lock locked{lock_};
    self.leave();
    if (holder_ == &self) {
        holder_ = nullptr;
        hand_over(locked, self);
    }
}

void virtual_clock::begin(timed_wait &wait, time_point deadline, thread_turn &self) {
    const std::scoped_lock lock{lock_};
    wait.waiting_ = &self;
    ahead_.add(deadline, wait);
}

void virtual_clock::end(timed_wait &wait) {
    const std::scoped_lock lock{lock_};
    if (wait.waiting_ != nullptr) {
        stop(wait);
    }
}

void virtual_clock::block(thread_turn &self) {
    std::unique_lock locked{lock_};
    if (holder_ == &self) {
        holder_ = nullptr;
    }
    await_turn(locked, self);
}

bool virtual_clock::put_off(std::chrono::milliseconds delay, std::unique_ptr<late_action> &action) {
    const std::scoped_lock lock{lock_};
    if (!in_force) {
        return false;
    }
    ahead_.add(now_ + delay, *action.release());
    return true;
}

void virtual_clock::stop(occasion &wait) {
    wait.leave();
    if (in_force) {
        ready_.push_back(*wait.waiting_);
    }
    wait.waiting_ = nullptr;
}

// With nobody at work: the next in turn takes the baton, after a jump of the time where none is ready.
void virtual_clock::hand_over(std::unique_lock<std::mutex> &locked, thread_turn &self) {
    while (holder_ == nullptr && (!ready_.empty() || ahead_.next_time() != never)) {
        if (ready_.empty()) {
            jump(locked, self);
            continue;
        }
        holder_ = &ready_.front();
        holder_->leave();
        ++moves_;
        holder_->handed_over.notify_one();
    }
}

void virtual_clock::jump(std::unique_lock<std::mutex> &locked, thread_turn &self) {
    occasion &next = ahead_.next();
    now_ = next.when_;
    if (next.waiting_ != nullptr) {
        stop(next);
        return;
    }
    auto due = time_line::take(next);
    holder_ = &self;
    locked.unlock();
    due->happen();
    due.reset();
    locked.lock();
    holder_ = nullptr;
}

void virtual_clock::await_turn(std::unique_lock<std::mutex> &locked, thread_turn &self) {
    uint32_t looks = 0;
    for (uint64_t seen = moves_; in_force && holder_ != &self; seen = moves_) {
        hand_over(locked, self);
        if (holder_ == &self) {
            break;
        }
        self.handed_over.wait_for(locked, look_around);
        looks = holder_ != nullptr && seen == moves_ && sleeps(holder_->thread) ? looks + 1 : 0;
        if (looks == most_looks) {
            holder_ = nullptr;
        }
    }
    ++moves_;
}

} // namespace ribkit::platform
