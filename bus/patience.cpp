// Pauses double up to a second, and leave time for an attempt after the last.
#include "bus/patience.h"

#include "ribkit_platform.h"

#include <algorithm>

namespace ribkit::bus {

std::chrono::steady_clock::time_point run_now() {
    return std::chrono::steady_clock::time_point(std::chrono::microseconds(qip_now()));
}

std::optional<std::chrono::milliseconds> patience::next_pause() {
    constexpr milliseconds longest{1000};
    constexpr milliseconds for_an_attempt{100};
    const milliseconds have = left();
    if (have.count() <= 0) {
        return std::nullopt;
    }
    const auto most = have > 2 * for_an_attempt ? have - for_an_attempt : std::max(have / 2, milliseconds{1});
    const auto pause = std::min(pause_, most);
    left_ -= pause;
    pause_ = std::min(2 * pause_, longest);
    return pause;
}

std::chrono::microseconds patience::now() { return std::chrono::microseconds(qip_now()); }

} // namespace ribkit::bus
