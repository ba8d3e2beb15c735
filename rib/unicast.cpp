// Hops go into path units as they are; ports are counted beside them.
#include "rib/unicast.h"

#include "rib_codes.h"

#include <algorithm>
#include <array>

namespace ribkit::rib {

namespace {

constexpr uint32_t any_change = RIB_ACTION_CHANGE_FLAG | RIB_ACTION_CHANGE_METRIC;

/// The interfaces of a route's hops.
class hop_ports {
  public:
    explicit hop_ports(std::span<const model::next_hop> hops) : count_(hops.size()) {
        std::transform(hops.begin(), hops.end(), all_.begin(), [](const model::next_hop &hop) { return hop.if_index; });
    }
    [[nodiscard]] std::span<const uint32_t> all() const { return std::span(all_).first(count_); }

  private:
    std::array<uint32_t, unit_block> all_;
    size_t count_;
};

std::span<const model::next_hop> hops_of(const hardware &behind, const unicast::stored &held) {
    return behind.paths.read(held.path, held.hops);
}

bool use_same_ports(std::span<const model::next_hop> a, std::span<const model::next_hop> b) {
    return std::equal(
        a.begin(), a.end(), b.begin(), b.end(),
        [](const model::next_hop &one, const model::next_hop &other) { return one.if_index == other.if_index; });
}

void set(unicast::stored &held, uint32_t path, const unicast::values &what) {
    held.metric = what.metric;
    held.flag = what.flag & ~RIB_FLAG_ACTIVE;
    held.path = path;
    held.carried = what.carried;
    held.hops = static_cast<uint8_t>(what.hops.size());
}

} // namespace

bool unicast::is_known(uint32_t action, const key & /*where*/) {
    const bool changes = (action & any_change) != 0 && (action & ~any_change) == 0;
    return action == RIB_ACTION_ADD || action == RIB_ACTION_DELETE || changes;
}

uint32_t unicast::store(hardware &behind, stored &made, const values &what) {
    if (what.hops.size() > unit_block) {
        return RIB_BAD_PARAMETERS;
    }
    const auto hops = static_cast<uint32_t>(what.hops.size());
    uint32_t path = 0;
    uint32_t result = behind.paths.take(hops, path);
    if (result != RIB_OK) {
        return result;
    }
    result = behind.ports.add(hop_ports(what.hops).all());
    if (result != RIB_OK) {
        behind.paths.give_back(hops, path);
        return result;
    }
    behind.paths.write(path, what.hops);
    set(made, path, what);
    return RIB_OK;
}

// As many hops as before stay on their units, so that a full space is no reason to refuse them.
uint32_t unicast::replace(hardware &behind, stored &held, const values &what) {
    if (what.hops.size() != held.hops) {
        stored made = held;
        const uint32_t result = store(behind, made, what);
        if (result == RIB_OK) {
            give_back(behind, held);
            held = made;
        }
        return result;
    }
    const auto before = hops_of(behind, held);
    if (!use_same_ports(before, what.hops)) {
        if (const uint32_t result = behind.ports.add(hop_ports(what.hops).all()); result != RIB_OK) {
            return result;
        }
        behind.ports.remove(hop_ports(before).all());
    }
    behind.paths.write(held.path, what.hops);
    set(held, held.path, what);
    return RIB_OK;
}

uint32_t unicast::give_back(hardware &behind, stored &held) {
    behind.ports.remove(hop_ports(hops_of(behind, held)).all());
    return behind.paths.give_back(held.hops, held.path);
}

unicast::values unicast::read(const hardware &behind, const stored &held, bool active) {
    return {held.metric, held.flag | (active ? RIB_FLAG_ACTIVE : 0), hops_of(behind, held), held.carried};
}

void unicast::alter(stored &held, uint32_t action, const values &what) {
    held.flag = (action & RIB_ACTION_CHANGE_FLAG) != 0 ? what.flag & ~RIB_FLAG_ACTIVE : held.flag;
    held.metric = (action & RIB_ACTION_CHANGE_METRIC) != 0 ? what.metric : held.metric;
}

} // namespace ribkit::rib
