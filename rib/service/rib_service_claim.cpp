// The service's part in finding out whether it is the only RIB at its address, before it is said to answer and for as
// long as somebody may still have begun at the same moment.
#include "rib/service/rib_service.h"

#include "rib_codes.h"

#include <algorithm>

namespace ribkit::rib {

namespace {

using namespace std::chrono_literals;

constexpr auto settling = 5s;         ///< from then on a RIB stays in any case
constexpr auto first_answers = 250ms; ///< to be waited for; a later one ends the RIB all the same

} // namespace

/// @return whether nobody was there
bool rib_service::stand_by() {
    std::unique_lock locked(lock_);
    return !stopping_.wait_for(locked, first_answers, [this] { return given_way_.load(); });
}

rib_claim rib_service::claim_now() const {
    rib_claim now = claim_;
    now.settled = std::chrono::steady_clock::now() - start_ >= settling;
    return now;
}

void rib_service::send_claim() {
    if (claims_left_ == 0) {
        return;
    }
    claims_left_--;
    const auto claim = encode(claim_now());
    qip_ref sent{};
    if (qip_send(handle_.number(), &ribkit_rib_address, RIBKIT_OPCODE_CLAIM, claim.data(), claim.size(), &sent, nullptr,
                 nullptr) == 0) {
        claims_open_.push_back(qip_rr_token_get(&sent));
        qip_drop(handle_.number(), &sent);
    }
}

// The own claim comes back, since we listen where it goes; it is not answered.
bytes rib_service::hear_claim(const request &asked) {
    const auto heard = decode_claim(asked.payload);
    if (!heard) {
        return refuse(asked, RIB_BAD_PARAMETERS, "a claim of another size");
    }
    const rib_claim mine = claim_now();
    if (heard->is_of(mine)) {
        return {};
    }
    step(step_after_claim(mine, *heard));
    const auto told = encode(mine);
    return {told.begin(), told.end()};
}

bool rib_service::is_answer_to_claim(const qip_ref &ref) const {
    return qip_opcode_get(&ref) == 0 && qip_sender_get(&ref) == 0 && qip_payload_size(&ref) == RIBKIT_CLAIM_SIZE &&
           std::find(claims_open_.begin(), claims_open_.end(), qip_rr_token_get(&ref)) != claims_open_.end();
}

void rib_service::hear_answer(const qip_ref &ref) {
    std::erase(claims_open_, qip_rr_token_get(&ref));
    const auto answer = decode_claim({static_cast<const uint8_t *>(qip_payload_get(&ref)), qip_payload_size(&ref)});
    if (answer) {
        step(step_after_answer(claim_now(), *answer));
    }
}

void rib_service::step(claim_step next) {
    if (next == claim_step::ask_again) {
        send_claim();
    } else if (next == claim_step::give_way) {
        {
            const std::scoped_lock locked(lock_);
            given_way_ = true;
            stopping_.notify_all();
        }
        if (gave_way_) {
            gave_way_();
        }
    }
}

} // namespace ribkit::rib
