// Which of two RIBs stays where both came to listen at one address, as a server lets them: each tells when it started,
// and the earlier one stays. This knows no bus; who asks whom is the service's.
#pragma once

#include "ribkit_rib.h"

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <span>

namespace ribkit::rib {

struct rib_claim {
    bool settled;     ///< has listened for so long that it stays in any case
    uint64_t started; ///< microseconds since 1970
    uint64_t drawn;   ///< at random, where both started in one microsecond

    /// Of one that starts now.
    static rib_claim made_now();

    [[nodiscard]] bool is_of(const rib_claim &other) const { return started == other.started && drawn == other.drawn; }
    [[nodiscard]] bool is_before(const rib_claim &other) const {
        return started != other.started ? started < other.started : drawn < other.drawn;
    }
};

std::array<uint8_t, RIBKIT_CLAIM_SIZE> encode(const rib_claim &claim);
std::optional<rib_claim> decode_claim(std::span<const uint8_t> bytes);

enum class claim_step : unsigned char { nothing, ask_again, give_way };

/// What a RIB does when it hears a claim, besides answering with its own where it is another's. Only an answer makes it
/// give way: that can come from nobody but who listens at the address, too.
claim_step step_after_claim(const rib_claim &mine, const rib_claim &heard);
/// ... and when its own claim is answered. Where others answer, too, only the first arrives: one that changes nothing
/// is asked about again.
claim_step step_after_answer(const rib_claim &mine, const rib_claim &answer);

} // namespace ribkit::rib
