// A unicast route matters to modules while it is the active one; labels that it pushes are part of it.
#include "rib/modules/modules.h"

#include "rib_codes.h"

#include <utility>

namespace ribkit::rib {

module_feed &modules::enter(uint32_t number, uint32_t sequence) {
    return all_.try_emplace(number, routes_, requests_, sequence).first->second;
}

void modules::release() noexcept {
    for (auto &[number, feed] : all_) {
        feed.set_held(false);
    }
}

void modules::end(const update_answer &answer) noexcept { requests_.seal(std::exchange(asker_, 0), answer); }

void modules::give_up(waiting::id request) noexcept {
    for (auto &[number, feed] : all_) {
        feed.give_up(request);
    }
    requests_.give_up(request);
}

void modules::told(const route_event<unicast> &change) {
    if ((change.what.flag & RIB_FLAG_ACTIVE) != 0) {
        tell<unicast>(change.why, change.key);
    }
}

void modules::told(const route_event<multicast> &change) { tell<multicast>(change.why, change.key); }

void modules::told(const route_event<label> &change) {
    const model::label_key &key = change.key;
    if (key.type != RIB_ROUTE_FC_LABEL || key.match_count != 0) {
        tell<label>(change.why, key);
    } else if (const model::route_key labelled{key.vsan, key.to}; routes_.routes<unicast>().all().contains(labelled)) {
        tell<unicast>(change.why, labelled);
    }
}

void modules::vsan_changed(uint32_t vsan, bool suspended) {
    for (auto &[number, feed] : all_) {
        feed.vsan_changed(vsan, suspended);
    }
}

void modules::compare(table_id table, uint32_t vsan) {
    if (asker_ == 0) {
        return;
    }
    requests_.compare(asker_);
    requests_.tell(asker_, all_.empty() ? RIB_MISSING_DEVICE : RIB_OK);
    for (auto &[number, feed] : all_) {
        feed.compare(table, vsan, asker_);
    }
}

std::array<uint32_t, tables> modules::in_flight() const {
    std::array<uint32_t, tables> counts{};
    for (const auto &[number, feed] : all_) {
        counts[0] += static_cast<uint32_t>(feed.lane<label>().in_flight());
        counts[1] += static_cast<uint32_t>(feed.lane<multicast>().in_flight());
        counts[2] += static_cast<uint32_t>(feed.lane<unicast>().in_flight());
    }
    return counts;
}

template <class Kind> void modules::tell(cause why, const typename Kind::key &where) noexcept {
    if (why == cause::replay) {
        return;
    }
    for (auto &[number, feed] : all_) {
        feed.template change<Kind>(where, asker_);
    }
}

} // namespace ribkit::rib
