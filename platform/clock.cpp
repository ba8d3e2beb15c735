#include "platform/clock.h"

#include <algorithm>
#include <atomic>
#include <set>
#include <utility>

namespace ribkit::platform {

namespace {

using real_clock = std::chrono::steady_clock;

// A thread that left the service for good without ending must not stop the time for ever.
constexpr std::chrono::milliseconds longest_standstill{250};

struct virtual_clock {
    std::mutex lock;
    std::set<std::pair<time_point, uint64_t>> waits; // deadline, and the order in which they began
    time_point now{};
    real_clock::time_point last_move{};
    uint32_t threads = 0;
    uint64_t turns = 0;
};

// Never destroyed: threads may still wait when the process ends.
virtual_clock &virtual_time() {
    static auto &clock = *new virtual_clock;
    return clock;
}

std::atomic<bool> is_virtual{false};

struct membership {
    bool joined = false;

    ~membership() {
        if (joined) {
            virtual_clock &clock = virtual_time();
            const std::scoped_lock lock{clock.lock};
            --clock.threads;
        }
    }
};

thread_local membership own_membership;

} // namespace

time_point clock_now() {
    if (!is_virtual.load(std::memory_order_relaxed)) {
        return real_clock::now();
    }
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    return clock.now;
}

void set_virtual_clock(bool on) {
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    clock.now = {};
    is_virtual = on;
}

void join_clock() {
    if (!is_virtual.load(std::memory_order_relaxed) || own_membership.joined) {
        return;
    }
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    own_membership.joined = true;
    ++clock.threads;
}

void timed_wait::begin(time_point deadline) {
    if (!is_virtual.load(std::memory_order_relaxed)) {
        return;
    }
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    counted_ = waiting_ = true;
    deadline_ = deadline;
    turn_ = ++clock.turns;
    clock.waits.emplace(deadline_, turn_);
    clock.last_move = real_clock::now();
}

void timed_wait::end() {
    if (!counted_) {
        return;
    }
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    if (std::exchange(waiting_, false)) {
        clock.waits.erase({deadline_, turn_});
        clock.last_move = real_clock::now();
    }
}

// The first deadline is reached once everybody waits: its owner moves the time there.
bool timed_wait::expired() {
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    const bool all_wait =
        clock.waits.size() >= clock.threads || real_clock::now() - clock.last_move > longest_standstill;
    if (!waiting_ || deadline_ == never || !all_wait || clock.waits.begin()->second != turn_) {
        return false;
    }
    clock.now = std::max(clock.now, deadline_);
    clock.waits.erase(clock.waits.begin());
    waiting_ = false;
    clock.last_move = real_clock::now();
    return true;
}

} // namespace ribkit::platform
