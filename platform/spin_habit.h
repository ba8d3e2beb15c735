// Whether a thread that has to wait should spin before it sleeps, learnt from what helped.
#pragma once

#include <atomic>
#include <cstdint>

namespace ribkit::platform {

/// How long it pays to spin before sleeping: long where spinning helped the last time, not at all where it did not
/// (both threads may share a processor), with a longer try from time to time.
class spin_habit {
  public:
    explicit spin_habit(unsigned processors = processors_here()) : alone_(processors < 2) {}

    uint32_t turns();
    void learn(uint32_t turns, bool helped);

  private:
    static constexpr uint32_t most = 400;
    static constexpr uint32_t probe = 2000; // long enough for the other thread to wake up first
    static constexpr uint32_t probe_every = 512;

    static unsigned processors_here();

    const bool alone_;
    std::atomic<uint32_t> turns_{most};
    std::atomic<uint32_t> waits_{0};
};

} // namespace ribkit::platform
