// A service's thread, whose start and end are in order under a virtual clock: no time passes before it takes part, and
// whoever ends it goes on at a moment that is the same every time.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace ribkit::bus {

class service_thread {
  public:
    service_thread() = default;
    service_thread(const service_thread &) = delete;
    service_thread &operator=(const service_thread &) = delete;
    ~service_thread() { join(); }

    /// It runs, and counts, when this returns. Throws std::system_error.
    /// @param serve throws nothing
    void start(std::function<void()> serve);

    /// Until it has ended, which somebody has made it do; harmless where it does not run.
    void join();

  private:
    std::atomic<bool> takes_part_{false}, ended_{false};
    std::thread thread_;
};

} // namespace ribkit::bus
