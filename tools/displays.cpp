// One row a display. Those whose arguments differ have a function here that calls them.
#include "tools/displays.h"

#include "codec/check.h"
#include "codec/messages/snmp.h"
#include "diag/display_layouts.h"
#include "diag/fields.h"
#include "rib_show.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

using namespace ribkit::codec;
using namespace ribkit::diag;

namespace ribkit::tools {

namespace {

/// The check of what is no message of its own.
template <const layout &L> uint32_t fits(const void *record, uint32_t size, rib_check_report *report) {
    return check<L>(L.name, record, size, report);
}

/// A display that takes a header flag and a record, whatever it returns.
template <auto Display> void plainly(uint32_t *header, const void *record) {
    Display(*header, record);
    *header = 0;
}

/// A display that has no header flag.
template <auto Display> void whole(uint32_t * /*header*/, const void *record) { Display(record); }

void show_fcl(uint32_t *header, const void *record) {
    constexpr uint32_t with_hops = 0;
    rib_show_fcl(*header, with_hops, record);
    *header = 0;
}

void show_fcmrt(uint32_t *header, const void *record) {
    constexpr uint32_t with_row = 1;
    constexpr uint32_t with_interfaces = 64;
    rib_show_fcmrt(*header, with_row, with_interfaces, record);
    *header = 0;
}

void show_snmp_fcroute(uint32_t *header, const void *record) {
    fcRouteEntry network{};
    fcRouteEntry entry{};
    std::memcpy(&network, record, sizeof network);
    fcRouteEntry_ntoh(&network, &entry);
    rib_show_snmp_fcroute(*header, &entry);
    *header = 0;
}

void show_versions(uint32_t * /*header*/, const void *record) {
    const fields list{record};
    const uint32_t count = list.word(wire::topo.at("n_version"));
    for (uint32_t position = 0; position < count; position++) {
        rib_show_version(list.word(wire::topo.size + size_t{4} * position), position, count);
    }
    if (count == 1) {
        std::putchar('\n'); // which the display leaves to its caller
    }
}

void show_db(uint32_t *header, const void *record) {
    const fields database{record};
    const uint32_t count = database.word(wire::db_info.at("n_vsan"));
    for (uint32_t i = 0; i < count; i++) {
        rib_show_db(*header, record, database.at(wire::db_info.size + size_t{wire::db_summary.size} * i));
        *header = 0;
    }
}

/// A report and what it found. Every report has its heads: without them the display is silent.
void show_verf_info(uint32_t * /*header*/, const void *record) {
    const fields report{record};
    const layout &key = wire::key_of(report.word(wire::verf_info.at("type")));
    const auto show_key = &key == &wire::verf_fcl   ? fib_show_verf_fcl
                          : &key == &wire::verf_fcm ? fib_show_verf_fcm
                                                    : fib_show_verf_fcu;
    rib_show_verf_info(1, record);
    const uint32_t count = report.word(wire::verf_info.at("n_key"));
    for (uint32_t i = 0; i < count; i++) {
        show_key(i == 0 ? 1 : 0, report.at(wire::verf_info.size + size_t{key.size} * i));
    }
}

constexpr display kinds[] = {
    {"rib_show_fcu", "unicast route and its next hops", fits<diag::shown_ucast_route>, plainly<rib_show_fcu>},
    {"rib_show_fcl", "label route and its next hops", rib_check_lbl_route, show_fcl},
    {"rib_show_fcm", "multicast route and its interfaces", rib_check_mcast_route, plainly<rib_show_fcm>},
    {"rib_show_fct", "version list of a client", rib_check_topo, plainly<rib_show_fct>},
    {"rib_show_fcurt", "unicast route as its protocol sees it", fits<diag::shown_ucast_route>, plainly<rib_show_fcurt>},
    {"rib_show_fcmrt", "multicast route as queries see it", rib_check_mcast_route, show_fcmrt},
    {"rib_show_sync_fcu", "entry of the unicast synchronisation log", rib_check_sync_fcu, plainly<rib_show_sync_fcu>},
    {"rib_show_sync_fcm", "entry of the multicast synchronisation log", rib_check_sync_fcm, plainly<rib_show_sync_fcm>},
    {"rib_show_sync_fcl", "entry of the label synchronisation log", rib_check_sync_fcl, plainly<rib_show_sync_fcl>},
    {"rib_show_sync_gbl", "state of a synchronisation log", fits<wire::sync_gbl>, plainly<rib_show_sync_gbl>},
    {"rib_show_snmp_fcroute", "row of the SNMP route table", fits<wire::fc_route_entry>, show_snmp_fcroute},
    {"rib_show_dm", "domains of a VSAN", fits<wire::dm_entry>, plainly<rib_show_dm>},
    {"rib_show_version", "versions of a version list", rib_check_topo, show_versions},
    {"rib_show_db", "route counts of all VSANs", rib_check_db_info, show_db},
    {"rib_show_db_total", "sum of the route counts", fits<wire::db_summary>, plainly<rib_show_db_total>},
    {"rib_show_verf_info", "verification report and its entries", rib_check_verf_info, show_verf_info},
    {"rib_show_register", "registration of a client", rib_check_register, plainly<rib_show_register>},
    {"rib_show_sys_port", "present ports of a module", fits<wire::module_entry>, rib_show_sys_port},
    {"rib_show_in_mem", "memory pools", fits<wire::in_mem>, whole<rib_show_in_mem>},
    {"rib_show_in_ha", "high-availability state", fits<wire::in_ha>, whole<rib_show_in_ha>},
    {"fib_show_verf_fcu", "unicast verification entry", fib_check_verf_fcu, plainly<fib_show_verf_fcu>},
    {"fib_show_verf_fcm", "multicast verification entry", fib_check_verf_fcm, plainly<fib_show_verf_fcm>},
    {"fib_show_verf_fcl", "label verification entry", fib_check_verf_fcl, plainly<fib_show_verf_fcl>},
    {"fib_show_vsan", "VSAN", fib_check_vsan, plainly<fib_show_vsan>},
    {"fib_show_port", "port", fib_check_port, plainly<fib_show_port>},
    {"fib_show_node", "node", fib_check_node, plainly<fib_show_node>},
};

} // namespace

std::span<const display> displays() { return kinds; }

const display *find_display(std::string_view name) {
    const auto *const found = std::find_if(std::begin(kinds), std::end(kinds), [&](const display &kind) {
        return kind.name == name || kind.short_name() == name;
    });
    return found == std::end(kinds) ? nullptr : found;
}

std::vector<std::string_view> display_names() {
    std::vector<std::string_view> names;
    for (const display &kind : kinds) {
        names.push_back(kind.short_name());
    }
    return names;
}

uint32_t record_size(const display &kind, std::span<const uint8_t> bytes, rib_check_report &report) {
    auto size = static_cast<uint32_t>(std::min(bytes.size(), size_t{UINT32_MAX}));
    uint32_t refused = kind.check(bytes.data(), size, &report);
    if (refused != 0 && report.rule == RIB_CHECK_EXCESS) {
        size = report.allowed; // where the first record ends
        refused = kind.check(bytes.data(), size, &report);
    }
    return refused == 0 ? size : 0;
}

} // namespace ribkit::tools
