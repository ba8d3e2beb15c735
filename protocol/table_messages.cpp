// An entry that did not find its room is taken back with all that was written of it.
#include "protocol/table_messages.h"

#include "rib_codes.h"

namespace ribkit::protocol {

using codec::writer;

namespace {

/// Interfaces of label routes, each with its labels to push.
template <class Record> void add_label_hops(const Record &record, std::span<const uint32_t> hops) {
    while (!hops.empty()) {
        const std::span<const uint32_t> hop = model::take_label_hop(hops);
        const auto way = record.template add<"intf">();
        way.template set<"ctrl">(hop[0]).template set<"intf">(hop[1]);
        for (const uint32_t label : hop.subspan(2)) {
            way.template add<"push">().template set<"label">(label);
        }
    }
}

template <class Record> void add_match(const Record &record, const model::label_key &key) {
    for (uint32_t i = 0; i < key.match_count; i++) {
        record.template add<"match">().template set<"label">(key.match[i]);
    }
}

template <class Record> void add_members(const Record &record, std::span<const uint32_t> members) {
    for (const uint32_t member : members) {
        record.template add<"intf">().template set<"intf">(member);
    }
}

template <class Entry>
void write_entry(const Entry &entry, uint32_t owner, const model::route_key &key, const model::route_values &what) {
    entry.template set<"uuid">(owner).template set<"vsan">(key.vsan);
    entry.template set<"fcid">(key.to.fcid).template set<"mask">(key.to.mask);
    const auto &[rctl, rctl_mask, rewrite, a, b, c, d, e] = what.carried;
    entry.template set<"rctl">(rctl).template set<"rctl_mask">(rctl_mask).template set<"byte_18">(rewrite);
    entry.template set_bytes<"bytes_19">(std::array{a, b, c, d, e});
    entry.template set<"cost">(what.metric).template set<"flag">(what.flag);
    for (const model::next_hop &hop : what.hops) {
        const auto way = entry.template add<"hop">();
        way.template set<"ctrl", "domain">(hop.domain).template set<"intf">(hop.if_index);
    }
}

/// Whether the message is whole; otherwise the entry is out of it again.
template <class Message, class Entry> bool keep(const Message &message, const Entry &entry) {
    if (!message.is_whole()) {
        message.template take_back<"route">(entry);
        return false;
    }
    return true;
}

} // namespace

bool add_route(const multicast_update_writer &update, uint32_t action, const model::destination &to,
               const model::multicast_values &what) {
    const auto record = update.add<"route">();
    record.set<"fcid">(to.fcid).set<"mask">(to.mask).set<"action">(action);
    add_members(record, what.members);
    return keep(update, record);
}

bool add_route(const label_update_writer &update, uint32_t action, const model::label_key &key,
               const model::label_values &what) {
    const auto record = update.add<"route">();
    record.set<"type">(key.type).set<"vsan">(key.vsan).set<"action">(action);
    record.set<"fcid">(key.to.fcid).set<"mask">(key.to.mask);
    add_match(record, key);
    for (const uint32_t source : what.sources) {
        record.add<"src">().set<"intf">(source);
    }
    add_label_hops(record, what.hops);
    return keep(update, record);
}

bool add_entry(const writer<wire::fcurt_info> &info, uint32_t owner, const model::route_key &key,
               const model::route_values &what) {
    const auto entry = info.add<"route">();
    write_entry(entry, owner, key, what);
    return keep(info, entry);
}

bool add_entry(const writer<wire::fcmrt_info> &info, uint32_t owner, const model::multicast_key &key,
               const model::multicast_values &what) {
    const auto entry = info.add<"route">();
    entry.set<"uuid">(owner).set<"vsan">(key.vsan).set<"fcid">(key.to.fcid).set<"mask">(key.to.mask);
    add_members(entry, what.members);
    return keep(info, entry);
}

bool add_entry(const writer<wire::fclrt_info> &info, uint32_t owner, const model::label_key &key,
               const model::label_values &what) {
    const auto entry = info.add<"route">();
    entry.set<"uuid">(owner).set<"type">(key.type).set<"vsan">(key.vsan).set<"src">(key.source);
    entry.set<"fcid">(key.to.fcid).set<"mask">(key.to.mask);
    add_match(entry, key);
    add_label_hops(entry, what.hops);
    return keep(info, entry);
}

std::vector<uint8_t> ucast_entry(const model::route_key &key, const model::held_route &held) {
    constexpr size_t hop_distance = wire::ucast_route.row_of("hop").stride;
    std::vector<uint8_t> bytes(wire::ucast_route.size + hop_distance * held.what.hops.size() + wire::ucast_hop.size);
    write_entry(writer<wire::ucast_route>(bytes), held.uuid, key, held.what);
    return bytes;
}

std::vector<uint8_t> topology_versions(uint32_t owner, uint32_t vsan, std::span<const uint32_t> versions) {
    std::vector<uint8_t> bytes(wire::topo.size + versions.size_bytes());
    const writer<wire::topo> list(bytes);
    list.set<"uuid">(owner).set<"vsan">(vsan);
    for (const uint32_t version : versions) {
        list.add<"version">().set<"version">(version);
    }
    return bytes;
}

std::vector<uint8_t> update_of_versions(uint32_t owner, uint32_t vsan, std::span<const uint32_t> versions) {
    std::vector<uint8_t> bytes(wire::fcurt_update.size);
    const writer<wire::fcurt_update> update(bytes);
    update.set<"uuid">(owner).set<"vsan">(vsan).set<"oper">(RIB_OPER_ADD_VERSION);
    for (const uint32_t version : versions) {
        update.add<"version">().set<"version">(version);
    }
    return bytes;
}

} // namespace ribkit::protocol
