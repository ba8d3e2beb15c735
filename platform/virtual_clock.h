// The inside of the clock: what the time will bring, and the baton that the threads hand on under the virtual clock.
#pragma once

#include "platform/clock.h"
#include <atomic>
#include <memory>
#include <sys/types.h>
#include <unistd.h>

namespace ribkit::platform {

/// A thread that uses the service, and its place among those that are ready to run.
struct thread_turn : ring_place {
    pid_t thread = gettid();
    std::condition_variable handed_over{}; ///< to it

    thread_turn() = default;
    thread_turn(const thread_turn &) = delete;
    thread_turn &operator=(const thread_turn &) = delete;
    ~thread_turn();
};

/// Occasions by their time, then in the order of their beginning. The actions among them belong to it.
class time_line {
  public:
    [[nodiscard]] bool empty() const { return ahead_.empty(); }
    [[nodiscard]] occasion &next() const { return ahead_.front(); }
    [[nodiscard]] time_point next_time() const { return ahead_.empty() ? never : ahead_.front().when_; }

    void add(time_point when, occasion &one) {
        one.when_ = when;
        ahead_.push_in_order(one, [](const occasion &there, const occasion &made) { return there.when_ > made.when_; });
    }

    static std::unique_ptr<late_action> take(occasion &action) {
        action.leave();
        return std::unique_ptr<late_action>{static_cast<late_action *>(&action)};
    }

    void drop_actions() {
        ahead_.for_each([](occasion &one) {
            if (one.waiting_ == nullptr) {
                take(one).reset();
            }
        });
    }

  private:
    ring<occasion> ahead_;
};

/// The virtual clock is a baton: who holds it runs. It goes to the threads in the order in which their waits ended, and
/// when there is none, to whoever the time reaches first. Nothing here needs memory, so a wait cannot fail.
class virtual_clock {
  public:
    /// A thread that holds the baton and sleeps somewhere else than in the service must not stop the others for ever:
    /// it loses it after so many looks at it. One that wants to run, but is not let by a busy machine, keeps it: a run
    /// has to go the same way there.
    static constexpr std::chrono::milliseconds look_around{50};
    static constexpr uint32_t most_looks = 5;

    std::atomic<bool> in_force{false};

    time_point now();
    bool set(bool on);
    bool claim_real_time();
    void release_real_time();
    void take_turn(thread_turn &self);
    void take_part(thread_turn &self);
    void leave(thread_turn &self);
    void begin(timed_wait &wait, time_point deadline, thread_turn &self);
    void end(timed_wait &wait);
    void block(thread_turn &self);

    /// False, and nothing happens, where real time is in force.
    bool put_off(std::chrono::milliseconds delay, std::unique_ptr<late_action> &action);

  private:
    void stop(occasion &wait);
    void hand_over(std::unique_lock<std::mutex> &locked, thread_turn &self);
    void jump(std::unique_lock<std::mutex> &locked, thread_turn &self);
    void await_turn(std::unique_lock<std::mutex> &locked, thread_turn &self);

    std::mutex lock_;
    time_line ahead_;
    ring<thread_turn> ready_;
    thread_turn *holder_ = nullptr;
    time_point now_{};
    uint64_t moves_ = 0;
    uint32_t claims_on_real_time_ = 0;
};

virtual_clock &virtual_time();

} // namespace ribkit::platform
