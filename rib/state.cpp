// The tables share the hardware and the clients.
#include "rib/state.h"

#include "rib_codes.h"

#include <cstdio>
#include <new>

namespace ribkit::rib {

state::state(const state_options &options, effects *out)
    : out_(out), hardware_(options.spaces, options.shows_segments, out), owners_(options.quotas),
      unicast_(hardware_, out), multicast_(hardware_, out), label_(hardware_, out) {}

void state::set_distance(uint32_t uuid, std::optional<uint32_t> distance, uint32_t now) {
    const uint32_t before = owners_.distance(uuid);
    owners_.set_distance(uuid, distance);
    if (owners_.distance(uuid) != before) {
        unicast_.rank_again(uuid, now);
    }
}

template <> const table<unicast> &state::routes() const { return unicast_; }
template <> const table<multicast> &state::routes() const { return multicast_; }
template <> const table<label> &state::routes() const { return label_; }
template <> table<unicast> &state::table_of() { return unicast_; }
template <> table<multicast> &state::table_of() { return multicast_; }
template <> table<label> &state::table_of() { return label_; }

uint32_t state::held(table_id table, uint32_t vsan) const {
    const auto found = vsans().find(vsan);
    return found == vsans().end() ? 0 : found->second.routes[static_cast<size_t>(table)];
}

const table<label>::record *state::labels_for(const model::route_key &destination) const {
    const auto found = label_.all().find({.vsan = destination.vsan, .type = RIB_ROUTE_FC_LABEL, .to = destination.to});
    return found == label_.all().end() ? nullptr : found->second;
}

/// @return 0; RIB_OUT_OF_MEMORY
uint32_t state::set_suspended(uint32_t vsan, bool suspends) {
    bool has_changed = false;
    try {
        has_changed = suspends ? suspended_.insert(vsan).second : suspended_.erase(vsan) != 0;
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
    if (has_changed && out_ != nullptr) {
        out_->vsan_changed(vsan, suspends);
    }
    return RIB_OK;
}

rib_memory state::memory() const {
    return {unicast_.count() + multicast_.count() + label_.count(), hardware_.paths.used(), hardware_.places(),
            hardware_.spaces()};
}

void state::show() const {
    std::puts("\nRoutes: pool");
    unicast_.show();
    if (multicast_.count() != 0) {
        std::puts("\nMulticast routes: pool");
        multicast_.show();
    }
    if (label_.count() != 0) {
        std::puts("\nLabel routes: pool");
        label_.show();
    }
    hardware_.show();
}

} // namespace ribkit::rib
