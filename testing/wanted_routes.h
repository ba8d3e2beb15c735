// What FSPF wants of a fabric, for the tests of whoever is told.
#pragma once

#include "lab/fabric_routes.h"

namespace ribkit::testing {

inline model::wanted_routes wanted_by(const lab::fabric &f) {
    lab::fabric_routes routes;
    routes.follow(f, [](size_t, size_t) {});
    return routes.all();
}

} // namespace ribkit::testing
