// An entry is there as long as there is something to say about the client.
#include "rib/owners.h"

#include <new>

namespace ribkit::rib {

owners::owners(const std::map<uint32_t, uint32_t> &quotas) {
    for (const auto &[uuid, most] : quotas) {
        all_.emplace(uuid, owner{.uuid = uuid, .distance = default_distance(uuid), .most = most});
    }
}

owner *owners::enter(uint32_t uuid) {
    const auto at = all_.lower_bound(uuid);
    if (at != all_.end() && at->first == uuid) {
        return &at->second;
    }
    try {
        return &all_.emplace_hint(at, uuid, owner{.uuid = uuid, .distance = default_distance(uuid)})->second;
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

void owners::leave(uint32_t uuid) {
    const auto found = all_.find(uuid);
    if (found != all_.end() && found->second.held() == 0 && found->second.most == UINT32_MAX &&
        !found->second.registered) {
        all_.erase(found);
    }
}

void owners::set_distance(uint32_t uuid, std::optional<uint32_t> distance) {
    owner *known = enter(uuid);
    if (known == nullptr) {
        throw std::bad_alloc();
    }
    known->registered = distance.has_value();
    known->distance = distance.value_or(default_distance(uuid));
    leave(uuid);
}

uint32_t owners::distance(uint32_t uuid) const {
    const auto found = all_.find(uuid);
    return found == all_.end() ? default_distance(uuid) : found->second.distance;
}

} // namespace ribkit::rib
