// Two sorted tables are walked side by side.
#include "model/routes.h"

#include "rib_codes.h"

namespace ribkit::model {

static uint32_t action_between(const route &before, const route &after) {
    if (before.hops != after.hops) {
        return RIB_ACTION_ADD;
    }
    return (before.flag != after.flag ? RIB_ACTION_CHANGE_FLAG : 0) |
           (before.metric != after.metric ? RIB_ACTION_CHANGE_METRIC : 0);
}

std::vector<route_change> changes_between(const route_table &before, const route_table &after) {
    std::vector<route_change> changes;
    auto old = before.begin();
    auto now = after.begin();
    while (old != before.end() || now != after.end()) {
        if (now == after.end() || (old != before.end() && old->first < now->first)) {
            changes.push_back({RIB_ACTION_DELETE, old->first, old->second});
            ++old;
        } else if (old == before.end() || now->first < old->first) {
            changes.push_back({RIB_ACTION_ADD, now->first, now->second});
            ++now;
        } else {
            if (old->second != now->second) {
                changes.push_back({action_between(old->second, now->second), now->first, now->second});
            }
            ++old;
            ++now;
        }
    }
    return changes;
}

void apply_change(route_table &table, const route_change &change) {
    if (change.action == RIB_ACTION_DELETE) {
        table.erase(change.to);
    } else {
        table[change.to] = change.what;
    }
}

bool has_effect(const route_table &table, const route_change &change) {
    const auto found = table.find(change.to);
    return change.action == RIB_ACTION_DELETE ? found == table.end()
                                              : found != table.end() && found->second == change.what;
}

} // namespace ribkit::model
