// How long one tries again: the pauses between attempts double, and end when patience does.
#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace ribkit {

class pauses {
  public:
    explicit pauses(std::chrono::milliseconds patience) : left_(patience) {}

    /// The pause before the next attempt; none where patience is at its end.
    std::optional<std::chrono::milliseconds> next() {
        constexpr std::chrono::milliseconds longest{1000};
        if (left_.count() <= 0) {
            return std::nullopt;
        }
        const auto pause = std::min(left_, pause_);
        left_ -= pause;
        pause_ = std::min(2 * pause_, longest);
        taken_++;
        return pause;
    }

    /// Whether there was one pause so far.
    [[nodiscard]] bool first() const { return taken_ == 1; }

  private:
    std::chrono::milliseconds left_;
    std::chrono::milliseconds pause_{50};
    int taken_ = 0;
};

} // namespace ribkit
