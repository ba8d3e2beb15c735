// Changes of routes are counted by what they did to the table that there was.
#include "clients/client_traffic.h"

#include "rib_codes.h"

#include <algorithm>

namespace ribkit::clients {

void client_traffic::count(const model::route_table &before, std::span<const model::route_change> changes) {
    for (const model::route_change &change : changes) {
        if (change.action == RIB_ACTION_DELETE) {
            deleted++;
        } else if (change.action == RIB_ACTION_ADD && !before.contains(change.to)) {
            added++;
        } else {
            changed++;
        }
    }
}

client_traffic &client_traffic::operator+=(const client_traffic &more) {
    added += more.added;
    deleted += more.deleted;
    changed += more.changed;
    refused += more.refused;
    messages += more.messages;
    bytes_sent += more.bytes_sent;
    bytes_received += more.bytes_received;
    computing += more.computing;
    exchanging += more.exchanging;
    return *this;
}

// A delete is what most often finds its work done: those are the last to be taken for effective.
std::vector<model::route_change> effective(std::vector<model::route_change> changes, const model::route_table &after,
                                           size_t made) {
    std::erase_if(changes, [&](const model::route_change &change) { return !model::has_effect(after, change); });
    std::stable_partition(changes.begin(), changes.end(),
                          [](const model::route_change &change) { return change.action != RIB_ACTION_DELETE; });
    changes.resize(std::min(changes.size(), made));
    return changes;
}

} // namespace ribkit::clients
