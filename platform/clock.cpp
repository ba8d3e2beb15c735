// Which clock is in force, and what is put off: under the real one a thread of its own sees to that.
#include "platform/clock.h"

#include "platform/history.h"
#include "platform/virtual_clock.h"

#include <cstddef>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

namespace ribkit::platform {

using real_clock = std::chrono::steady_clock;

namespace {

thread_local thread_turn own_turn;

bool is_virtual() { return virtual_time().in_force.load(std::memory_order_relaxed); }

class real_delays {
  public:
    /// Starts the thread where it does not run; throws where it cannot.
    void start() {
        const std::scoped_lock lock{mutex_};
        if (!started_) {
            std::thread{[this] { run(); }}.detach();
            started_ = true;
        }
    }

    void add(std::chrono::milliseconds delay, std::unique_ptr<late_action> action) {
        const std::scoped_lock lock{mutex_};
        waiting_.add(real_clock::now() + delay, *action.release());
        changed_.notify_one();
    }

  private:
    [[noreturn]] void run() {
        std::unique_lock locked{mutex_};
        for (;;) {
            const time_point due = waiting_.next_time();
            if (due == never) {
                changed_.wait(locked);
            } else if (real_clock::now() < due) {
                changed_.wait_until(locked, due);
            } else {
                auto first = time_line::take(waiting_.next());
                locked.unlock();
                first->happen();
                first.reset();
                locked.lock();
            }
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    time_line waiting_;
    bool started_ = false;
};

// Never destroyed: its thread lasts as long as the process.
real_delays &delays() {
    alignas(real_delays) static std::byte room[sizeof(real_delays)];
    static auto &real = *new (room) real_delays;
    return real;
}

} // namespace

std::optional<time_point> virtual_now() { return is_virtual() ? std::optional{clock_now()} : std::nullopt; }

time_point clock_now() { return is_virtual() ? virtual_time().now() : real_clock::now(); }

bool set_virtual_clock(bool on) { return virtual_time().set(on); }

bool claim_real_time() { return virtual_time().claim_real_time(); }

void release_real_time() { virtual_time().release_real_time(); }

void take_turn() {
    if (is_virtual()) {
        virtual_time().take_turn(own_turn);
    }
}

void step_aside() {
    if (is_virtual()) {
        virtual_time().leave(own_turn);
    }
}

void take_part() {
    if (is_virtual()) {
        virtual_time().take_part(own_turn);
    }
}

void pause_for(std::chrono::milliseconds time) {
    std::mutex alone;
    std::condition_variable never_woken;
    std::unique_lock locked{alone};
    timed_wait{}.wait(never_woken, locked, clock_now() + time, [] { return false; });
}

late_action::late_action() {
    if (!is_virtual()) {
        delays().start();
    }
}

// The clock may have been switched since the action was made; where no thread can be had then, the next one has to do.
void do_later(std::chrono::milliseconds delay, std::unique_ptr<late_action> action) noexcept {
    if (virtual_time().put_off(delay, action)) {
        return;
    }
    delays().add(delay, std::move(action));
    try {
        delays().start();
    } catch (const std::system_error &) {
        record_event("no thread for what is late");
    }
}

bool timed_wait::begin(time_point deadline) {
    counted_ = is_virtual();
    if (counted_) {
        virtual_time().begin(*this, deadline, own_turn);
    }
    return counted_;
}

void timed_wait::end() {
    if (counted_) {
        virtual_time().end(*this);
    }
}

void timed_wait::block() { virtual_time().block(own_turn); }

} // namespace ribkit::platform
