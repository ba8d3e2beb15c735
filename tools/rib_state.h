// What a RIB holds once it answers no more.
#pragma once

#include "tools/rib_service.h"

#include <cstddef>

namespace ribkit::tools {

struct rib_state {
    explicit rib_state(const rib_service &stopped)
        : routes(stopped.tables().routes()), memory(stopped.tables().store().memory()), answered(stopped.answered()) {}

    held_routes routes;
    rib_memory memory;
    size_t answered; ///< messages
};

} // namespace ribkit::tools
