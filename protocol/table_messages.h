// Routes of all tables as the RIB sends them: whole routes in update messages, and entries of its tables with their
// owners in info messages. Each goes in whole, or nothing of it.
#pragma once

#include "codec/messages/info.h"
#include "codec/messages/route.h"
#include "codec/writer.h"
#include "model/label.h"
#include "model/multicast.h"
#include "protocol/route_messages.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::protocol {

using multicast_update_writer = codec::writer<wire::fcmrt_update>;
using label_update_writer = codec::writer<wire::fclrt_update>;

/// Room that a route takes in an update.
inline size_t record_size(const model::route_values &what) { return fcurt_record_size(what.hops.size()); }
inline size_t record_size(const model::multicast_values &what) { return wire::fcmrt.size + what.members.size_bytes(); }
inline size_t record_size(const model::label_values &what) { return wire::fclrt.size + what.hops.size_bytes(); }

/// Adds a route to an update, as the other tables' do. @return whether there was room
bool add_route(const multicast_update_writer &update, uint32_t action, const model::destination &to,
               const model::multicast_values &what);
bool add_route(const label_update_writer &update, uint32_t action, const model::label_key &key,
               const model::label_values &what);

/// Adds the first of some model::table_change, as many as there is room for. @return how many
template <class Update, class Changes> size_t add_routes(const Update &update, const Changes &changes) {
    size_t added = 0;
    for (const auto &one : changes) {
        if (!add_route(update, one.action, one.to, one.what)) {
            break;
        }
        added++;
    }
    return added;
}

/// Adds an entry of a table to an info message. A unicast or multicast entry with hops or interfaces has to be its
/// last: the next one would overwrite them. @return whether there was room
bool add_entry(const codec::writer<wire::fcurt_info> &info, uint32_t owner, const model::route_key &key,
               const model::route_values &what);
bool add_entry(const codec::writer<wire::fcmrt_info> &info, uint32_t owner, const model::multicast_key &key,
               const model::multicast_values &what);
bool add_entry(const codec::writer<wire::fclrt_info> &info, uint32_t owner, const model::label_key &key,
               const model::label_values &what);

/// The route as an entry of the RIB's tables, which rib_show_fcu displays.
std::vector<uint8_t> ucast_entry(const model::route_key &key, const model::held_route &held);

/// A client's versions for a VSAN, as many as wanted.
std::vector<uint8_t> topology_versions(uint32_t owner, uint32_t vsan, std::span<const uint32_t> versions);
/// The same as an update message that adds them.
std::vector<uint8_t> update_of_versions(uint32_t owner, uint32_t vsan, std::span<const uint32_t> versions);

} // namespace ribkit::protocol
