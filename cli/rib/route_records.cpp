// A record is written as the entry of an info message, and is what stands behind the message's head.
#include "cli/rib/route_records.h"

#include "codec/messages/info.h"
#include "codec/messages/snmp.h"
#include "codec/writer.h"
#include "protocol/table_messages.h"
#include "rib_codes.h"
#include "rib_snmp.h"

#include <array>
#include <vector>

namespace ribkit::cli {

namespace {

/// @param spare of the last hop, which is displayed as long as it is
template <const codec::layout &Info, class Key, class Values>
void add_entry_of(record_list &to, size_t most, size_t spare, uint32_t owner, const Key &key, const Values &what) {
    std::vector<uint8_t> room(Info.size + most + spare);
    const codec::writer<Info> info(room);
    protocol::add_entry(info, owner, key, what);
    to.add(std::span(room).subspan(Info.size, info.size() - Info.size - spare));
}

constexpr size_t hop_distance = wire::ucast_route.row_of("hop").stride;

} // namespace

void add_record(record_list &to, uint32_t owner, const model::route_key &key, const model::route_values &what) {
    add_entry_of<wire::fcurt_info>(to, wire::ucast_route.size + hop_distance * what.hops.size(),
                                   what.hops.empty() ? 0 : wire::ucast_hop.size - hop_distance, owner, key, what);
}

void add_record(record_list &to, uint32_t owner, const model::multicast_key &key, const model::multicast_values &what) {
    add_entry_of<wire::fcmrt_info>(to, wire::mcast_route.size + what.members.size_bytes(), 0, owner, key, what);
}

void add_record(record_list &to, uint32_t owner, const model::label_key &key, const model::label_values &what) {
    add_entry_of<wire::fclrt_info>(to, wire::lbl_route.size + what.hops.size_bytes(), 0, owner, key, what);
}

void add_snmp_rows(record_list &to, uint32_t owner, const model::route_key &key, const model::route_values &what) {
    constexpr uint32_t local_type = 1;
    constexpr uint32_t remote_type = 2;
    constexpr uint32_t permanent = 1;
    constexpr uint32_t is_volatile = 2;
    for (const model::next_hop &hop : what.hops) {
        std::array<uint8_t, wire::fc_route_entry.size> row;
        codec::writer<wire::fc_route_entry>(row)
            .set<"vsan">(key.vsan)
            .set<"if_index">(hop.if_index)
            .set<"protocol">(fcRouteProto_from_uuid(owner))
            .set<"destination">(key.to.fcid)
            .set<"mask">(key.to.mask)
            .set<"domain">(hop.domain)
            .set<"cost">(what.metric)
            .set<"route_type">((what.flag & RIB_FLAG_DIRECT) != 0 ? local_type : remote_type)
            .set<"permanence">((what.flag & RIB_FLAG_VOLATILE) != 0 ? is_volatile : permanent);
        to.add(row);
    }
}

} // namespace ribkit::cli
