// One row a display. Those whose arguments differ have a function here that calls them.
#include "cli/messages/displays.h"

#include "base/input_error.h"
#include "base/near_names.h"
#include "catalogue/messages.h"
#include "codec/checks/check.h"
#include "codec/messages/snmp.h"
#include "codec/view.h"
#include "diag/display_layouts.h"
#include "rib_codes.h"
#include "rib_show.h"

#include <algorithm>
#include <cstdio>

using namespace ribkit::codec;
using namespace ribkit::diag;

namespace ribkit::cli {

namespace {

/// The check of what is no message of its own.
template <const layout &L> uint32_t fits(const void *record, uint32_t size, rib_check_report *report) {
    return check<L>(L.name, record, size, report);
}

void show_fcmrt(uint32_t *header, const void *record) {
    constexpr uint32_t with_row = 1;
    constexpr uint32_t with_interfaces = 64;
    rib_show_fcmrt(*header, with_row, with_interfaces, record);
    *header = 0;
}

void show_versions(uint32_t * /*header*/, const void *record) {
    const auto versions = view<wire::topo>(record).list<"version">();
    for (uint32_t position = 0; position < versions.size(); position++) {
        rib_show_version(versions[position].get<"version">(), position, versions.size());
    }
    if (versions.size() == 1) {
        std::putchar('\n'); // which the display leaves to its caller
    }
}

/// Of a message, as its row in the catalogue has it.
consteval display display_of(std::string_view message_name, std::string_view name, const char *what) {
    const auto *row = std::find_if(std::begin(catalogue::messages), std::end(catalogue::messages),
                                   [=](const message &m) { return m.name == message_name; });
    return {name, what, message_name, row->check, row->show}; // does not compile where there is no row
}

/// Another one of a message, or of a part of a message.
template <auto Show>
consteval display other_display(std::string_view message_name, message::checker check, std::string_view name,
                                const char *what) {
    return {name, what, message_name, check, catalogue::shown<Show>};
}

constexpr display kinds[] = {
    other_display<rib_show_fcu>("shown_ucast_route", fits<diag::shown_ucast_route>, "rib_show_fcu",
                                "unicast route and its next hops"),
    display_of("rib_lbl_route", "rib_show_fcl", "label route and its next hops"),
    display_of("rib_mcast_route", "rib_show_fcm", "multicast route and its interfaces"),
    display_of("rib_topo", "rib_show_fct", "version list of a client"),
    other_display<rib_show_fcurt>("shown_ucast_route", fits<diag::shown_ucast_route>, "rib_show_fcurt",
                                  "unicast route as its protocol sees it"),
    other_display<show_fcmrt>("rib_mcast_route", rib_check_mcast_route, "rib_show_fcmrt",
                              "multicast route as queries see it"),
    display_of("rib_sync_fcu", "rib_show_sync_fcu", "entry of the unicast synchronisation log"),
    display_of("rib_sync_fcm", "rib_show_sync_fcm", "entry of the multicast synchronisation log"),
    display_of("rib_sync_fcl", "rib_show_sync_fcl", "entry of the label synchronisation log"),
    other_display<rib_show_sync_gbl>("sync_gbl", fits<wire::sync_gbl>, "rib_show_sync_gbl",
                                     "state of a synchronisation log"),
    other_display<catalogue::show_snmp_route>("fcRouteEntry", fits<wire::fc_route_entry>, "rib_show_snmp_fcroute",
                                              "row of the SNMP route table"),
    other_display<rib_show_dm>("dm_entry", fits<wire::dm_entry>, "rib_show_dm", "domains of a VSAN"),
    other_display<show_versions>("rib_topo", rib_check_topo, "rib_show_version", "versions of a version list"),
    display_of("rib_db_info", "rib_show_db", "route counts of all VSANs"),
    other_display<rib_show_db_total>("db_summary", fits<wire::db_summary>, "rib_show_db_total",
                                     "sum of the route counts"),
    display_of("rib_verf_info", "rib_show_verf_info", "verification report and its entries"),
    display_of("rib_register", "rib_show_register", "registration of a client"),
    other_display<rib_show_sys_port>("module", fits<wire::module_entry>, "rib_show_sys_port",
                                     "present ports of a module"),
    other_display<rib_show_in_mem>("in_mem", fits<wire::in_mem>, "rib_show_in_mem", "memory pools"),
    other_display<rib_show_in_ha>("in_ha", fits<wire::in_ha>, "rib_show_in_ha", "high-availability state"),
    display_of("fib_verf_fcu", "fib_show_verf_fcu", "unicast verification entry"),
    display_of("fib_verf_fcm", "fib_show_verf_fcm", "multicast verification entry"),
    display_of("fib_verf_fcl", "fib_show_verf_fcl", "label verification entry"),
    display_of("fib_vsan", "fib_show_vsan", "VSAN"),
    display_of("fib_port", "fib_show_port", "port"),
    display_of("fib_node", "fib_show_node", "node"),
};

} // namespace

std::span<const display> displays() { return kinds; }

const display *find_display(std::string_view name) {
    const auto *const found = std::find_if(std::begin(kinds), std::end(kinds), [&](const display &kind) {
        return kind.name == name || kind.short_name() == name;
    });
    return found == std::end(kinds) ? nullptr : found;
}

const display &display_named(const std::string &name) {
    const display *found = find_display(name);
    if (found == nullptr) {
        throw base::input_error(base::no_such_name(name, "display", display_names(), "ribkit show --list"));
    }
    return *found;
}

std::vector<std::string_view> display_names() {
    std::vector<std::string_view> names;
    for (const display &kind : kinds) {
        names.push_back(kind.short_name());
    }
    return names;
}

uint32_t record_size(const display &kind, std::span<const uint8_t> bytes, rib_check_report &report) {
    const auto size = static_cast<uint32_t>(std::min(bytes.size(), size_t{UINT32_MAX}));
    if (kind.check(bytes.data(), size, &report) == RIB_OK) {
        return size;
    }
    return report.rule == RIB_CHECK_EXCESS ? report.allowed : 0; // sound, and it ends before the bytes do
}

} // namespace ribkit::cli
