// The time that waits and delays are measured in: the real one, or a virtual one, under which the threads that use the
// service run one at a time, each until it waits, and the time jumps to the next deadline when all of them wait. A run
// of a fault script then needs no real time and always goes the same way.
#pragma once

#include "platform/ring.h"
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

namespace ribkit::platform {

using time_point = std::chrono::steady_clock::time_point;
inline constexpr time_point never = time_point::max();

time_point clock_now();

/// The time of the virtual clock, where it is in force.
std::optional<time_point> virtual_now();

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

/// Under the virtual clock the calling thread counts from now on, behind those that are ready; it goes on all the same
/// until its next call.
void take_part();

/// Waits so long.
void pause_for(std::chrono::milliseconds time);

/// What the time brings: the end of a wait or an action, in the order in which they come.
class occasion : public ring_place {
  protected:
    occasion() = default;
    ~occasion() = default;

  private:
    friend class time_line;
    friend class virtual_clock;
    friend class timed_wait;

    time_point when_ = never;
    struct thread_turn *waiting_ = nullptr; // who waits; null for an action, and when the wait has ended
};

/// Something to be done later. It is made while things may still fail; to put it off and to do it cannot.
class late_action : public occasion {
  public:
    late_action();
    virtual ~late_action() = default;

    virtual void happen() noexcept = 0;
};

/// Under the virtual clock it happens on the thread that makes the time jump, else on a thread of its own.
void do_later(std::chrono::milliseconds delay, std::unique_ptr<late_action> action) noexcept;

/// One wait of one thread. Whoever ends it calls `end`, and notifies.
class timed_wait : private occasion {
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
    friend class virtual_clock;

    bool begin(time_point deadline); // whether it waits on the virtual clock
    static void block();

    bool counted_ = false; // has begun on the virtual clock
};

} // namespace ribkit::platform
