// Spinning costs the other thread its processor where both share one, and saves a wake-up where they do not.
#include "platform/spin_habit.h"

#include <algorithm>
#include <thread>

namespace ribkit::platform {

unsigned spin_habit::processors_here() {
    static const unsigned known = std::thread::hardware_concurrency();
    return known;
}

uint32_t spin_habit::turns() {
    if (alone_) {
        return 0;
    }
    const uint32_t wait = waits_.fetch_add(1, std::memory_order_relaxed);
    return wait % probe_every == 0 ? probe : turns_.load(std::memory_order_relaxed);
}

void spin_habit::learn(uint32_t turns, bool helped) {
    if (helped) {
        turns_.store(most, std::memory_order_relaxed);
    } else {
        turns_.store(std::min(turns, most) / 4, std::memory_order_relaxed);
    }
}

} // namespace ribkit::platform
