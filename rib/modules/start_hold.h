// How long modules keep what they have when the RIB starts with empty tables: until clients have brought their routes
// back, as far as that can be known. What they forward meanwhile is what the RIB told them before it stopped.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

namespace ribkit::rib {

/// Times are microseconds of a clock that passes evenly.
class start_hold {
  public:
    /// Clients that have sent nothing for so long have brought everything back.
    static constexpr std::chrono::microseconds quiet = std::chrono::milliseconds(500);

    /// @param longest how long modules keep what they have at most; 0: not at all
    start_hold(uint64_t now, std::chrono::microseconds longest) : ends_(now + static_cast<uint64_t>(longest.count())) {}

    /// A client has sent routes.
    void hear_update(uint64_t now) {
        if (!is_over(now)) {
            quiet_at_ = now + static_cast<uint64_t>(quiet.count());
        }
    }
    /// When it is over, if nothing is heard any more.
    [[nodiscard]] std::optional<uint64_t> due() const { return std::min(ends_, quiet_at_); }
    [[nodiscard]] bool is_over(uint64_t now) const { return now >= *due(); }

  private:
    uint64_t ends_;
    uint64_t quiet_at_ = UINT64_MAX;
};

} // namespace ribkit::rib
