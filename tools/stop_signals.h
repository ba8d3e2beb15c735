// Ctrl-C, and what a service manager sends, as a call instead of a sudden end.
#pragma once

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

namespace ribkit {

/// Made before any other thread, so that no thread dies of the signals SIGINT and SIGTERM.
class stop_signals {
  public:
    stop_signals();
    stop_signals(const stop_signals &) = delete;
    stop_signals &operator=(const stop_signals &) = delete;
    ~stop_signals();

    /// Calls `stop` on another thread when a signal comes; once.
    void call(std::function<void()> stop);

    /// Waits for a signal.
    void wait() const;

  private:
    sigset_t signals_{};
    sigset_t before_{};
    std::atomic<bool> ended_{false};
    std::thread waiting_;
};

/// Sleeps, and lets SIGINT and SIGTERM end the process meanwhile, even where they are kept for somebody.
void sleep_stoppably(std::chrono::milliseconds pause);

} // namespace ribkit
