// Ctrl-C, and what a service manager sends, as a call instead of a sudden end; and as a sudden end where the process
// does not come to its end by itself.
#pragma once

#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>

namespace ribkit::base {

/// Made before any other thread, so that no thread dies of the signals SIGINT and SIGTERM. After the first one the
/// process is given time as long as it is at work; where it has not been for most of a second, because nobody reads
/// what it prints, or when a second signal comes, it dies of the signal.
class stop_signals {
  public:
    stop_signals();
    stop_signals(const stop_signals &) = delete;
    stop_signals &operator=(const stop_signals &) = delete;
    ~stop_signals();

    /// Waits for a signal, or for end_wait.
    void wait() const;
    void end_wait() const;

  private:
    friend class stop_call;
    struct events;

    sigset_t before_{};
    std::shared_ptr<events> events_;
    std::thread watching_; ///< goes on after this object once a signal has come
};

/// A call that a signal causes, on a thread of its own; once. None goes on after this object, so it is made behind what
/// it calls.
class stop_call {
  public:
    stop_call(const stop_signals &signals, std::function<void()> stop);
    stop_call(const stop_call &) = delete;
    stop_call &operator=(const stop_call &) = delete;
    ~stop_call();

  private:
    std::shared_ptr<stop_signals::events> events_;
    bool over_ = false; ///< guarded by the events' lock
    std::thread calling_;
};

/// Sleeps, and lets SIGINT and SIGTERM end the process meanwhile, even where they are kept for somebody.
void sleep_stoppably(std::chrono::milliseconds pause);

} // namespace ribkit::base
