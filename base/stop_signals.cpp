// One thread waits for the signals all the time, whatever the others are blocked in. Whether they are at work is seen
// from the processor time that they use.
#include "base/stop_signals.h"

#include <condition_variable>
#include <ctime>
#include <mutex>
#include <pthread.h>
#include <unistd.h>
#include <utility>

namespace ribkit::base {

namespace {

sigset_t both_signals() {
    sigset_t both;
    sigemptyset(&both);
    sigaddset(&both, SIGINT);
    sigaddset(&both, SIGTERM);
    return both;
}

int64_t processor_time() {
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return int64_t{used.tv_sec} * 1'000'000'000 + used.tv_nsec;
}

[[noreturn]] void die_of(int signal) {
    const sigset_t both = both_signals();
    std::signal(signal, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &both, nullptr);
    raise(signal);
    _exit(1); // not reached
}

[[noreturn]] void die_unless_at_work(int signal) {
    constexpr timespec tick{0, 100'000'000};
    constexpr int64_t work_in_a_tick = 1'000'000;
    constexpr int most_idle_ticks = 6;
    const sigset_t both = both_signals();
    int64_t used = processor_time();
    for (int idle = 0; idle < most_idle_ticks;) {
        if (sigtimedwait(&both, nullptr, &tick) > 0) {
            break;
        }
        const int64_t before = std::exchange(used, processor_time());
        idle = used - before > work_in_a_tick ? 0 : idle + 1;
    }
    die_of(signal);
}

} // namespace

struct stop_signals::events {
    std::mutex lock;
    std::condition_variable changed;
    bool came = false;  ///< a signal, or the end of waiting for one
    bool heard = false; ///< a signal
    bool ended = false;

    /// @return whether somebody still wants to know
    bool announce(bool signal) {
        const std::scoped_lock locked(lock);
        if (ended) {
            return false;
        }
        came = true;
        heard |= signal;
        changed.notify_all();
        return true;
    }

    /// @return whether it came; false where nobody wants to know any more
    bool wait(const bool &over) {
        std::unique_lock locked(lock);
        changed.wait(locked, [&] { return came || over; });
        return !over;
    }

    void give_up(bool &over) {
        const std::scoped_lock locked(lock);
        over = true;
        changed.notify_all();
    }

    /// @return whether a signal had come
    bool end() {
        const std::scoped_lock locked(lock);
        ended = true;
        return heard;
    }
};

void sleep_stoppably(std::chrono::milliseconds pause) {
    const sigset_t stops = both_signals();
    sigset_t before;
    pthread_sigmask(SIG_UNBLOCK, &stops, &before);
    std::this_thread::sleep_for(pause);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

stop_signals::stop_signals() : events_(std::make_shared<events>()) {
    const sigset_t both = both_signals();
    pthread_sigmask(SIG_BLOCK, &both, &before_);
    watching_ = std::thread([all = events_] {
        const sigset_t waited_for = both_signals();
        int signal = 0;
        sigwait(&waited_for, &signal);
        if (all->announce(true)) {
            die_unless_at_work(signal);
        }
    });
}

stop_signals::~stop_signals() {
    const bool heard = events_->end();
    if (heard) {
        watching_.detach();
    } else {
        pthread_kill(watching_.native_handle(), SIGINT);
        watching_.join();
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void stop_signals::wait() const { events_->wait(false); }

void stop_signals::end_wait() const { events_->announce(false); }

stop_call::stop_call(const stop_signals &signals, std::function<void()> stop)
    : events_(signals.events_), calling_([this, stop = std::move(stop)] {
          if (events_->wait(over_)) {
              stop();
          }
      }) {}

stop_call::~stop_call() {
    events_->give_up(over_);
    calling_.join();
}

} // namespace ribkit::base
