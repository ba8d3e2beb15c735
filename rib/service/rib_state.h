// What a RIB holds once it answers no more.
#pragma once

#include "rib/service/answers.h"
#include "rib/service/rib_service.h"

#include <cstddef>

namespace ribkit::rib {

struct rib_state {
    explicit rib_state(const rib_service &stopped)
        : tables(stopped.tables()), routes(active_routes(tables)), memory(tables.memory()),
          answered(stopped.answered()) {}

    /// Destinations, groups and label keys with a route.
    [[nodiscard]] size_t held() const {
        return routes.size() + tables.routes<multicast>().all().size() + tables.routes<label>().all().size();
    }

    const state &tables;       ///< the RIB's own
    model::held_routes routes; ///< the active unicast routes
    rib_memory memory;
    size_t answered; ///< messages
};

} // namespace ribkit::rib
