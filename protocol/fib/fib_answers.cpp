// How a module answers: the keys that did not take effect, and behind them the response. The RIB names keys the same
// way where it tells what a comparison has found.
#include "protocol/fib/fib_messages.h"

#include "protocol/system_messages.h"
#include "rib_codes.h"

#include <algorithm>

namespace ribkit::protocol {

using codec::view;
using codec::writer;

namespace {

void write_answer(std::span<uint8_t> room, const model::fib_answer &answer) {
    const writer<wire::fib_rsp> said(room);
    said.set<use<wire::fib_rsp, "result">>(answer.result).set<use<wire::fib_rsp, "oper">>(answer.oper);
    said.set<use<wire::fib_rsp, "vsan">>(answer.vsan).set<use<wire::fib_rsp, "accepted">>(answer.accepted);
    said.set<use<wire::fib_rsp, "sequence">>(answer.sequence);
}

constexpr auto write_unicast = [](const auto &entry, const auto &key) {
    entry.template set<"fcid">(key.to.fcid).template set<"mask">(key.to.mask);
};
constexpr auto write_multicast = [](const auto &entry, const auto &key) { entry.template set<"fcid">(key.to.fcid); };
constexpr auto write_label = [](const auto &entry, const model::label_key &key) {
    const uint32_t at = key.type == RIB_ROUTE_SRC_LABEL ? key.source : key.to.fcid;
    entry.template set<use<wire::verf_fcl, "type">>(fib_type_of(key));
    entry.template set<use<wire::verf_fcl, "fcid_or_source">>(at);
    entry.template set<use<wire::verf_fcl, "mask">>(key.to.mask).template set<"n_label">(key.match_count);
    entry.template set<"label_0">(key.match[0]).template set<"label_1">(key.match[1]);
};

/// `write` fills in a key.
template <const codec::layout &Report, class Key, class Write>
bytes answer_message(const model::fib_answer &answer, std::span<const model::fib_fault<Key>> faults, Write write) {
    const size_t named = faults.empty() ? 0 : Report.size + faults.size() * fault_size<Report>;
    bytes message(named + wire::fib_rsp.size);
    if (named != 0) {
        const writer<Report> report(message.data(), named);
        report.template set<use<Report, "result">>(answer.result).template set<use<Report, "oper">>(answer.oper);
        report.template set<use<Report, "vsan">>(answer.vsan).template set<use<Report, "sequence">>(answer.sequence);
        for (const auto &[status, key] : faults) {
            const auto entry = report.template add<"entry">();
            entry.template set<"status">(status).template set<"vsan">(key.vsan);
            write(entry, key);
        }
    }
    write_answer(std::span(message).subspan(named), answer);
    return message;
}

} // namespace

bytes fib_answer(const model::fib_answer &answer, std::span<const model::fib_fault<model::route_key>> faults) {
    return answer_message<wire::fcu_rsp_path>(answer, faults, write_unicast);
}

bytes fib_multicast_answer(const model::fib_answer &answer,
                           std::span<const model::fib_fault<model::multicast_key>> faults) {
    return answer_message<wire::fcm_rsp_path>(answer, faults, write_multicast);
}

bytes fib_label_answer(const model::fib_answer &answer, std::span<const model::fib_fault<model::label_key>> faults) {
    return answer_message<wire::fcl_rsp_path>(answer, faults, write_label);
}

namespace {

template <const codec::layout &Key, class At, class Write>
void write_found(bytes &message, At at, size_t count, Write write) {
    message.resize(wire::verf_info.size + count * Key.size);
    for (size_t place = wire::verf_info.size; place < message.size(); place += Key.size, ++at) {
        const std::span<uint8_t> room(message.data() + place, Key.size);
        const writer<Key> entry(room);
        entry.template set<"status">(at->second).template set<"vsan">(at->first.vsan);
        write(entry, at->first);
    }
}

} // namespace

bytes verification_info(const model::verification &report, const model::label_key &from, size_t most) {
    const auto first = report.found.lower_bound(from);
    const size_t count = std::min(most, static_cast<size_t>(std::distance(first, report.found.end())));
    bytes message(wire::verf_info.size);
    if (const codec::layout &key = wire::key_of(report.type); is_same(key, wire::verf_fcu)) {
        write_found<wire::verf_fcu>(message, first, count, write_unicast);
    } else if (is_same(key, wire::verf_fcm)) {
        write_found<wire::verf_fcm>(message, first, count, write_multicast);
    } else {
        write_found<wire::verf_fcl>(message, first, count, write_label);
    }
    codec::writable_view<wire::verf_info>(message.data())
        .set<"n_key">(static_cast<uint32_t>(count))
        .set<"type">(report.type)
        .set<"generated">(report.generated)
        .set<"completed">(report.completed);
    return message;
}

model::fib_answer answer_of(view<wire::fib_rsp> answer) {
    return {answer.get<use<wire::fib_rsp, "result">>(), answer.get<use<wire::fib_rsp, "oper">>(),
            answer.get<use<wire::fib_rsp, "vsan">>(), answer.get<use<wire::fib_rsp, "accepted">>(),
            answer.get<use<wire::fib_rsp, "sequence">>()};
}

std::vector<model::fib_fault<model::route_key>> faults_of(view<wire::fcu_rsp_path> report) {
    std::vector<model::fib_fault<model::route_key>> faults;
    for (const auto entry : report.list<"entry">()) {
        faults.push_back({entry.get<"status">(), {entry.get<"vsan">(), {entry.get<"fcid">(), entry.get<"mask">()}}});
    }
    return faults;
}

std::vector<model::fib_fault<model::multicast_key>> faults_of(view<wire::fcm_rsp_path> report) {
    std::vector<model::fib_fault<model::multicast_key>> faults;
    for (const auto entry : report.list<"entry">()) {
        faults.push_back({entry.get<"status">(), {entry.get<"vsan">(), {entry.get<"fcid">(), 0}}});
    }
    return faults;
}

namespace {

model::label_key key_of(view<wire::verf_fcl> entry) {
    const uint32_t at = entry.get<use<wire::verf_fcl, "fcid_or_source">>();
    model::label_key key{.vsan = entry.get<"vsan">(),
                         .type = route_type_of(entry.get<use<wire::verf_fcl, "type">>()),
                         .match_count = std::min<uint32_t>(entry.get<"n_label">(), model::most_match_labels),
                         .match = {entry.get<"label_0">(), entry.get<"label_1">()}};
    if (key.type == RIB_ROUTE_SRC_LABEL) {
        key.source = at;
    } else {
        key.to = {at, entry.get<use<wire::verf_fcl, "mask">>()};
    }
    return key;
}

model::label_key behind(const model::route_key &last) {
    const model::route_key next = model::key_after(last);
    return {.vsan = next.vsan, .to = next.to};
}

} // namespace

std::vector<model::fib_fault<model::label_key>> faults_of(view<wire::fcl_rsp_path> report) {
    std::vector<model::fib_fault<model::label_key>> faults;
    for (const auto entry : report.list<"entry">()) {
        faults.push_back({entry.get<"status">(), key_of(entry)});
    }
    return faults;
}

model::label_key key_behind(view<wire::verf_fcu> entry) {
    return behind({entry.get<"vsan">(), {entry.get<"fcid">(), entry.get<"mask">()}});
}

model::label_key key_behind(view<wire::verf_fcm> entry) {
    return behind({entry.get<"vsan">(), {entry.get<"fcid">(), UINT32_MAX}});
}

model::label_key key_behind(view<wire::verf_fcl> entry) { return model::key_after(key_of(entry)); }

} // namespace ribkit::protocol
