// A list is written into room for all of its entries; what is read has passed the check of its message.
#include "protocol/system_messages.h"

#include "protocol/uses.h"

#include <algorithm>

namespace ribkit::protocol {

using codec::view;
using codec::writer;

namespace {

/// A message with one entry for each value of a list, which `write` fills.
template <const codec::layout &L, codec::field_called List, class Value, class Write>
bytes list_message(std::span<const Value> values, Write write) {
    bytes message(L.size + values.size() * L.row_of(List.str()).stride);
    const writer<L> all(message);
    for (const Value &value : values) {
        write(all.template add<List>(), value);
    }
    return message;
}

/// The values of a list, each of which `read` makes.
template <codec::field_called List, class View, class Read> auto values_of(View message, Read read) {
    std::vector<decltype(read(*message.template list<List>().begin()))> values;
    for (const auto entry : message.template list<List>()) {
        values.push_back(read(entry));
    }
    return values;
}

template <const codec::layout &Body> bytes internal_message(uint32_t structure) {
    bytes message(wire::in_info.size + Body.size);
    writer<wire::in_info>(message).set<"kind">(structure);
    return message;
}

template <class View> uint8_t *body_of(View &message) { return message.data() + wire::in_info.size; }

constexpr uint32_t available = 1;
constexpr uint32_t memory = 2;

model::domain_reach::bitmap bitmap_of(std::span<const uint8_t, sizeof(model::domain_reach::bitmap)> area) {
    model::domain_reach::bitmap bits{};
    std::copy(area.begin(), area.end(), bits.begin());
    return bits;
}

/// Writes the words that all records of logs have.
template <const codec::layout &L, class Key>
writer<L> &write_change(writer<L> &record, const model::logged_change<Key> &change) {
    record.template set<"index">(model::log_index(change.sequence)).template set<"sequence">(change.sequence);
    record.template set<"time">(change.time).template set<"oper">(change.oper).template set<"action">(change.action);
    return record;
}

/// `write` fills in the key.
template <const codec::layout &L, class Key, class Write>
bytes log_message(std::span<const model::logged_change<Key>> changes, uint32_t next, Write write) {
    bytes message((changes.size() + 1) * L.size);
    std::span<uint8_t> left(message);
    for (const auto &change : changes) {
        writer<L> record(left.first(L.size));
        write(write_change(record, change), change.key);
        left = left.subspan(L.size);
    }
    writer<L>(left)
        .template set<"index">(model::log_marker)
        .template set<"sequence">(next)
        .template set<"time">(changes.empty() ? 0 : changes.back().time)
        .template set<"oper">(static_cast<uint32_t>(changes.size()));
    return message;
}

} // namespace

bytes database_info(uint32_t created, std::span<const model::vsan_summary> vsans) {
    bytes message = list_message<wire::db_info, "vsan">(vsans, [](const auto &entry, const model::vsan_summary &one) {
        entry.template set<"vsan">(one.vsan).template set<"modified">(one.modified);
        entry.template set<"ucast">(one.unicast).template set<"mcast">(one.multicast).template set<"label">(one.label);
    });
    codec::writable_view<wire::db_info>(message.data()).set<"created">(created);
    return message;
}

std::vector<model::vsan_summary> summaries_of(view<wire::db_info> info) {
    return values_of<"vsan">(info, [](auto entry) {
        return model::vsan_summary{entry.template get<"vsan">(), entry.template get<"modified">(),
                                   entry.template get<"ucast">(), entry.template get<"mcast">(),
                                   entry.template get<"label">()};
    });
}

bytes domain_info(std::span<const model::domain_reach> vsans) {
    return list_message<wire::dm_info, "vsan">(vsans, [](const auto &entry, const model::domain_reach &one) {
        entry.template set<"vsan">(one.vsan);
        entry.template set_bytes<"present">(one.present).template set_bytes<"direct">(one.direct);
    });
}

std::vector<model::domain_reach> reach_of(view<wire::dm_info> info) {
    return values_of<"vsan">(info, [](auto entry) {
        return model::domain_reach{entry.template get<"vsan">(), bitmap_of(entry.template area<"present">()),
                                   bitmap_of(entry.template area<"direct">())};
    });
}

bytes registration_info(std::span<const model::registration> clients) {
    return list_message<wire::reg_info, "client">(clients, [](const auto &entry, const model::registration &one) {
        entry.template set<"uuid">(one.client).template set<"distance">(one.distance);
        entry.template set_text<"name">(one.name.substr(0, wire::reg_entry.row_of("name").mask));
    });
}

std::vector<model::registration> registrations_of(view<wire::reg_info> info) {
    return values_of<"client">(info, [](auto entry) {
        return model::registration{entry.template get<"uuid">(), entry.template get<"distance">(),
                                   std::string(entry.template text<"name">())};
    });
}

bytes vsan_info(std::span<const std::pair<uint32_t, model::vsan_attributes>> vsans) {
    return list_message<wire::vsan_update, "vsan">(vsans, [](const auto &entry, const auto &one) {
        const auto &[vsan, known] = one;
        entry.template set<"latency">(known.latency);
        entry.template set<"word_4", "vsan">(vsan);
        entry.template set<"word_4", "state">(static_cast<uint32_t>(known.state));
        entry.template set<"word_4", "balance">(static_cast<uint32_t>(known.balance));
        entry.template set<"word_4", "iod">(known.in_order ? 1 : 0);
        entry.template set<"word_4", "iod_valid">(1);
    });
}

std::vector<std::pair<uint32_t, model::vsan_attributes>> vsans_of(view<wire::vsan_update> info) {
    return values_of<"vsan">(info, [](auto entry) {
        const model::vsan_attributes known{static_cast<model::vsan_state>(entry.template get<"word_4", "state">()),
                                           static_cast<model::flow_balance>(entry.template get<"word_4", "balance">()),
                                           entry.template get<"word_4", "iod">() != 0, entry.template get<"latency">()};
        return std::pair(entry.template get<"word_4", "vsan">(), known);
    });
}

bytes availability_info(const model::availability &now) {
    bytes message = internal_message<wire::in_ha>(available);
    writer<wire::in_ha>(body_of(message), wire::in_ha.size)
        .set<"sup_state">(now.sup_state)
        .set<"switching_over">(now.switching_over)
        .set<"started_stateful">(now.started_stateful)
        .set<"started_stateless">(now.started_stateless)
        .set<"standby_existed">(now.standby_existed)
        .set<"sent_heartbeat">(now.sent_heartbeat);
    return message;
}

model::availability availability_of(view<wire::in_info> info) {
    const view<wire::in_ha> body(info.data() + wire::in_info.size);
    return {body.get<"sup_state">(),
            body.get<"switching_over">() == 1,
            body.get<"started_stateful">() == 1,
            body.get<"started_stateless">() == 1,
            body.get<"standby_existed">() == 1,
            body.get<"sent_heartbeat">() == 1};
}

bytes memory_info(const std::array<model::memory_pool, model::memory_pools> &pools) {
    bytes message = internal_message<wire::in_mem>(memory);
    const codec::writable_view<wire::in_mem> body(body_of(message));
    const auto entries = body.list<"pool">();
    for (size_t i = 0; i < pools.size(); i++) {
        const auto entry = entries[i];
        entry.set<"pool">(pools[i].pool).set<"data_size">(pools[i].data_size).set<"n_data">(pools[i].n_data);
    }
    return message;
}

std::array<model::memory_pool, model::memory_pools> pools_of(view<wire::in_info> info) {
    std::array<model::memory_pool, model::memory_pools> pools{};
    const auto entries = view<wire::in_mem>(info.data() + wire::in_info.size).list<"pool">();
    for (size_t i = 0; i < pools.size(); i++) {
        pools[i] = {entries[i].get<"pool">(), entries[i].get<"data_size">(), entries[i].get<"n_data">()};
    }
    return pools;
}

bytes internal_info(uint32_t structure, uint32_t count) {
    bytes message(wire::in_info.size);
    writer<wire::in_info>(message).set<"kind">(structure).set<use<wire::in_info, "count">>(count);
    return message;
}

bytes test_info(uint32_t type, bool enabled) {
    bytes message(wire::test_info.size);
    writer<wire::test_info>(message).set<use<wire::test_info, "type">>(type).set<use<wire::test_info, "enabled">>(
        enabled);
    return message;
}

bytes flow_info(uint32_t result, uint32_t if_index) {
    bytes message(wire::fcu_lb_rsp.size);
    writer<wire::fcu_lb_rsp>(message).set<use<wire::fcu_lb_rsp, "result">>(result).set<use<wire::fcu_lb_rsp, "intf">>(
        if_index);
    return message;
}

bytes log_position(uint32_t next, uint32_t held) {
    bytes message(wire::sync_info.size);
    writer<wire::sync_info>(message).set<use<wire::sync_info, "next">>(next).set<use<wire::sync_info, "held">>(held);
    return message;
}

bytes unicast_log(std::span<const model::logged_change<model::route_key>> changes, uint32_t next) {
    return log_message<wire::sync_fcu>(changes, next, [](auto &record, const model::route_key &key) {
        record.template set<"vsan">(key.vsan).template set<"fcid">(key.to.fcid).template set<"mask">(key.to.mask);
    });
}

bytes multicast_log(std::span<const model::logged_change<model::multicast_key>> changes, uint32_t next) {
    return log_message<wire::sync_fcm>(changes, next, [](auto &record, const model::multicast_key &key) {
        record.template set<"vsan">(key.vsan).template set<"fcid">(key.to.fcid);
    });
}

bytes label_log(std::span<const model::logged_change<model::label_key>> changes, uint32_t next) {
    return log_message<wire::sync_fcl>(changes, next, [](auto &record, const model::label_key &key) {
        record.template set<"type">(key.type).template set<"vsan">(key.vsan).template set<"intf">(key.source);
        record.template set<"fcid">(key.to.fcid).template set<"mask">(key.to.mask);
        record.template set<"label_0">(key.match[0]).template set<"label_1">(key.match[1]);
    });
}

} // namespace ribkit::protocol
