// Each query is written and read in one place, word by word, by the names of its layout or of the words' uses.
#include "protocol/queries.h"

#include "codec/writer.h"
#include "protocol/query_kinds.h"
#include "protocol/uses.h"

#include <span>

namespace ribkit::protocol {

using codec::view;
using codec::writer;

namespace {

constexpr uint32_t vsan_bits = 12;
constexpr uint32_t vsan_mask = (1U << vsan_bits) - 1;

/// The type of route that a kind of label query is about; 0 where it is about several.
uint32_t route_type_of(uint32_t query_type) {
    switch (query_type & label_routes_mask) {
    case label_routes_by_source:
        return RIB_ROUTE_SRC_LABEL;
    case label_routes_one_label:
    case label_routes_two_labels:
        return RIB_ROUTE_LABEL;
    case label_routes_by_fcid:
        return RIB_ROUTE_FC_LABEL;
    default:
        return 0;
    }
}

/// A number of three bytes.
uint32_t address_at(std::span<const uint8_t> bytes, size_t at) {
    return uint32_t{bytes[at]} << 16 | uint32_t{bytes[at + 1]} << 8 | bytes[at + 2];
}

void put_address(std::span<uint8_t> bytes, size_t at, uint32_t address) {
    bytes[at] = static_cast<uint8_t>(address >> 16);
    bytes[at + 1] = static_cast<uint8_t>(address >> 8);
    bytes[at + 2] = static_cast<uint8_t>(address);
}

} // namespace

bytes_of<wire::fcurt_query> encode(const unicast_query &query) {
    bytes_of<wire::fcurt_query> bytes;
    const auto &[vsan, to] = query.from;
    writer<wire::fcurt_query>(bytes)
        .set<"uuid">(query.uuid)
        .set<"type">(query.type)
        .set<"requested">(query.requested)
        .set<use<wire::fcurt_query, "vsan">>(vsan | query.owner << vsan_bits)
        .set<use<wire::fcurt_query, "fcid">>(to.fcid)
        .set<use<wire::fcurt_query, "mask">>(to.mask);
    return bytes;
}

unicast_query read(view<wire::fcurt_query> query) {
    const uint32_t start = query.get<use<wire::fcurt_query, "vsan">>();
    return {
        query.get<"uuid">(),
        query.get<"type">(),
        query.get<"requested">(),
        {start & vsan_mask, {query.get<use<wire::fcurt_query, "fcid">>(), query.get<use<wire::fcurt_query, "mask">>()}},
        start >> vsan_bits};
}

bytes_of<wire::fcmrt_query> encode(const multicast_query &query) {
    bytes_of<wire::fcmrt_query> bytes;
    const auto &[vsan, to] = query.from;
    writer<wire::fcmrt_query>(bytes)
        .set<"uuid">(query.uuid)
        .set<"type">(query.type)
        .set<"requested">(query.requested)
        .set<use<wire::fcmrt_query, "vsan">>(vsan)
        .set<use<wire::fcmrt_query, "fcid">>(to.fcid)
        .set<use<wire::fcmrt_query, "mask">>(to.mask);
    return bytes;
}

multicast_query read(view<wire::fcmrt_query> query) {
    return {query.get<"uuid">(),
            query.get<"type">(),
            query.get<"requested">(),
            {query.get<use<wire::fcmrt_query, "vsan">>(),
             {query.get<use<wire::fcmrt_query, "fcid">>(), query.get<use<wire::fcmrt_query, "mask">>()}}};
}

bytes_of<wire::fclrt_query> encode(const label_query &query) {
    bytes_of<wire::fclrt_query> bytes;
    const model::label_key &from = query.from;
    const bool by_source = from.type == RIB_ROUTE_SRC_LABEL;
    const writer<wire::fclrt_query> to(bytes);
    to.set<"uuid">(query.uuid).set<"type">(query.type).set<"requested">(query.requested).set<"cursor">(from.type);
    to.set<use<wire::fclrt_query, "vsan">>(from.vsan);
    to.set<use<wire::fclrt_query, "fcid_or_source">>(by_source ? from.source : from.to.fcid);
    to.set<use<wire::fclrt_query, "mask">>(from.to.mask);
    for (uint32_t i = 0; i < from.match_count; i++) {
        to.add<"match">().set<"label">(from.match[i]);
    }
    return bytes;
}

label_query read(view<wire::fclrt_query> query) {
    label_query asked{query.get<"uuid">(), query.get<"type">(), query.get<"requested">(), {}};
    model::label_key &from = asked.from;
    from.vsan = query.get<use<wire::fclrt_query, "vsan">>();
    from.type = query.get<"cursor">() != 0 ? query.get<"cursor">() : route_type_of(asked.type);
    const uint32_t first = query.get<use<wire::fclrt_query, "fcid_or_source">>();
    if (from.type == RIB_ROUTE_SRC_LABEL) {
        from.source = first;
    } else if (from.type == RIB_ROUTE_FC_LABEL) {
        from.to = {first, query.get<use<wire::fclrt_query, "mask">>()};
    }
    for (const auto label : query.list<"match">()) {
        from.match[from.match_count++] = label.get<"label">();
    }
    return asked;
}

unicast_place place_after(const unicast_place &last) {
    return last.owner < RIBKIT_LAST_CLIENT ? unicast_place{last.key, last.owner + 1}
                                           : unicast_place{model::key_after(last.key), 0};
}

template <const codec::layout &L> bytes_of<L> encode(const list_query &query) {
    bytes_of<L> bytes;
    const writer<L> to(bytes);
    to.template set<"uuid">(query.uuid).template set<"query">(query.query);
    if constexpr (is_same(L, wire::sys_query)) {
        to.template set<use<L, "requested">>(query.requested).template set<use<L, "module">>(query.first);
    } else {
        to.template set<"requested">(query.requested);
        if constexpr (!is_same(L, wire::reg_query)) {
            to.template set<use<L, "vsan">>(query.first);
        }
    }
    return bytes;
}

template <const codec::layout &L> list_query read_list_query(view<L> query) {
    list_query asked{query.template get<"uuid">(), query.template get<"query">(), 0};
    if constexpr (is_same(L, wire::sys_query)) {
        asked.requested = query.template get<use<L, "requested">>();
        asked.first = query.template get<use<L, "module">>();
    } else {
        asked.requested = query.template get<"requested">();
        if constexpr (!is_same(L, wire::reg_query)) {
            asked.first = query.template get<use<L, "vsan">>();
        }
    }
    return asked;
}

template bytes_of<wire::db_query> encode<wire::db_query>(const list_query &);
template bytes_of<wire::dm_query> encode<wire::dm_query>(const list_query &);
template bytes_of<wire::vsan_query> encode<wire::vsan_query>(const list_query &);
template bytes_of<wire::sys_query> encode<wire::sys_query>(const list_query &);
template bytes_of<wire::reg_query> encode<wire::reg_query>(const list_query &);
template list_query read_list_query<wire::db_query>(view<wire::db_query>);
template list_query read_list_query<wire::dm_query>(view<wire::dm_query>);
template list_query read_list_query<wire::vsan_query>(view<wire::vsan_query>);
template list_query read_list_query<wire::sys_query>(view<wire::sys_query>);
template list_query read_list_query<wire::reg_query>(view<wire::reg_query>);

bytes_of<wire::in_query> encode(const internal_query &query) {
    bytes_of<wire::in_query> bytes;
    const writer<wire::in_query> to(bytes);
    to.set<"uuid">(query.uuid).set<"query">(query.query).set<"structure">(query.structure);
    to.set<use<wire::in_query, "client">>(query.client);
    return bytes;
}

internal_query read(view<wire::in_query> query) {
    return {query.get<"uuid">(), query.get<"query">(), query.get<"structure">(),
            query.get<use<wire::in_query, "client">>()};
}

bytes_of<wire::node_query> encode(const node_query &query) {
    bytes_of<wire::node_query> bytes;
    writer<wire::node_query>(bytes).set<"uuid">(query.uuid).set<"module">(query.module).set<"type">(query.type);
    return bytes;
}

node_query read(view<wire::node_query> query) {
    return {query.get<"uuid">(), query.get<"module">(), query.get<"type">()};
}

bytes_of<wire::test_query> encode_test(const simple_request &request) {
    bytes_of<wire::test_query> bytes;
    writer<wire::test_query>(bytes).set<"uuid">(request.uuid).set<"type">(request.type);
    return bytes;
}

simple_request read(view<wire::test_query> request) { return {request.get<"uuid">(), request.get<"type">()}; }

bytes_of<wire::verify> encode_verify(const simple_request &request) {
    bytes_of<wire::verify> bytes;
    writer<wire::verify>(bytes).set<"uuid">(request.uuid).set<"type">(request.type);
    return bytes;
}

simple_request read(view<wire::verify> request) { return {request.get<"uuid">(), request.get<"type">()}; }

namespace {

using key_room = std::array<uint8_t, wire::verf_fcl.size>;

key_room encode_key(uint32_t type, const model::label_key &key) {
    key_room room{};
    if (const codec::layout &form = wire::key_of(type); is_same(form, wire::verf_fcu)) {
        writer<wire::verf_fcu>(room).set<"vsan">(key.vsan).set<"fcid">(key.to.fcid).set<"mask">(key.to.mask);
    } else if (is_same(form, wire::verf_fcm)) {
        writer<wire::verf_fcm>(room).set<"vsan">(key.vsan).set<"fcid">(key.to.fcid);
    } else {
        writer<wire::verf_fcl_query> to(room);
        to.set<"vsan">(key.vsan).set<"cursor">(key.type).set<"n_label">(key.match_count);
        to.set<use<wire::verf_fcl_query, "fcid_or_source">>(key.type == RIB_ROUTE_SRC_LABEL ? key.source : key.to.fcid);
        to.set<use<wire::verf_fcl_query, "mask">>(key.to.mask);
        to.set<"label_0">(key.match[0]).set<"label_1">(key.match[1]);
    }
    return room;
}

model::label_key read_key(uint32_t type, const uint8_t *key) {
    if (const codec::layout &form = wire::key_of(type); is_same(form, wire::verf_fcu)) {
        const view<wire::verf_fcu> from(key);
        return {.vsan = from.get<"vsan">(), .to = {from.get<"fcid">(), from.get<"mask">()}};
    } else if (is_same(form, wire::verf_fcm)) {
        const view<wire::verf_fcm> from(key);
        return {.vsan = from.get<"vsan">(), .to = {from.get<"fcid">(), 0}};
    }
    const view<wire::verf_fcl_query> from(key);
    const uint32_t first = from.get<use<wire::verf_fcl_query, "fcid_or_source">>();
    const bool by_source = from.get<"cursor">() == RIB_ROUTE_SRC_LABEL;
    return {.vsan = from.get<"vsan">(),
            .type = from.get<"cursor">(),
            .source = by_source ? first : 0,
            .to = by_source ? model::destination{0, 0}
                            : model::destination{first, from.get<use<wire::verf_fcl_query, "mask">>()},
            .match_count = from.get<"n_label">(),
            .match = {from.get<"label_0">(), from.get<"label_1">()}};
}

} // namespace

bytes_of<wire::verf_query> encode(const verify_query &query) {
    bytes_of<wire::verf_query> bytes;
    writer<wire::verf_query>(bytes)
        .set<"uuid">(query.uuid)
        .set<"query">(query.query)
        .set<"type">(query.type)
        .set<"requested">(query.requested)
        .set_bytes<"key">(encode_key(query.type, query.from));
    return bytes;
}

verify_query read(view<wire::verf_query> query) {
    const uint32_t type = query.get<"type">();
    return {query.get<"uuid">(), query.get<"query">(), type, query.get<"requested">(),
            read_key(type, query.area<"key">().data())};
}

bytes_of<wire::sync_query> encode(const log_query &query) {
    bytes_of<wire::sync_query> bytes;
    writer<wire::sync_query>(bytes)
        .set<use<wire::sync_query, "uuid">>(query.uuid)
        .set<use<wire::sync_query, "log">>(query.log)
        .set<use<wire::sync_query, "sequence">>(query.sequence);
    return bytes;
}

log_query read(view<wire::sync_query> query) {
    return {query.get<use<wire::sync_query, "uuid">>(), query.get<use<wire::sync_query, "log">>(),
            query.get<use<wire::sync_query, "sequence">>()};
}

bytes_of<wire::fcu_lb_query> encode(const flow_query &query) {
    bytes_of<wire::fcu_lb_query> bytes;
    std::array<uint8_t, 8> header{};
    put_address(header, 0, query.flow.source);
    put_address(header, 3, query.flow.destination);
    header[6] = static_cast<uint8_t>(query.flow.exchange >> 8);
    header[7] = static_cast<uint8_t>(query.flow.exchange);
    writer<wire::fcu_lb_query>(bytes)
        .set<use<wire::fcu_lb_query, "uuid">>(query.uuid)
        .set<use<wire::fcu_lb_query, "vsan">>(query.flow.vsan)
        .set_bytes<"bytes_4">(header);
    return bytes;
}

flow_query read(view<wire::fcu_lb_query> query) {
    const auto header = query.area<"bytes_4">();
    return {query.get<use<wire::fcu_lb_query, "uuid">>(),
            {query.get<use<wire::fcu_lb_query, "vsan">>(), address_at(header, 0), address_at(header, 3),
             static_cast<uint16_t>(header[6] << 8 | header[7])}};
}

bytes_of<wire::registration> encode(const model::registration &said) {
    bytes_of<wire::registration> bytes;
    writer<wire::registration>(bytes)
        .set<"uuid">(said.client)
        .set<"distance">(said.distance)
        .set_text<"name">(said.name);
    bytes.back() = 0; // the name ends within its room
    return bytes;
}

model::registration read(view<wire::registration> said) {
    return {said.get<"uuid">(), said.get<"distance">(), std::string(said.text<"name">())};
}

} // namespace ribkit::protocol
