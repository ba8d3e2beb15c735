// What a RIB holds once it answers no more.
#pragma once

#include "rib/service/answers.h"
#include "rib/service/rib_service.h"

#include <cstddef>

namespace ribkit::rib {

struct rib_state {
    explicit rib_state(const rib_service &stopped)
        : routes(active_routes(stopped.tables())), memory(stopped.tables().memory()), answered(stopped.answered()) {}

    model::held_routes routes;
    rib_memory memory;
    size_t answered; ///< messages
};

} // namespace ribkit::rib
