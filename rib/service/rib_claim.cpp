// A claim as bytes and back, and what follows from one that is heard or answered.
#include "rib/service/rib_claim.h"

#include "codec/writer.h"
#include "protocol/claim.h"

#include <chrono>
#include <random>

using namespace ribkit::codec;

namespace ribkit::rib {

namespace {

uint32_t high(uint64_t number) { return static_cast<uint32_t>(number >> 32); }
uint32_t low(uint64_t number) { return static_cast<uint32_t>(number); }
uint64_t joined(uint32_t high, uint32_t low) { return uint64_t{high} << 32 | low; }

} // namespace

rib_claim rib_claim::made_now() {
    const auto since_1970 = std::chrono::system_clock::now().time_since_epoch();
    std::random_device draw;
    return {false, static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(since_1970).count()),
            uint64_t{draw()} << 32 | draw()};
}

std::array<uint8_t, RIBKIT_CLAIM_SIZE> encode(const rib_claim &claim) {
    std::array<uint8_t, RIBKIT_CLAIM_SIZE> bytes{};
    const writer<protocol::claim> words(bytes);
    words.set<"settled">(claim.settled ? 1U : 0U);
    words.set<"started_high">(high(claim.started)).set<"started_low">(low(claim.started));
    words.set<"drawn_high">(high(claim.drawn)).set<"drawn_low">(low(claim.drawn));
    return bytes;
}

std::optional<rib_claim> decode_claim(std::span<const uint8_t> bytes) {
    if (bytes.size() != RIBKIT_CLAIM_SIZE) {
        return std::nullopt;
    }
    const view<protocol::claim> words(bytes.data());
    return rib_claim{words.get<"settled">() != 0, joined(words.get<"started_high">(), words.get<"started_low">()),
                     joined(words.get<"drawn_high">(), words.get<"drawn_low">())};
}

claim_step step_after_claim(const rib_claim &mine, const rib_claim &heard) {
    return !mine.settled && heard.is_before(mine) ? claim_step::ask_again : claim_step::nothing;
}

claim_step step_after_answer(const rib_claim &mine, const rib_claim &answer) {
    return answer.settled || answer.is_before(mine) ? claim_step::give_way : claim_step::ask_again;
}

} // namespace ribkit::rib
