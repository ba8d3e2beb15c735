// Each row asks its questions anew: a display stands for one look at the RIB.
#include "cli/rib/shown_kinds.h"

#include "cli/rib/route_records.h"
#include "clients/state_reader.h"
#include "clients/table_reader.h"
#include "codec/messages/forms.h"
#include "diag/display_layouts.h"
#include "model/system.h"
#include "protocol/fib/fib_messages.h"
#include "protocol/queries.h"
#include "protocol/uses.h"
#include "rib_codes.h"
#include "rib_mem.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace ribkit::cli {

namespace {

using bus::rib_link;
using codec::view;

constexpr uint32_t self = RIB_CLIENT_OPERATOR;

/// Adds the record where it is wanted.
template <const codec::layout &L>
void add_wanted(record_list &all, std::span<const uint8_t> record, const record_filter &wanted) {
    if (is_wanted<L>(record.data(), wanted)) {
        all.add(record);
    }
}

/// The routes of a table as records of a layout, one each.
template <class Table, const codec::layout &L>
record_list read_routes(rib_link &link, const record_filter &wanted, bool active = false) {
    record_list all;
    clients::read_table<Table>(link, {self, wanted.vsan, {}, active},
                               [&](uint32_t owner, const auto &key, const auto &what) {
                                   record_list one;
                                   add_record(one, owner, key, what);
                                   add_wanted<L>(all, one[0], wanted);
                               });
    return all;
}

record_list read_unicast(rib_link &link, const record_filter &wanted) {
    return read_routes<clients::unicast_table, diag::shown_ucast_route>(link, wanted);
}

record_list read_multicast(rib_link &link, const record_filter &wanted) {
    return read_routes<clients::multicast_table, wire::mcast_route>(link, wanted);
}

record_list read_labels(rib_link &link, const record_filter &wanted) {
    return read_routes<clients::label_table, wire::lbl_route>(link, wanted);
}

record_list read_snmp_rows(rib_link &link, const record_filter &wanted) {
    record_list all;
    clients::read_table<clients::unicast_table>(link, {self, wanted.vsan, {}, true},
                                                [&](uint32_t owner, const auto &key, const auto &what) {
                                                    record_list rows;
                                                    if (!wanted.owner || wanted.owner == owner) {
                                                        add_snmp_rows(rows, owner, key, what);
                                                    }
                                                    for (size_t i = 0; i < rows.size(); i++) {
                                                        add_wanted<wire::fc_route_entry>(all, rows[i], wanted);
                                                    }
                                                });
    return all;
}

/// The messages themselves.
template <const codec::layout &L>
record_list wanted_messages(const std::vector<clients::bytes> &messages, const record_filter &wanted) {
    record_list all;
    for (const clients::bytes &message : messages) {
        add_wanted<L>(all, message, wanted);
    }
    return all;
}

/// The entries of the messages' lists.
template <const codec::layout &Entry, const codec::layout &L, codec::field_called List>
record_list wanted_entries(const std::vector<clients::bytes> &messages, const record_filter &wanted) {
    record_list all;
    for (const clients::bytes &message : messages) {
        for (const auto entry : view<L>(message.data()).template list<List>()) {
            add_wanted<Entry>(all, {entry.data(), Entry.size}, wanted);
        }
    }
    return all;
}

record_list read_versions(rib_link &link, const record_filter &wanted) {
    return wanted_messages<wire::topo>(clients::read_versions(link, {self, wanted.vsan}), wanted);
}

record_list read_databases(rib_link &link, const record_filter &wanted) {
    return wanted_messages<wire::db_info>(clients::read_databases(link, {self, wanted.vsan}), wanted);
}

record_list read_database_total(rib_link &link, const record_filter &wanted) {
    std::array<uint8_t, wire::db_summary.size> sum{};
    const codec::writable_view<wire::db_summary> total(sum.data());
    for (const clients::bytes &message : clients::read_databases(link, {self, wanted.vsan})) {
        for (const auto vsan : view<wire::db_info>(message.data()).list<"vsan">()) {
            total.set<"modified">(std::max(total.get<"modified">(), vsan.get<"modified">()));
            total.set<"ucast">(total.get<"ucast">() + vsan.get<"ucast">());
            total.set<"mcast">(total.get<"mcast">() + vsan.get<"mcast">());
            total.set<"label">(total.get<"label">() + vsan.get<"label">());
        }
    }
    record_list all;
    all.add(sum);
    return all;
}

record_list read_domains(rib_link &link, const record_filter &wanted) {
    return wanted_entries<wire::dm_entry, wire::dm_info, "vsan">(clients::read_domains(link, {self, wanted.vsan}),
                                                                 wanted);
}

record_list read_vsans(rib_link &link, const record_filter &wanted) {
    return wanted_entries<wire::vsan, wire::vsan_update, "vsan">(clients::read_vsans(link, {self, wanted.vsan}),
                                                                 wanted);
}

record_list read_registrations(rib_link &link, const record_filter &wanted) {
    return wanted_entries<wire::reg_entry, wire::reg_info, "client">({clients::read_registrations(link, self)}, wanted);
}

record_list read_modules(rib_link &link, const record_filter &wanted) {
    return wanted_entries<wire::module_entry, wire::sys_info, "module">({clients::read_modules(link, self)}, wanted);
}

record_list read_nodes(rib_link &link, const record_filter &wanted) {
    const record_list modules = read_modules(link, wanted);
    record_list all;
    for (size_t i = 0; i < modules.size(); i++) {
        for (const auto node : view<wire::module_entry>(modules[i].data()).list<"node">()) {
            add_wanted<wire::node>(all, {node.data(), wire::node.size}, wanted);
        }
    }
    return all;
}

record_list read_ports(rib_link &link, const record_filter &wanted) {
    constexpr uint32_t map_size = 8;
    const record_list modules = read_modules(link, {});
    record_list all;
    for (size_t i = 0; i < modules.size(); i++) {
        const view<wire::module_entry> module(modules[i].data());
        const auto ports = module.list<"port">();
        for (uint32_t at = 0; at < ports.size(); at++) {
            if (bmap_is_set(module.data() + wire::module_entry.at("ports"), map_size, at) != 0) {
                add_wanted<wire::port>(all, {ports[at].data(), wire::port.size}, wanted);
            }
        }
    }
    return all;
}

/// The body of an answer about the RIB's own structures.
template <uint32_t Structure> record_list read_structure(rib_link &link, const record_filter & /*wanted*/) {
    const clients::bytes answer = clients::read_structure(link, self, Structure);
    record_list all;
    all.add(std::span(answer).subspan(wire::in_info.size));
    return all;
}

template <const codec::layout &L, uint32_t Log> record_list read_log(rib_link &link, const record_filter &wanted) {
    const clients::bytes answer = clients::read_log(link, self, Log);
    record_list all;
    for (std::span<const uint8_t> left(answer); !left.empty(); left = left.subspan(L.size)) {
        const bool is_marker = view<L>(left.data()).template get<"index">() == model::log_marker;
        is_marker ? all.add(left.first(L.size)) : add_wanted<L>(all, left.first(L.size), wanted);
    }
    return all;
}

/// Of a log: its latest change, and the index that the next one gets.
template <const codec::layout &L> void add_state(record_list &all, const record_list &log) {
    if (log.size() < 2) { // nothing but a marker
        return;
    }
    const view<L> last(log[log.size() - 2].data());
    std::array<uint8_t, wire::sync_gbl.size> state;
    codec::writer<wire::sync_gbl>(state)
        .set<"index">(last.template get<"index">())
        .template set<"sequence">(last.template get<"sequence">())
        .template set<"time">(last.template get<"time">())
        .template set<"next">((last.template get<"index">() + 1) % model::logged_changes);
    all.add(state);
}

record_list read_log_states(rib_link &link, const record_filter & /*wanted*/) {
    record_list all;
    add_state<wire::sync_fcl>(all, read_log<wire::sync_fcl, clients::label_log>(link, {}));
    add_state<wire::sync_fcm>(all, read_log<wire::sync_fcm, clients::multicast_log>(link, {}));
    add_state<wire::sync_fcu>(all, read_log<wire::sync_fcu, clients::unicast_log>(link, {}));
    return all;
}

using protocol::compared_labels;
using protocol::compared_multicast;
using protocol::compared_unicast;

record_list read_reports(rib_link &link, const record_filter & /*wanted*/) {
    record_list all;
    for (const uint32_t type : {compared_labels, compared_multicast, compared_unicast}) {
        if (const auto report = clients::read_verification(link, self, type)) {
            all.add(*report);
        }
    }
    return all;
}

/// What a comparison has found, route by route. An answer that does not go on is the last.
template <const codec::layout &L, uint32_t Type> record_list read_found(rib_link &link, const record_filter &wanted) {
    record_list all;
    for (model::label_key from{.vsan = wanted.vsan.value_or(0)};;) {
        const auto report = clients::read_verification(link, self, Type, from);
        const size_t size = report ? report->size() : 0;
        for (size_t at = wire::verf_info.size; at + L.size <= size; at += L.size) {
            add_wanted<L>(all, std::span(*report).subspan(at, L.size), wanted);
        }
        if (size < wire::verf_info.size + L.size) {
            return all;
        }
        const auto next = protocol::key_behind(codec::view<L>(report->data() + size - L.size));
        if (!(from < next)) {
            return all;
        }
        from = next;
    }
}

constexpr filter_bits none{};
constexpr filter_bits of_vsan{.vsan = true};
constexpr uint32_t availability = 1;
constexpr uint32_t memory = 2;

constexpr filter_bits of_routes = filters_of<diag::shown_ucast_route>();

constexpr shown_kind rows[] = {
    {"fcu", of_routes, read_unicast},
    {"fcl", filters_of<wire::lbl_route>(), read_labels},
    {"fcm", filters_of<wire::mcast_route>(), read_multicast},
    {"fct", filters_of<wire::topo>(), read_versions},
    {"fcurt", of_routes, read_unicast},
    {"fcmrt", filters_of<wire::mcast_route>(), read_multicast},
    {"sync_fcu", filters_of<wire::sync_fcu>(), read_log<wire::sync_fcu, clients::unicast_log>},
    {"sync_fcm", filters_of<wire::sync_fcm>(), read_log<wire::sync_fcm, clients::multicast_log>},
    {"sync_fcl", filters_of<wire::sync_fcl>(), read_log<wire::sync_fcl, clients::label_log>},
    {"sync_gbl", none, read_log_states},
    {"snmp_fcroute", of_routes, read_snmp_rows},
    {"dm", of_vsan, read_domains},
    {"version", filters_of<wire::topo>(), read_versions},
    {"db", of_vsan, read_databases},
    {"db_total", of_vsan, read_database_total},
    {"verf_info", none, read_reports},
    {"register", filters_of<wire::reg_entry>(), read_registrations},
    {"sys_port", none, read_modules},
    {"in_mem", none, read_structure<memory>},
    {"in_ha", none, read_structure<availability>},
    {"verf_fcu", filters_of<wire::verf_fcu>(), read_found<wire::verf_fcu, compared_unicast>},
    {"verf_fcm", filters_of<wire::verf_fcm>(), read_found<wire::verf_fcm, compared_multicast>},
    {"verf_fcl", filters_of<wire::verf_fcl>(), read_found<wire::verf_fcl, compared_labels>},
    {"vsan", of_vsan, read_vsans},
    {"port", filters_of<wire::port>(), read_ports},
    {"node", filters_of<wire::node>(), read_nodes},
};

} // namespace

std::span<const shown_kind> shown_kinds() { return rows; }

const shown_kind *find_shown_kind(std::string_view display) {
    const auto *const found =
        std::find_if(std::begin(rows), std::end(rows), [&](const shown_kind &row) { return row.display == display; });
    return found == std::end(rows) ? nullptr : found;
}

record_list read_active_routes(rib_link &link, const record_filter &wanted) {
    return read_routes<clients::unicast_table, diag::shown_ucast_route>(link, wanted, true);
}

} // namespace ribkit::cli
