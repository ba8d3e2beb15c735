// Routes are copied out of the table, with their next hops.
#include "rib/service/answers.h"

#include "rib_codes.h"

namespace ribkit::rib {

model::held_routes active_routes(const state &rib) {
    const table<unicast> &routes = rib.routes<unicast>();
    model::held_routes all;
    for (const auto &[key, active] : routes.all()) {
        const auto what = routes.read(*active);
        all.emplace_hint(
            all.end(), key,
            model::held_route{active->of->uuid,
                              {what.metric, what.flag, {what.hops.begin(), what.hops.end()}, what.carried}});
    }
    return all;
}

} // namespace ribkit::rib
