// Who has routes in the RIB, how many, and how far they are from being active.
#pragma once

#include "rib/request.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>

namespace ribkit::rib {

/// A client that has routes, a quota or a distance of its own.
struct owner {
    uint32_t uuid;
    uint32_t distance;                     ///< the registered one, or its default
    bool registered = false;               ///< whether it has registered the distance
    uint32_t most = UINT32_MAX;            ///< routes of all tables; UINT32_MAX: no limit
    std::array<uint32_t, tables> routes{}; ///< by table_id

    [[nodiscard]] uint32_t held() const { return routes[0] + routes[1] + routes[2]; }
    [[nodiscard]] bool has_room() const { return held() < most; }
};

class owners {
  public:
    /// Throws std::bad_alloc.
    /// @param quotas how many routes a client may have; those not named have no limit
    explicit owners(const std::map<uint32_t, uint32_t> &quotas);

    /// The client's entry, which stays where it is until it is left. @return null where memory fails
    owner *enter(uint32_t uuid);
    /// Forgets a client that has no routes, and of which nothing else is known.
    void leave(uint32_t uuid);

    /// Throws std::bad_alloc, and nothing has changed then.
    /// @param distance none: its default again
    void set_distance(uint32_t uuid, std::optional<uint32_t> distance);
    [[nodiscard]] uint32_t distance(uint32_t uuid) const;

    /// By identity.
    [[nodiscard]] const std::map<uint32_t, owner> &all() const { return all_; }

  private:
    std::map<uint32_t, owner> all_;
};

} // namespace ribkit::rib
