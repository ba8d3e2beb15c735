// What of a route can be changed without the rest.
#include "model/routes.h"

namespace ribkit::model {

uint32_t action_between(const route &before, const route &after) {
    if (before.hops != after.hops) {
        return RIB_ACTION_ADD;
    }
    return (before.flag != after.flag ? RIB_ACTION_CHANGE_FLAG : 0) |
           (before.metric != after.metric ? RIB_ACTION_CHANGE_METRIC : 0);
}

} // namespace ribkit::model
