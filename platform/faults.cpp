// The script, and the one thread that delivers what it delays; it is started by the first delay.
#include "platform/faults.h"

#include "platform/clock.h"

#include <atomic>
#include <map>
#include <memory>
#include <thread>

namespace ribkit::platform {

namespace {

std::atomic<fault_script *> in_force{nullptr};

class delayed_actions {
  public:
    void add(uint32_t milliseconds, std::function<void()> action) {
        const time_point due = clock_now() + std::chrono::milliseconds{milliseconds};
        std::unique_lock locked{mutex_};
        waiting_.emplace(due, std::move(action)); // those due at one time keep their order
        if (!started_) {
            started_ = true;
            std::thread{[this] { run(); }}.detach();
        }
        rouse(locked);
    }

    /// The thread goes on with the clock that was switched to.
    void clock_changed() {
        std::unique_lock locked{mutex_};
        if (started_) {
            rouse(locked);
        }
    }

  private:
    // Returns once the thread has joined the clock: until it waits again the time stands still.
    void rouse(std::unique_lock<std::mutex> &locked) {
        changed_ = true;
        idle_.end();
        wake_.notify_one();
        joined_.wait(locked, [this] { return !changed_; });
    }

    void run() {
        std::unique_lock locked{mutex_};
        for (;;) {
            join_clock();
            changed_ = false;
            joined_.notify_all();
            const time_point due = waiting_.empty() ? never : waiting_.begin()->first;
            const bool another = idle_.wait(wake_, locked, due, [this] { return changed_; });
            idle_.end();
            if (!another) {
                const auto first = waiting_.extract(waiting_.begin());
                locked.unlock();
                first.mapped()();
                locked.lock();
            }
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable joined_;
    std::multimap<time_point, std::function<void()>> waiting_;
    timed_wait idle_;
    bool changed_ = false;
    bool started_ = false;
};

// Never destroyed: its thread lasts as long as the process.
delayed_actions &later() {
    static auto &actions = *new delayed_actions;
    return actions;
}

} // namespace

void set_faults(std::unique_ptr<fault_script> script) {
    set_virtual_clock(script != nullptr && script->wants_virtual_clock());
    later().clock_changed();
    delete in_force.exchange(script.release());
}

fault_script *faults() { return in_force.load(std::memory_order_acquire); }

void do_later(uint32_t milliseconds, std::function<void()> action) { later().add(milliseconds, std::move(action)); }

} // namespace ribkit::platform
