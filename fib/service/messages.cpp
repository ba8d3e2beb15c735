// Messages are read by their layouts, one path after the other, and answered with what the FIB says.
#include "fib/service/messages.h"

#include "codec/checks/check.h"
#include "fib/update.h"
#include "protocol/fib/fib_records.h"
#include "protocol/queries.h"
#include "protocol/query_kinds.h"
#include "rib_check.h"
#include "ribkit_rib.h"

#include <algorithm>

namespace ribkit::fib {

namespace {

using codec::view;

/// What the messages of a table are, and how they are read and written.
template <class Kind> struct messages_of;

template <> struct messages_of<unicast> {
    using path = view<wire::fcu_path>;
    using update = protocol::unicast_fib_update;
    static constexpr const codec::layout &report = wire::fcu_rsp_path;
    static constexpr auto answer = protocol::fib_answer;

    static auto key_of(uint32_t vsan, const protocol::unicast_path &read) { return model::route_key{vsan, read.to}; }
    static const auto &key_to(const model::route_key &key) { return key.to; }

    protocol::way_words room;
};

template <> struct messages_of<multicast> {
    using path = view<wire::fcm_path>;
    using update = protocol::multicast_fib_update;
    static constexpr const codec::layout &report = wire::fcm_rsp_path;
    static constexpr auto answer = protocol::fib_multicast_answer;

    static auto key_of(uint32_t vsan, const protocol::multicast_path &read) { return model::route_key{vsan, read.to}; }
    static const auto &key_to(const model::route_key &key) { return key.to; }

    std::vector<uint32_t> room;
};

template <> struct messages_of<label> {
    using path = view<wire::fcl_path>;
    using update = protocol::label_fib_update;
    static constexpr const codec::layout &report = wire::fcl_rsp_path;
    static constexpr auto answer = protocol::fib_label_answer;

    static auto key_of(uint32_t /*vsan*/, const protocol::label_path &read) { return read.key; }
    static const auto &key_to(const model::label_key &key) { return key; }

    protocol::way_words room;
};

/// Of a label path the VSAN is part of the key.
auto read_path(view<wire::fcl_path> path, uint32_t vsan, protocol::way_words &room) {
    return protocol::path_of(path, vsan, room);
}
template <const codec::layout &L, class Room> auto read_path(view<L> path, uint32_t /*vsan*/, Room &room) {
    return protocol::path_of(path, room);
}

/// As many keys as an answer holds.
template <class Kind> size_t most_named() {
    constexpr const codec::layout &report = messages_of<Kind>::report;
    return (RIBKIT_ANSWER_LIMIT - report.size - wire::fib_rsp.size) / protocol::fault_size<messages_of<Kind>::report>;
}

template <class Kind> bytes answer_of(const table_answer<Kind> &answer) {
    const std::span<const model::fib_fault<typename Kind::key>> faults(answer.faults);
    return messages_of<Kind>::answer(answer.said, faults.first(std::min(faults.size(), most_named<Kind>())));
}

template <class Kind> bytes take_update_message(module &of, std::span<const uint8_t> message) {
    const view<wire::fib_update> update(message.data());
    const model::fib_head head = protocol::head_of(update);
    update_work<Kind> work(of.fib, head, protocol::paths_of(update));
    messages_of<Kind> reading;
    for (size_t at = wire::fib_update.size; at < message.size();) {
        const typename messages_of<Kind>::path path(message.data() + at);
        const auto read = read_path(path, head.vsan, reading.room);
        work.take(messages_of<Kind>::key_of(head.vsan, read), read.what);
        at += path.size();
    }
    return answer_of<Kind>(work.end());
}

bytes take_vsans(module &of, std::span<const uint8_t> message) {
    const view<wire::vsan_update> update(message.data());
    const uint32_t sequence = update.get<protocol::use<wire::vsan_update, "sequence">>();
    const auto vsans = protocol::vsans_of(update);
    const uint32_t result = of.fib.take_vsans(sequence, vsans);
    const auto taken = static_cast<uint32_t>(result == RIB_OK ? vsans.size() : 0);
    return protocol::fib_answer({.result = result, .accepted = taken, .sequence = sequence}, {});
}

bytes take_rewrites(module &of, std::span<const uint8_t> message) {
    std::vector<rewrite> paths;
    for (const auto &[key, what] : protocol::rewrites_of(message)) {
        paths.push_back({key, what});
    }
    const model::fib_head head = protocol::head_of(view<wire::vsan_rewrite_update>(message.data()));
    return protocol::rewrite_answer(of.fib.take_rewrites(head, paths));
}

/// Entries of one VSAN, from a key on, as an update that would add them.
template <class Kind, class Reaches>
bytes entries_from(const module &of, const typename Kind::key &from, uint32_t wanted, Reaches reaches) {
    const auto &all = of.fib.entries<Kind>().all();
    auto at = all.lower_bound(from);
    const uint32_t vsan = at != all.end() ? at->first.vsan : from.vsan;
    bytes message(RIBKIT_ANSWER_LIMIT);
    typename messages_of<Kind>::update update(message, {FIB_OPER_UPDATE, vsan, of.fib.sequence()});
    while (at != all.end() && update.paths() < wanted && at->first.vsan == vsan && reaches(at->first) &&
           add_path(update, messages_of<Kind>::key_to(at->first), table<Kind>::read(at->second))) {
        ++at;
    }
    message.resize(update.size());
    return message;
}

/// @param kind what the query's type means; null where it means nothing to a module
template <class Kind, class Query>
bytes answer_query(const module &of, const Query &asked, const protocol::query_kind *kind) {
    using protocol::chosen_keys;
    if (kind == nullptr || kind->form != protocol::answer_form::routes || kind->in_envelope ||
        kind->routes != protocol::chosen_routes::all || kind->keys == chosen_keys::holding) {
        return refusal(RIB_NOT_SUPPORTED);
    }
    return entries_from<Kind>(of, asked.from, asked.requested, [&](const typename Kind::key &key) {
        return kind->keys == chosen_keys::all ||
               (kind->keys == chosen_keys::exact ? key == asked.from : key.vsan == asked.from.vsan);
    });
}

bytes answer_unicast(module &of, std::span<const uint8_t> message) {
    const auto asked = protocol::read(view<wire::fcurt_query>(message.data()));
    return answer_query<unicast>(of, asked, protocol::find_kind(protocol::unicast_kinds, asked.type));
}

bytes answer_multicast(module &of, std::span<const uint8_t> message) {
    const auto asked = protocol::read(view<wire::fcmrt_query>(message.data()));
    return answer_query<multicast>(of, asked, protocol::find_kind(protocol::multicast_kinds, asked.type));
}

bytes answer_labels(module &of, std::span<const uint8_t> message) {
    const auto asked = protocol::read(view<wire::fclrt_query>(message.data()));
    const auto *kind = protocol::find_label_kind(asked.type);
    const bool is_of_all = (asked.type & protocol::label_routes_mask) == protocol::label_routes_all;
    const bool is_meant = kind != nullptr && (is_of_all || kind->keys == protocol::chosen_keys::exact);
    return answer_query<label>(of, asked, is_meant ? kind : nullptr);
}

bytes answer_node(module &of, std::span<const uint8_t> /*message*/) { return protocol::module_message(of.describe()); }

bytes answer_vsans(module &of, std::span<const uint8_t> message) {
    const auto asked = protocol::read_list_query<wire::vsan_query>(view<wire::vsan_query>(message.data()));
    const size_t room = (RIBKIT_ANSWER_LIMIT - wire::vsan_update.size) / wire::vsan.size;
    std::vector<std::pair<uint32_t, model::vsan_attributes>> found;
    const auto &all = of.fib.vsans();
    for (auto at = all.lower_bound(asked.first);
         at != all.end() && found.size() < std::min<size_t>(room, asked.requested); ++at) {
        found.emplace_back(at->first, of.fib.vsan(at->first));
    }
    return protocol::vsan_update(of.fib.sequence(), found);
}

bytes answer_flow(module &of, std::span<const uint8_t> message) {
    const auto asked = protocol::read(view<wire::fcu_lb_query>(message.data()));
    const auto way = of.fib.way_of(asked.flow);
    return way.empty() ? protocol::flow_info(RIB_NO_ENTRY, 0) : protocol::flow_info(RIB_OK, way[1]);
}

/// Where a query of differences begins.
model::route_key first_of(const unicast & /*kind*/, const model::label_key &from) { return {from.vsan, from.to}; }
model::multicast_key first_of(const multicast & /*kind*/, const model::label_key &from) { return {from.vsan, from.to}; }
model::label_key first_of(const label & /*kind*/, const model::label_key &from) { return from; }

template <class Kind> bytes differences(const module &of, const protocol::verify_query &asked) {
    table_answer<Kind> found;
    found.said.sequence = of.fib.sequence();
    const size_t most = std::min<size_t>(asked.requested, most_named<Kind>());
    const auto &all = of.fib.differences<Kind>();
    for (auto at = all.lower_bound(first_of(Kind(), asked.from)); at != all.end() && found.faults.size() < most; ++at) {
        found.faults.push_back({at->second, at->first});
    }
    bytes message = answer_of<Kind>(found);
    if (found.faults.empty()) {
        return bytes(messages_of<Kind>::report.size);
    }
    message.resize(message.size() - wire::fib_rsp.size); // the keys alone
    return message;
}

bytes answer_differences(module &of, std::span<const uint8_t> message) {
    const auto asked = protocol::read(view<wire::verf_query>(message.data()));
    const codec::layout &key = wire::key_of(asked.type);
    return protocol::is_same(key, wire::verf_fcl)   ? differences<label>(of, asked)
           : protocol::is_same(key, wire::verf_fcm) ? differences<multicast>(of, asked)
                                                    : differences<unicast>(of, asked);
}

/// The check of a message of the catalogue.
template <auto Check> uint32_t alone(std::span<const uint8_t> message, rib_check_report *report) {
    return Check(message.data(), static_cast<uint32_t>(message.size()), report);
}

uint32_t check_vsan_query(std::span<const uint8_t> message, rib_check_report *report) {
    return codec::check<wire::vsan_query>(wire::vsan_query.name, message.data(), static_cast<uint32_t>(message.size()),
                                          report);
}

constexpr message_handler rows[] = {
    {RIBKIT_OPCODE_FIB_FCU_UPDATE, protocol::check_unicast_fib_update, take_update_message<unicast>},
    {RIBKIT_OPCODE_FIB_FCM_UPDATE, protocol::check_multicast_fib_update, take_update_message<multicast>},
    {RIBKIT_OPCODE_FIB_FCL_UPDATE, protocol::check_label_fib_update, take_update_message<label>},
    {RIBKIT_OPCODE_FIB_VSAN_UPDATE, alone<fib_check_vsan_update>, take_vsans},
    {RIBKIT_OPCODE_FIB_REWRITE_UPDATE, protocol::check_rewrite_update, take_rewrites},
    {RIBKIT_OPCODE_FIB_FCU_QUERY, alone<rib_check_fcurt_query>, answer_unicast},
    {RIBKIT_OPCODE_FIB_FCM_QUERY, alone<rib_check_fcmrt_query>, answer_multicast},
    {RIBKIT_OPCODE_FIB_FCL_QUERY, alone<rib_check_fclrt_query>, answer_labels},
    {RIBKIT_OPCODE_FIB_NODE_QUERY, alone<rib_check_node_query>, answer_node},
    {RIBKIT_OPCODE_FIB_VSAN_QUERY, check_vsan_query, answer_vsans},
    {RIBKIT_OPCODE_FIB_LB_QUERY, alone<rib_fib_check_fcu_lb_query>, answer_flow},
    {RIBKIT_OPCODE_FIB_VERF_QUERY, alone<rib_check_verf_query>, answer_differences},
};

} // namespace

std::span<const message_handler> message_handlers() { return rows; }

const message_handler *find_handler(uint32_t opcode) {
    const auto *found =
        std::find_if(std::begin(rows), std::end(rows), [&](const auto &row) { return row.opcode == opcode; });
    return found == std::end(rows) ? nullptr : found;
}

bytes refusal(uint32_t result) { return protocol::fib_answer({.result = result}, {}); }

model::module_node module::describe() const {
    model::module_node now = self;
    now.state = fib.now();
    now.sequence = fib.sequence();
    now.entries = fib.count();
    return now;
}

} // namespace ribkit::fib
