// Lists are asked for from a first VSAN on, until an answer has none.
#include "clients/state_reader.h"

#include "base/text.h"
#include "clients/question.h"
#include "protocol/queries.h"
#include "protocol/uses.h"
#include "rib_check.h"
#include "rib_codes.h"

#include <algorithm>
#include <array>

namespace ribkit::clients {

namespace {

constexpr uint32_t show = 0x100;
constexpr uint32_t query_vsan = 0x10;
constexpr uint32_t as_many_as_fit = UINT32_MAX;

/// @param vsans_in the VSANs of an answer, in order
template <const codec::layout &Query, class VsansIn>
std::vector<bytes> read_list(bus::rib_link &link, const state_reading &wanted, uint32_t opcode, checker check,
                             VsansIn vsans_in) {
    std::vector<bytes> all;
    uint32_t first = wanted.vsan.value_or(0);
    const uint32_t last = wanted.vsan.value_or(RIB_LAST_VSAN);
    while (first <= last) {
        auto query = protocol::encode<Query>({wanted.uuid, wanted.vsan ? query_vsan : show, as_many_as_fit, first});
        bytes answer = ask_checked(link, opcode, query, check);
        const std::vector<uint32_t> vsans = vsans_in(answer);
        if (vsans.empty() && !all.empty()) {
            break;
        }
        if (std::any_of(vsans.begin(), vsans.end(), [&](uint32_t vsan) { return vsan < first || vsan > last; })) {
            bus::rib_link::drop_answer(opcode, answer.size(), "what came is not what was asked for");
        }
        first = vsans.empty() ? last + 1 : vsans.back() + 1;
        all.push_back(std::move(answer));
    }
    return all;
}

/// The place of each log's records among the tables' logs, and their size.
constexpr std::array<size_t, 3> record_sizes{wire::sync_fcl.size, wire::sync_fcm.size, wire::sync_fcu.size};

/// Whether it is how far a log goes, or its records with their marker.
template <size_t Record> uint32_t check_log(const void *message, uint32_t size, rib_check_report *report) {
    return size > Record && size % Record == 0 ? RIB_OK : rib_check_sync_info(message, size, report);
}

constexpr std::array<checker, 3> log_checks{check_log<record_sizes[label_log]>, check_log<record_sizes[multicast_log]>,
                                            check_log<record_sizes[unicast_log]>};

} // namespace

std::vector<bytes> read_databases(bus::rib_link &link, const state_reading &wanted) {
    return read_list<wire::db_query>(link, wanted, RIBKIT_OPCODE_DB_QUERY, rib_check_db_info, [](const bytes &answer) {
        std::vector<uint32_t> vsans;
        for (const auto entry : codec::view<wire::db_info>(answer.data()).list<"vsan">()) {
            vsans.push_back(entry.get<"vsan">());
        }
        return vsans;
    });
}

std::vector<bytes> read_domains(bus::rib_link &link, const state_reading &wanted) {
    return read_list<wire::dm_query>(link, wanted, RIBKIT_OPCODE_DM_QUERY, rib_check_dm_info, [](const bytes &answer) {
        std::vector<uint32_t> vsans;
        for (const auto entry : codec::view<wire::dm_info>(answer.data()).list<"vsan">()) {
            vsans.push_back(entry.get<"vsan">());
        }
        return vsans;
    });
}

std::vector<bytes> read_vsans(bus::rib_link &link, const state_reading &wanted) {
    return read_list<wire::vsan_query>(
        link, wanted, RIBKIT_OPCODE_VSAN_QUERY, fib_check_vsan_update, [](const bytes &answer) {
            std::vector<uint32_t> vsans;
            for (const auto entry : codec::view<wire::vsan_update>(answer.data()).list<"vsan">()) {
                vsans.push_back(entry.get<"word_4", "vsan">());
            }
            return vsans;
        });
}

// Lists are in the order of client and VSAN; that of nobody ends them.
std::vector<bytes> read_versions(bus::rib_link &link, const state_reading &wanted) {
    constexpr uint32_t show_versions = 0x200000;
    std::vector<bytes> all;
    size_t lists = 0;
    protocol::unicast_query next{wanted.uuid, show_versions, as_many_as_fit, {0, {0, 0}}, 0};
    while (next.owner <= RIBKIT_LAST_CLIENT) {
        auto query = protocol::encode(next);
        bytes answer = ask_checked(link, RIBKIT_OPCODE_FCURT_QUERY, query, rib_check_topo);
        const codec::view<wire::topo> list(answer.data());
        const auto [owner, vsan] = std::pair(list.get<"uuid">(), list.get<"vsan">());
        if (owner == 0 && vsan == 0) {
            break;
        }
        if (++lists > wanted.most_lists) {
            throw bus::no_answer(base::joined("it has more than ", wanted.most_lists, " lists of versions"));
        }
        if (std::pair(owner, vsan) < std::pair(next.owner, next.from.vsan)) {
            bus::rib_link::drop_answer(RIBKIT_OPCODE_FCURT_QUERY, answer.size(), "what came is not what was asked for");
        }
        next.owner = vsan < RIB_LAST_VSAN ? owner : owner + 1;
        next.from.vsan = vsan < RIB_LAST_VSAN ? vsan + 1 : 0;
        if (!wanted.vsan || vsan == *wanted.vsan) {
            all.push_back(std::move(answer));
        }
    }
    return all;
}

bytes read_registrations(bus::rib_link &link, uint32_t uuid) {
    auto query = protocol::encode<wire::reg_query>({uuid, show, as_many_as_fit});
    return ask_checked(link, RIBKIT_OPCODE_REG_QUERY, query, rib_check_reg_info);
}

bytes read_modules(bus::rib_link &link, uint32_t uuid) {
    auto query = protocol::encode<wire::sys_query>({uuid, show, as_many_as_fit});
    return ask_checked(link, RIBKIT_OPCODE_SYS_QUERY, query, rib_check_sys_info);
}

namespace {

bytes ask_for_internals(bus::rib_link &link, const protocol::internal_query &wanted) {
    auto query = protocol::encode(wanted);
    bytes answer = ask_checked(link, RIBKIT_OPCODE_IN_QUERY, query, rib_check_in_info);
    if (codec::view<wire::in_info>(answer.data()).get<"kind">() != wanted.structure) {
        bus::rib_link::drop_answer(RIBKIT_OPCODE_IN_QUERY, answer.size(), "what came is not what was asked for");
    }
    return answer;
}

} // namespace

bytes read_structure(bus::rib_link &link, uint32_t uuid, uint32_t structure) {
    return ask_for_internals(link, {uuid, show, structure});
}

uint32_t read_refusals(bus::rib_link &link, uint32_t uuid, uint32_t result, uint32_t client) {
    const bytes answer = ask_for_internals(link, {uuid, show, result, client});
    return codec::view<wire::in_info>(answer.data()).get<protocol::use<wire::in_info, "count">>();
}

std::optional<bytes> read_verification(bus::rib_link &link, uint32_t uuid, uint32_t type,
                                       const model::label_key &from) {
    auto query = protocol::encode(protocol::verify_query{uuid, show, type, as_many_as_fit, from});
    try {
        return ask_checked(link, RIBKIT_OPCODE_VERF_QUERY, query, rib_check_verf_info);
    } catch (const refused_question &why) {
        if (why.result != RIB_NO_ENTRY) {
            throw;
        }
        return std::nullopt;
    }
}

// Whoever asks for what the log has no more is told how far it goes, and asks again.
bytes read_log(bus::rib_link &link, uint32_t uuid, uint32_t log) {
    constexpr int most_tries = 5;
    uint32_t first = 0;
    for (int tries = 0; tries < most_tries; tries++) {
        auto query = protocol::encode(protocol::log_query{uuid, log, first});
        bytes answer = ask_checked(link, RIBKIT_OPCODE_SYNC_QUERY, query, log_checks[log]);
        if (answer.size() > wire::sync_info.size) {
            return answer;
        }
        const codec::view<wire::sync_info> position(answer.data());
        const uint32_t held = position.get<protocol::use<wire::sync_info, "held">>();
        if (held == 0) {
            return {};
        }
        first = position.get<protocol::use<wire::sync_info, "next">>() - held;
    }
    throw bus::no_answer("its log changes too fast");
}

} // namespace ribkit::clients
