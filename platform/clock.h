// The time that waits and delays are measured in: the real one, or a virtual one, under which the threads that use the
// service run one at a time, each until it waits, and the time jumps to the next deadline when all of them wait. A run
// of a fault script then needs no real time and always goes the same way.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

namespace ribkit::platform {

using time_point = std::chrono::steady_clock::time_point;
inline constexpr time_point never = time_point::max();

time_point clock_now();

/// Switches; the virtual clock starts at zero. What waits at that moment goes on under the new clock when it wakes.
/// False, and nothing happens, where the virtual clock is asked for while real time is claimed.
bool set_virtual_clock(bool on);

/// For whoever deals with a world that keeps real time: false under the virtual clock, which otherwise cannot be
/// switched on before as many calls of `release_real_time`.
bool claim_real_time();
void release_real_time();

/// At every call of the service: under the virtual clock the calling thread waits for its turn, and from now on counts.
void take_turn();

/// Under the virtual clock the calling thread gives up its turn, and does not count until its next call.
void step_aside();

/// Does something later: under the virtual clock on the thread that makes the time jump, else on a thread of its own.
void do_later(std::chrono::milliseconds delay, std::function<void()> action);

/// One wait of one thread. Whoever ends it calls `end`, and notifies.
class timed_wait {
  public:
    timed_wait() = default;
    timed_wait(const timed_wait &) = delete;
    timed_wait &operator=(const timed_wait &) = delete;
    ~timed_wait() { end(); }

    void end();

    /// Waits for `done`, at most until the deadline; whether it was done.
    template <typename Done>
    bool wait(std::condition_variable &wake, std::unique_lock<std::mutex> &locked, time_point deadline, Done done) {
        if (begin(deadline)) {
            locked.unlock();
            block();
            locked.lock();
            if (deadline != never || done()) {
                return done();
            }
        }
        if (deadline == never) {
            wake.wait(locked, done);
            return true;
        }
        return wake.wait_until(locked, deadline, done);
    }

  private:
    friend struct virtual_clock;

    bool begin(time_point deadline); // whether it waits on the virtual clock
    static void block();

    bool counted_ = false;                 // has begun on the virtual clock
    struct thread_turn *thread_ = nullptr; // null while it does not wait there; guarded by the clock's lock
    time_point deadline_ = never;
    uint64_t number_ = 0;
};

} // namespace ribkit::platform
