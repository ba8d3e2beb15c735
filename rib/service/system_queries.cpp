// Lists begin at the entry that a query names, and are as long as it wants and as an answer can be.
#include "rib/service/system_queries.h"

#include "bus/history.h"
#include "protocol/fib/fib_records.h"
#include "protocol/query_kinds.h"
#include "protocol/route_messages.h"
#include "protocol/system_messages.h"
#include "rib/domains.h"
#include "rib/flows.h"
#include "rib/service/modules/module_messages.h"
#include "ribkit_rib.h"

#include <algorithm>

namespace ribkit::rib {

namespace {

/// Entries of a list that are answered at most.
template <const codec::layout &L, codec::field_called List> size_t most_of(uint32_t wanted) {
    return std::min<size_t>(wanted, (RIBKIT_ANSWER_LIMIT - L.size) / L.row_of(List.str()).stride);
}

/// An answer that holds nothing but a result, as that to a registration.
reply result_of(uint32_t result) {
    const auto words = protocol::encode(protocol::fcurt_response{result, 0, 0, 0, 0});
    return reply::of({words.begin(), words.end()});
}

/// A list that `entries` makes from a first VSAN on, with so many entries, and `message` writes. Of a query about one
/// VSAN it keeps that.
template <const codec::layout &L, class Entries, class VsanOf, class Message>
reply answer_list(const protocol::list_query &asked, const arrival &came, Entries entries, VsanOf vsan_of,
                  Message message) {
    const auto *kind = protocol::find_kind(protocol::state_kinds, asked.query);
    if (const uint32_t result = protocol::refusal_of(kind, came.in_envelope); result != RIB_OK) {
        return reply::refusal(result);
    }
    auto found = entries(asked.first, most_of<L, "vsan">(asked.requested));
    if (kind->keys == protocol::chosen_keys::vsan && !found.empty()) {
        found.resize(vsan_of(found[0]) == asked.first ? 1 : 0);
    }
    return reply::of(message(found));
}

uint32_t refusal_of(uint32_t query, const arrival &came) {
    return protocol::refusal_of(protocol::find_kind(protocol::state_kinds, query), came.in_envelope);
}

/// The table that a comparison is about, and whether it is with the vault, with the modules or to be forgotten.
struct comparison {
    enum class what : uint8_t { none, with_vault, with_modules, forget };
    what wanted = what::none;
    table_id table{};
};

constexpr const char *name_of(table_id table) {
    return table == table_id::label ? "label" : table == table_id::multicast ? "multicast" : "unicast";
}

comparison comparison_of(uint32_t type) {
    switch (type) {
    case 0x10:
        return {comparison::what::with_vault, table_id::label};
    case 0x20:
        return {comparison::what::with_vault, table_id::multicast};
    case 0x40:
        return {comparison::what::with_vault, table_id::unicast};
    case protocol::compared_labels:
        return {comparison::what::with_modules, table_id::label};
    case protocol::compared_multicast:
        return {comparison::what::with_modules, table_id::multicast};
    case protocol::compared_unicast:
        return {comparison::what::with_modules, table_id::unicast};
    case 0x1000:
        return {comparison::what::forget, table_id::label};
    case 0x2000:
        return {comparison::what::forget, table_id::multicast};
    case 0x4000:
        return {comparison::what::forget, table_id::unicast};
    default:
        return {};
    }
}

/// Changes of a log from a number on, as `message` writes them.
template <class Kind, class Message> reply answer_log_of(const change_logs &logs, uint32_t from, Message message) {
    const auto &log = logs.of<Kind>();
    if (!log.reaches(from) || from == log.next()) {
        return reply::of(protocol::log_position(log.next(), log.held()));
    }
    std::vector<model::logged_change<typename Kind::key>> changes;
    for (uint32_t at = from; at != log.next(); at++) {
        changes.push_back(log.at(at));
    }
    return reply::of(message(changes, log.next()));
}

} // namespace

reply answer_databases(const instance &rib, const protocol::list_query &asked, const arrival &came) {
    return answer_list<wire::db_info>(
        asked, came, [&](uint32_t first, size_t most) { return rib.summaries(first, most); },
        [](const auto &entry) { return entry.vsan; },
        [&](const auto &found) { return protocol::database_info(rib.created, found); });
}

reply answer_domains(const instance &rib, const protocol::list_query &asked, const arrival &came) {
    const auto reached = [&](uint32_t first, size_t most) {
        std::vector<model::domain_reach> found;
        const auto &vsans = rib.routes.vsans();
        for (auto at = vsans.lower_bound(first); at != vsans.end() && found.size() < most; ++at) {
            if (rib.routes.held(table_id::unicast, at->first) != 0) {
                found.push_back(domains_of(rib.routes.routes<unicast>(), at->first));
            }
        }
        return found;
    };
    return answer_list<wire::dm_info>(
        asked, came, reached, [](const auto &entry) { return entry.vsan; },
        [](const auto &found) { return protocol::domain_info(found); });
}

reply answer_vsans(const instance &rib, const protocol::list_query &asked, const arrival &came) {
    return answer_list<wire::vsan_update>(
        asked, came, [&](uint32_t first, size_t most) { return vsans_from(rib.routes, rib.described, first, most); },
        [](const auto &entry) { return entry.first; }, [](const auto &found) { return protocol::vsan_info(found); });
}

reply answer_modules(const instance &rib, const protocol::list_query &asked, const arrival &came) {
    if (const uint32_t result = refusal_of(asked.query, came); result != RIB_OK) {
        return reply::refusal(result);
    }
    const size_t most = most_of<wire::sys_info, "module">(asked.requested);
    std::vector<model::module_node> found;
    for (const auto &[number, node] : rib.nodes) {
        if (number > asked.first && found.size() < most) {
            found.push_back(node);
        }
    }
    return reply::of(protocol::system_info(found));
}

reply answer_registrations(const instance &rib, const protocol::list_query &asked, const arrival &came) {
    if (const uint32_t result = refusal_of(asked.query, came); result != RIB_OK) {
        return reply::refusal(result);
    }
    auto all = rib.clients.all();
    all.resize(std::min(all.size(), most_of<wire::reg_info, "client">(asked.requested)));
    return reply::of(protocol::registration_info(all));
}

reply answer_internals(const instance &rib, const protocol::internal_query &asked, const arrival &came) {
    if (const uint32_t result = refusal_of(asked.query, came); result != RIB_OK) {
        return reply::refusal(result);
    }
    if (protocol::is_result(asked.structure)) {
        return reply::of(protocol::internal_info(asked.structure, rib.refused.of(asked.structure, asked.client)));
    }
    constexpr uint32_t last_structure = 8;
    if (asked.structure == 0 || asked.structure > last_structure) {
        return reply::refusal(RIB_NOT_SUPPORTED);
    }
    return reply::of(asked.structure == 1   ? protocol::availability_info({})
                     : asked.structure == 2 ? protocol::memory_info(rib.memory())
                                            : protocol::internal_info(asked.structure, rib.held_in(asked.structure)));
}

reply answer_node(const instance &rib, const protocol::node_query &asked) {
    const auto found = rib.nodes.find(asked.module + 1U);
    return found == rib.nodes.end() ? reply::refusal(RIB_MISSING_DEVICE)
                                    : reply::of(protocol::node_info(found->second));
}

reply answer_flow(const instance &rib, const protocol::flow_query &asked) {
    const auto balance = attributes_of(rib.routes, rib.described, asked.flow.vsan).balance;
    const auto way = way_of(rib.routes.routes<unicast>(), asked.flow, balance);
    return reply::of(way ? protocol::flow_info(RIB_OK, way->if_index) : protocol::flow_info(RIB_NO_ENTRY, 0));
}

reply answer_log(const instance &rib, const protocol::log_query &asked) {
    switch (asked.log) {
    case static_cast<uint32_t>(table_id::label):
        return answer_log_of<label>(rib.logs, asked.sequence, protocol::label_log);
    case static_cast<uint32_t>(table_id::multicast):
        return answer_log_of<multicast>(rib.logs, asked.sequence, protocol::multicast_log);
    case static_cast<uint32_t>(table_id::unicast):
        return answer_log_of<unicast>(rib.logs, asked.sequence, protocol::unicast_log);
    default:
        return reply::refusal(RIB_NOT_SUPPORTED);
    }
}

reply answer_verification(const instance &rib, const protocol::verify_query &asked, const arrival &came) {
    if (const uint32_t result = refusal_of(asked.query, came); result != RIB_OK) {
        return reply::refusal(result);
    }
    const auto &[wanted, table] = comparison_of(asked.type);
    const model::verification &report = rib.reports[static_cast<size_t>(table)];
    if (wanted == comparison::what::with_vault) {
        return reply::refusal(RIB_NO_DATABASE);
    }
    if (wanted != comparison::what::with_modules || report.type != asked.type) {
        return reply::refusal(wanted == comparison::what::with_modules ? RIB_NO_ENTRY : RIB_NOT_SUPPORTED);
    }
    const size_t room = (RIBKIT_ANSWER_LIMIT - wire::verf_info.size) / wire::size_of_key(report.type);
    return reply::of(protocol::verification_info(report, asked.from, std::min<size_t>(room, asked.requested)));
}

reply test(instance &rib, const protocol::simple_request &asked) {
    constexpr uint32_t off = 1;
    constexpr uint32_t on = 2;
    constexpr uint32_t query = 3;
    if (asked.type < off || asked.type > query) {
        return reply::refusal(RIB_NOT_SUPPORTED);
    }
    reply answer = reply::of(protocol::test_info(asked.type, asked.type == on));
    if (asked.type == query) {
        return reply::of(protocol::test_info(asked.type, rib.notes_requests));
    }
    rib.notes_requests = asked.type == on;
    return answer;
}

reply verify(instance &rib, const protocol::simple_request &asked) {
    const auto &[wanted, table] = comparison_of(asked.type);
    model::verification &report = rib.reports[static_cast<size_t>(table)];
    switch (wanted) {
    case comparison::what::with_vault:
        return reply::refusal(RIB_NO_DATABASE);
    case comparison::what::with_modules:
        return {RIB_OK, {}, table};
    case comparison::what::forget: {
        const bool was_there = report.type != 0;
        report = {};
        return was_there ? result_of(RIB_OK) : reply::refusal(RIB_NO_ENTRY);
    }
    default:
        return reply::refusal(RIB_NOT_SUPPORTED);
    }
}

void begin_report(instance &rib, table_id table, uint32_t now) {
    rib.reports[static_cast<size_t>(table)] = {compared(table), now, 0, {}};
}

void finish_report(instance &rib, table_id table, waiting::findings found, uint32_t now) {
    model::verification &report = rib.reports[static_cast<size_t>(table)];
    bus::note_in_history("rib: the ", name_of(table), " table was compared with the modules, ", found.keys.size(),
                         " keys differ", found.complete ? "" : ", not all is known");
    if (report.type == 0) { // forgotten meanwhile
        return;
    }
    report.completed = found.complete ? now : 0;
    report.found.clear();
    for (const auto &[key, status] : found.keys) {
        report.found.emplace_hint(report.found.end(), key.second, status);
    }
}

reply enter(instance &rib, const registration &said, const arrival &came) {
    reply answer = result_of(RIB_OK);
    const registration *before = rib.clients.find(said.client);
    const bool is_news = before == nullptr || before->distance != said.distance;
    const uint32_t result = rib.enter(said, came.heard, came.now);
    if (result != RIB_OK) {
        return reply::refusal(result);
    }
    if (is_news) {
        bus::note_in_history(line_of_registration(*rib.clients.find(said.client)));
    }
    return answer;
}

} // namespace ribkit::rib
