// A claim as bytes and back, and what follows from one that is heard or answered.
#include "tools/rib_claim.h"

#include "codec/bytes.h"

#include <chrono>
#include <random>

using namespace ribkit::codec;

namespace ribkit::tools {

namespace {

void store(uint8_t *at, uint64_t value) {
    store32<std::endian::big>(at, static_cast<uint32_t>(value >> 32));
    store32<std::endian::big>(at + 4, static_cast<uint32_t>(value));
}

uint64_t load(const uint8_t *at) { return uint64_t{be32(at)} << 32 | be32(at + 4); }

} // namespace

rib_claim rib_claim::made_now() {
    const auto since_1970 = std::chrono::system_clock::now().time_since_epoch();
    std::random_device draw;
    return {false, static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(since_1970).count()),
            uint64_t{draw()} << 32 | draw()};
}

std::array<uint8_t, RIBKIT_CLAIM_SIZE> encode(const rib_claim &claim) {
    std::array<uint8_t, RIBKIT_CLAIM_SIZE> bytes{};
    store32<std::endian::big>(bytes.data(), claim.settled ? 1 : 0);
    store(bytes.data() + 4, claim.started);
    store(bytes.data() + 12, claim.drawn);
    return bytes;
}

std::optional<rib_claim> decode_claim(std::span<const uint8_t> bytes) {
    if (bytes.size() != RIBKIT_CLAIM_SIZE) {
        return std::nullopt;
    }
    return rib_claim{be32(bytes.data()) != 0, load(bytes.data() + 4), load(bytes.data() + 12)};
}

claim_step step_after_claim(const rib_claim &mine, const rib_claim &heard) {
    return !mine.settled && heard.is_before(mine) ? claim_step::ask_again : claim_step::nothing;
}

claim_step step_after_answer(const rib_claim &mine, const rib_claim &answer) {
    return answer.settled || answer.is_before(mine) ? claim_step::give_way : claim_step::ask_again;
}

} // namespace ribkit::tools
