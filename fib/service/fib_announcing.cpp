// How the RIB comes to know of a module. One message is on its way at a time; what changes meanwhile is told after it.
// Whoever wants to know of other formats has every RIB asked for its own first, each time that one is found.
#include "bus/history.h"
#include "fib/service/fib_service.h"
#include "protocol/fib/fib_records.h"
#include "protocol/route_messages.h"
#include "protocol/wire_digests.h"
#include "rib_check.h"
#include "rib_codes.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"

#include <new>

namespace ribkit::fib {

namespace {

constexpr uint64_t second = 1'000'000; ///< in microseconds
constexpr uint64_t told_again = 10 * second;
constexpr uint64_t tried_again = second;
constexpr uint64_t answer_limit = 5 * second;

/// Whether the RIB has taken what it was told.
bool is_taken(const qip_ref &answer) {
    const void *payload = qip_payload_get(&answer);
    const uint32_t size = qip_payload_size(&answer);
    const codec::view<wire::route_rsp> said(payload);
    return rib_check_fcurt_rsp(payload, size, nullptr) == RIB_OK &&
           said.get<protocol::use<wire::route_rsp, "result">>() == RIB_OK;
}

} // namespace

void fib_service::keep_in_touch() {
    const uint64_t now = qip_now();
    if (const uint32_t cut = qip_reconnections(handle_.number()); cut != reconnections_) {
        reconnections_ = cut;
        lose_rib(now);
    }
    if (awaited_ != 0 && now >= asked_at_ + answer_limit) {
        lose_rib(now + tried_again);
    }
    const auto state = read([](const module &of) { return of.fib.now(); });
    if (awaited_ == 0 && (now >= next_at_ || (knows_rib_ && state != announced_))) {
        announce(now);
    }
}

static bool ask_formats(int32_t handle, qip_ref *ref) {
    const qip_send_opts at_once{{0, 1}};
    return qip_send(handle, &ribkit_rib_address, RIBKIT_OPCODE_WIRE_DIGESTS, nullptr, 0, ref, nullptr, &at_once) == 0;
}

void fib_service::announce(uint64_t now) {
    qip_ref sent{};
    asks_formats_ = !may_tell();
    if (!(asks_formats_ ? ask_formats(handle_.number(), &sent) : send_node(&sent))) {
        return lose_rib(now + tried_again);
    }
    awaited_ = qip_rr_token_get(&sent);
    asked_at_ = now;
    qip_drop(handle_.number(), &sent);
}

/// @param ref null where no answer is awaited
/// @return false also where there is no memory for it: the RIB is told later
bool fib_service::send_node(qip_ref *ref) try {
    const qip_send_opts at_once{{0, 1}};
    const auto is = read([](const module &of) { return of.describe(); });
    const auto message = protocol::module_message(is);
    announced_ = is.state;
    return qip_send(handle_.number(), &ribkit_rib_address, RIBKIT_OPCODE_FIB_NODE, message.data(),
                    static_cast<uint32_t>(message.size()), ref, nullptr, &at_once) == 0;
} catch (const std::bad_alloc &) {
    return false;
}

/// Whether it arrives or not.
void fib_service::tell_rib() {
    if (may_tell()) {
        send_node(nullptr);
    }
}

/// A RIB that refuses the question is of before it could be asked, and is taken as it is.
void fib_service::hear_formats(const qip_ref &ref, uint64_t now) {
    const std::span<const uint8_t> said(static_cast<const uint8_t *>(qip_payload_get(&ref)), qip_payload_size(&ref));
    const auto size = static_cast<uint32_t>(said.size());
    const bool tells = protocol::check_wire_digests(said.data(), size, nullptr) == RIB_OK;
    if (!tells && rib_check_fcurt_rsp(said.data(), size, nullptr) != RIB_OK) {
        return lose_rib(now + tried_again);
    }
    const auto different = tells ? protocol::different_messages(said, "fib_") : std::vector<std::string_view>{};
    agrees_ = different.empty();
    next_at_ = agrees_ ? now : now + told_again;
    if (!agrees_) {
        options_.differs(different);
    }
}

void fib_service::hear_rib(const qip_ref &ref) {
    if (qip_rr_token_get(&ref) != awaited_) {
        return;
    }
    awaited_ = 0;
    const uint64_t now = qip_now();
    if (asks_formats_) {
        return hear_formats(ref, now);
    }
    if (!is_taken(ref)) {
        bus::note_in_history("module ", options_.number, ": the RIB does not take its record");
        return lose_rib(now + tried_again);
    }
    knows_rib_ = true;
    next_at_ = now + told_again;
    const std::scoped_lock locked(lock_);
    module_.fib.reach();
}

/// @param again when the RIB is told of the module again
void fib_service::lose_rib(uint64_t again) {
    if (awaited_ != 0) { // an answer that comes now is thrown away
        qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 0, awaited_, 1}};
        qip_ref late{};
        if (qip_recv(handle_.number(), &late, &opts) == 0) {
            qip_drop(handle_.number(), &late);
        }
        awaited_ = 0;
    }
    if (knows_rib_) {
        bus::note_in_history("module ", options_.number, ": the RIB is gone, or has begun anew");
    }
    knows_rib_ = false;
    agrees_ = false;
    next_at_ = again;
    const std::scoped_lock locked(lock_);
    module_.fib.lose();
}

} // namespace ribkit::fib
