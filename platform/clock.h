// The time that waits and delays are measured in: the real one, or a virtual one that stands still while any thread
// that uses the service works, and jumps to the next deadline when all of them wait. With the virtual one a run of a
// fault script needs no real time and always goes the same way.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace ribkit::platform {

using time_point = std::chrono::steady_clock::time_point;
inline constexpr time_point never = time_point::max();

time_point clock_now();

/// Switches, while no thread is in the service; the virtual clock starts at zero.
void set_virtual_clock(bool on);

/// Makes the calling thread one of those that the virtual clock waits for, until it ends.
void join_clock();

/// One wait of one thread. Whoever ends the wait calls `end` before it notifies, so that time does not jump while the
/// thread wakes up.
class timed_wait {
  public:
    timed_wait() = default;
    timed_wait(const timed_wait &) = delete;
    timed_wait &operator=(const timed_wait &) = delete;
    ~timed_wait() { end(); }

    void begin(time_point deadline);
    void end();

    /// Waits for `done`, at most until the deadline; whether it was done.
    template <typename Done>
    bool wait(std::condition_variable &wake, std::unique_lock<std::mutex> &locked, time_point deadline, Done done) {
        begin(deadline);
        if (counted_) {
            while (!done()) {
                if (wake.wait_for(locked, look_around, done)) {
                    break;
                }
                if (expired()) {
                    return false;
                }
            }
            return true;
        }
        if (deadline == never) {
            wake.wait(locked, done);
            return true;
        }
        return wake.wait_until(locked, deadline, done);
    }

  private:
    static constexpr std::chrono::milliseconds look_around{1};

    bool expired();

    bool counted_ = false; // among those who wait on the virtual clock; set before others can know the wait
    bool waiting_ = false; // guarded by the clock's lock
    uint64_t turn_ = 0;
    time_point deadline_ = never;
};

} // namespace ribkit::platform
