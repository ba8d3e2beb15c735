// The catalogue and what stands beside it, as one list.
#include "decode/kinds.h"

#include "codec/checks/check.h"
#include "codec/message.h"
#include "codec/messages/forms.h"
#include "codec/messages/snmp.h"
#include "decode/images.h"
#include "diag/display_layouts.h"
#include "protocol/claim.h"
#include "protocol/requests.h"
#include "rib_codes.h"
#include "rib_mem.h"
#include "rib_wrap.h"

#include <algorithm>

namespace ribkit::decode {

namespace {

template <const codec::layout &L> uint32_t fits(const void *record, uint32_t size, rib_check_report *report) {
    using own = codec::checked_layouts<L>;
    return codec::check(own::tables, own::template plan<L>(), L.name, record, size, report);
}

template <const codec::layout &L> constexpr kind record(const char *name, const char *what) {
    return {name, &L, fits<L>, oddity::none, what};
}

/// The envelope of an answer: there is no operation code.
constexpr codec::layout cmi_answer{
    "cmi_answer", 112, {wire::cmi_envelope[0], wire::cmi_envelope[1], wire::cmi_envelope[2], wire::cmi_envelope[3]}};

constexpr kind others[] = {
    {"rib_cmi_request", &wire::cmi_envelope, rib_check_cmi_request, oddity::envelope, "envelope of a request"},
    {"rib_cmi_answer", &cmi_answer, rib_check_cmi_answer, oddity::envelope, "envelope of an answer"},
    {"bud_image", &bud_image, bud_check_image, oddity::bud_image, "saved buddy allocator"},
    {"cont_image", &cont_image, cont_check_image, oddity::none, "saved allocator of contiguous segments"},
    record<wire::fib_state>("fib_state", "state of a module's FIB"),
    record<wire::vsan_query>("vsan_query", "query about VSANs"),
    record<wire::in_ha>("in_ha", "body of rib_in_info, kind 1"),
    record<wire::in_mem>("in_mem", "body of rib_in_info, kind 2"),
    record<wire::db_summary>("db_summary", "VSAN of rib_db_info"),
    record<wire::dm_entry>("dm_entry", "VSAN of rib_dm_info"),
    record<wire::module_entry>("module", "module of rib_sys_info"),
    record<diag::shown_ucast_route>("shown_ucast_route", "rib_ucast_route as displays read it"),
    record<protocol::claim>("rib_claim", "claim to the RIB's address"),
    record<wire::sync_gbl>("sync_gbl", "state of a synchronisation log"),
    record<wire::fc_route_entry>("fcRouteEntry", "row of the SNMP route table"),
    record<wire::fc_route_flow_stat_entry>("fcRouteFlowStatEntry", "row of the SNMP flow statistics"),
};

oddity oddity_of(const codec::layout &l) {
    return &l == &wire::verf_query                               ? oddity::verf_query
           : &l == &wire::verf_info                              ? oddity::verf_info
           : &l == &wire::in_info                                ? oddity::in_info
           : &l == &wire::ucast_route || &l == &wire::fcurt_info ? oddity::hops
                                                                 : oddity::none;
}

std::vector<kind> all_kinds() {
    std::vector<kind> all(std::begin(others), std::end(others));
    for (const codec::message &m : codec::messages()) {
        all.push_back({m.name.data(), m.wire, m.check, oddity_of(*m.wire)});
    }
    return all;
}

std::string_view short_name(std::string_view name) {
    for (const std::string_view prefix : {"rib_fib_", "rib_", "fib_"}) {
        if (name.starts_with(prefix)) {
            return name.substr(prefix.size());
        }
    }
    return name;
}

} // namespace

bool kind::is_open() const { return odd != oddity::none || codec::is_open(wire->last()); }

std::span<const kind> kinds() {
    static const std::vector<kind> all = all_kinds();
    return all;
}

const kind *find_kind(std::string_view name) {
    for (const auto &same :
         {+[](const kind &k) { return std::string_view(k.name); }, +[](const kind &k) { return short_name(k.name); }}) {
        const auto found = std::find_if(kinds().begin(), kinds().end(), [&](const kind &k) { return same(k) == name; });
        if (found != kinds().end()) {
            return &*found;
        }
    }
    return nullptr;
}

std::vector<std::string_view> kind_names(std::string_view wanted) {
    const bool whole = short_name(wanted) != wanted;
    std::vector<std::string_view> names;
    for (const kind &k : kinds()) {
        names.push_back(whole ? k.name : short_name(k.name));
    }
    return names;
}

const kind *kind_of_opcode(uint32_t opcode) {
    const protocol::request_row *row = protocol::find_request(opcode);
    return row == nullptr ? nullptr : find_kind(row->message);
}

uint32_t message_size(const kind &what, std::span<const uint8_t> bytes, rib_check_report &report) {
    auto size = static_cast<uint32_t>(std::min(bytes.size(), size_t{UINT32_MAX}));
    uint32_t refused = what.check(bytes.data(), size, &report);
    if (refused != 0 && report.rule == RIB_CHECK_EXCESS) {
        size = report.allowed; // where the first message ends
        refused = what.check(bytes.data(), size, &report);
    }
    return refused == 0 ? size : 0;
}

std::string report_text(const rib_check_report &report) {
    std::string line(static_cast<size_t>(rib_check_report_str(&report, nullptr, 0)), '\0');
    rib_check_report_str(&report, line.data(), static_cast<uint32_t>(line.size() + 1));
    return line;
}

} // namespace ribkit::decode
