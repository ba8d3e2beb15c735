// Entries are shown as the routes that they come from: of the RIB, which is all that a module knows of their owners.
#include "cli/rib/module_kinds.h"

#include "base/text.h"
#include "bus/rib_link.h"
#include "cli/rib/route_records.h"
#include "diag/display_layouts.h"
#include "protocol/fib/fib_checks.h"
#include "protocol/fib/fib_messages.h"
#include "protocol/fib/fib_records.h"
#include "protocol/queries.h"
#include "protocol/uses.h"
#include "rib_codes.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace ribkit::cli {

namespace {

using bus::module_link;
using codec::view;
using protocol::bytes;

constexpr uint32_t self = RIB_CLIENT_OPERATOR;
constexpr uint32_t owner = RIB_CLIENT_RIB;
constexpr uint32_t any_number = UINT32_MAX;

[[noreturn]] void tell_refusal(uint32_t result) {
    throw std::runtime_error("the module refuses: " + bus::result_text(result));
}

/// An answer that has passed its check. Throws where the module answers that it cannot, or something else.
bytes ask_checked(module_link &link, uint32_t opcode, std::span<const uint8_t> query, protocol::whole_check *check) {
    bytes said = link.ask(opcode, query);
    if (check(said, nullptr) == RIB_OK) {
        return said;
    }
    if (said.size() == wire::fib_rsp.size) {
        tell_refusal(protocol::answer_of(view<wire::fib_rsp>(said.data())).result);
    }
    throw std::runtime_error("the module's answer is damaged");
}

template <auto Check> uint32_t alone(std::span<const uint8_t> message, rib_check_report *report) {
    return Check(message.data(), static_cast<uint32_t>(message.size()), report);
}

template <const codec::layout &L>
void add_wanted(record_list &all, std::span<const uint8_t> record, const record_filter &wanted) {
    if (is_wanted<L>(record.data(), wanted)) {
        all.add(record);
    }
}

/// Asks again and again, from the key behind the last one, until nothing comes.
/// @param ask makes a checked answer of a key
/// @param take is called with each path, and returns its key
template <const codec::layout &Path, class Key, class Ask, class Take>
void read_entries(Key from, const Ask &ask, const Take &take) {
    for (;;) {
        const bytes said = ask(from);
        const view<wire::fib_update> head(said.data());
        if (protocol::paths_of(head) == 0) {
            return;
        }
        for (size_t at = wire::fib_update.size; at < said.size();) {
            const view<Path> path(said.data() + at);
            from = take(path, protocol::head_of(head).vsan);
            at += path.size();
        }
        if constexpr (std::is_same_v<Key, model::label_key>) {
            from = model::key_after(from);
        } else {
            from = model::key_after(from);
        }
    }
}

// Of all VSANs, or of the one that the filter names.
constexpr uint32_t all_unicast = 0x1;
constexpr uint32_t unicast_of_vsan = 0x100;
constexpr uint32_t all_multicast = 0x1;
constexpr uint32_t multicast_of_vsan = 0x2;
constexpr uint32_t all_labels = 0x1f;
constexpr uint32_t labels_of_vsan = 0x2f;

std::vector<model::next_hop> hops_of(std::span<const uint32_t> ways) {
    std::vector<model::next_hop> hops;
    while (!ways.empty()) {
        const auto way = model::take_label_hop(ways);
        hops.push_back({way[1], model::domain_of_ctrl(way[0])});
    }
    return hops;
}

record_list read_unicast(module_link &link, const record_filter &wanted) {
    record_list all;
    const auto ask = [&](const model::route_key &from) {
        const protocol::unicast_query query{self, wanted.vsan ? unicast_of_vsan : all_unicast, any_number, from};
        return ask_checked(link, RIBKIT_OPCODE_FIB_FCU_QUERY, protocol::encode(query),
                           protocol::check_unicast_fib_update);
    };
    protocol::way_words room;
    read_entries<wire::fcu_path>(model::route_key{wanted.vsan.value_or(0), {0, 0}}, ask, [&](auto path, uint32_t vsan) {
        const auto [to, what] = protocol::path_of(path, room);
        const model::route_key key{vsan, to};
        const auto hops = hops_of(what.ways);
        model::carried_bytes carried{};
        std::copy(what.carried.begin(), what.carried.end(), carried.begin());
        record_list one;
        add_record(one, owner, key, model::route_values{what.metric, what.flag, hops, carried});
        add_wanted<diag::shown_ucast_route>(all, one[0], wanted);
        return key;
    });
    return all;
}

record_list read_multicast(module_link &link, const record_filter &wanted) {
    record_list all;
    const auto ask = [&](const model::multicast_key &from) {
        const protocol::multicast_query query{self, wanted.vsan ? multicast_of_vsan : all_multicast, any_number, from};
        return ask_checked(link, RIBKIT_OPCODE_FIB_FCM_QUERY, protocol::encode(query),
                           protocol::check_multicast_fib_update);
    };
    std::vector<uint32_t> room;
    read_entries<wire::fcm_path>(model::multicast_key{wanted.vsan.value_or(0), {0, 0}}, ask,
                                 [&](auto path, uint32_t vsan) {
                                     const auto read = protocol::path_of(path, room);
                                     const model::multicast_key key{vsan, read.to};
                                     record_list one;
                                     add_record(one, owner, key, read.what);
                                     add_wanted<wire::mcast_route>(all, one[0], wanted);
                                     return key;
                                 });
    return all;
}

record_list read_labels(module_link &link, const record_filter &wanted) {
    record_list all;
    const auto ask = [&](const model::label_key &from) {
        const protocol::label_query query{self, wanted.vsan ? labels_of_vsan : all_labels, any_number, from};
        return ask_checked(link, RIBKIT_OPCODE_FIB_FCL_QUERY, protocol::encode(query),
                           protocol::check_label_fib_update);
    };
    protocol::way_words room;
    read_entries<wire::fcl_path>(model::label_key{.vsan = wanted.vsan.value_or(0)}, ask, [&](auto path, uint32_t vsan) {
        const auto read = protocol::path_of(path, vsan, room);
        record_list one;
        add_record(one, owner, read.key, model::label_values{{}, read.what.ways});
        add_wanted<wire::lbl_route>(all, one[0], wanted);
        return read.key;
    });
    return all;
}

/// What the module tells the RIB of itself: its record, and its ports behind.
bytes read_module(module_link &link) {
    return ask_checked(link, RIBKIT_OPCODE_FIB_NODE_QUERY, protocol::encode(protocol::node_query{self, 0, 0}),
                       protocol::check_module_message);
}

record_list read_node(module_link &link, const record_filter &wanted) {
    const bytes module = read_module(link);
    record_list all;
    add_wanted<wire::node>(all, std::span(module).first(wire::node.size), wanted);
    return all;
}

record_list read_ports(module_link &link, const record_filter &wanted) {
    record_list all;
    for (const model::module_port &port : protocol::module_of(read_module(link)).ports) {
        add_wanted<wire::port>(all, protocol::port_message(port), wanted);
    }
    return all;
}

record_list read_vsans(module_link &link, const record_filter &wanted) {
    record_list all;
    for (uint32_t first = wanted.vsan.value_or(0);;) {
        const bytes said =
            ask_checked(link, RIBKIT_OPCODE_FIB_VSAN_QUERY,
                        protocol::encode<wire::vsan_query>(protocol::list_query{self, 1, any_number, first}),
                        alone<fib_check_vsan_update>);
        const auto vsans = view<wire::vsan_update>(said.data()).list<"vsan">();
        if (vsans.empty()) {
            return all;
        }
        for (const auto vsan : vsans) {
            add_wanted<wire::vsan>(all, {vsan.data(), wire::vsan.size}, wanted);
            first = vsan.get<"word_4", "vsan">() + 1;
        }
    }
}

/// What comparisons have found, key by key. An answer that does not go on is the last.
template <const codec::layout &Report, const codec::layout &Entry, auto Check, uint32_t Type>
record_list read_found(module_link &link, const record_filter &wanted) {
    record_list all;
    for (model::label_key from{.vsan = wanted.vsan.value_or(0)};;) {
        const protocol::verify_query query{self, 1, Type, any_number, from};
        const bytes said = ask_checked(link, RIBKIT_OPCODE_FIB_VERF_QUERY, protocol::encode(query), alone<Check>);
        const view<Report> report(said.data());
        if (const uint32_t result = report.template get<protocol::use<Report, "result">>(); result != RIB_OK) {
            tell_refusal(result); // it is as long as a report without keys
        }
        model::label_key next = from;
        for (const auto entry : report.template list<"entry">()) {
            add_wanted<Entry>(all, {entry.data(), Entry.size}, wanted);
            next = protocol::key_behind(entry);
        }
        if (!(from < next)) {
            return all;
        }
        from = next;
    }
}

using protocol::compared_labels;
using protocol::compared_multicast;
using protocol::compared_unicast;

constexpr module_kind rows[] = {
    {"fcu", filters_of<diag::shown_ucast_route>(), read_unicast},
    {"fcm", filters_of<wire::mcast_route>(), read_multicast},
    {"fcl", filters_of<wire::lbl_route>(), read_labels},
    {"verf_fcu", filters_of<wire::verf_fcu>(),
     read_found<wire::fcu_rsp_path, wire::verf_fcu, fib_check_fcu_rsp_path, compared_unicast>},
    {"verf_fcm", filters_of<wire::verf_fcm>(),
     read_found<wire::fcm_rsp_path, wire::verf_fcm, fib_check_fcm_rsp_path, compared_multicast>},
    {"verf_fcl", filters_of<wire::verf_fcl>(),
     read_found<wire::fcl_rsp_path, wire::verf_fcl, fib_check_fcl_rsp_path, compared_labels>},
    {"vsan", {.vsan = true}, read_vsans},
    {"port", filters_of<wire::port>(), read_ports},
    {"node", filters_of<wire::node>(), read_node},
};

} // namespace

const module_kind *find_module_kind(std::string_view display) {
    const auto *const found =
        std::find_if(std::begin(rows), std::end(rows), [&](const module_kind &row) { return row.display == display; });
    return found == std::end(rows) ? nullptr : found;
}

} // namespace ribkit::cli
