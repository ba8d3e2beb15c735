// The logs of the three tables, filled by what the state tells.
#pragma once

#include "rib/effects.h"
#include "rib/label.h"
#include "rib/multicast.h"
#include "rib/sync_log.h"
#include "rib/unicast.h"

#include <cstddef>
#include <cstdint>
#include <tuple>

namespace ribkit::rib {

class change_logs {
  public:
    /// Enters a change, but nothing that has only been asked for.
    /// @param now seconds since 1970
    template <class Kind> void enter(const route_event<Kind> &change, uint32_t now);

    template <class Kind> [[nodiscard]] const sync_log<typename Kind::key> &of() const {
        return std::get<static_cast<size_t>(Kind::id)>(logs_);
    }

  private:
    std::tuple<sync_log<label::key>, sync_log<multicast::key>, sync_log<unicast::key>> logs_; ///< by table_id
};

extern template void change_logs::enter(const route_event<unicast> &, uint32_t);
extern template void change_logs::enter(const route_event<multicast> &, uint32_t);
extern template void change_logs::enter(const route_event<label> &, uint32_t);

} // namespace ribkit::rib
