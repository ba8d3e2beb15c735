// A message is as long as an answer of the RIB may be.
#include "rib/service/modules/module_messages.h"

#include "protocol/fib/fib_checks.h"
#include "ribkit_rib.h"

namespace ribkit::rib {

namespace {

constexpr added added_or_not(bool has_room) { return has_room ? added::yes : added::no_room; }

template <const codec::layout &Report, class Kind>
verdict read_verdict(const Kind &kind, protocol::whole_check *check, uint32_t sequence,
                     std::span<const uint8_t> answer) {
    constexpr size_t end = wire::fib_rsp.size;
    verdict said{.what = verdict::fate::damaged};
    if (check(answer, nullptr) != RIB_OK) {
        return said;
    }
    const auto told = protocol::answer_of(codec::view<wire::fib_rsp>(answer.last(end).data()));
    if (told.sequence != sequence) {
        return said;
    }
    said = {.what = verdict::fate::answered, .result = told.result, .accepted = told.accepted};
    if (answer.size() > end) {
        for (const auto &fault : protocol::faults_of(codec::view<Report>(answer.data()))) {
            said.named.insert(named(kind, fault.key));
        }
    }
    return said;
}

template <const codec::layout &Report, auto Check, class Kind>
verdict read_findings(const Kind &kind, std::span<const uint8_t> answer) {
    verdict said{.what = verdict::fate::damaged};
    if (Check(answer.data(), static_cast<uint32_t>(answer.size()), nullptr) != RIB_OK) {
        return said;
    }
    const codec::view<Report> report(answer.data());
    said = {.what = verdict::fate::answered, .result = report.template get<protocol::use<Report, "result">>()};
    for (const auto &[status, key] : protocol::faults_of(report)) {
        said.found.emplace_back(named(kind, key), status);
    }
    return said;
}

} // namespace

module_message::module_message() : room_(RIBKIT_ANSWER_LIMIT) {}

void module_message::begin(const module_head &head) {
    table_ = head.table;
    const model::fib_head words{head.oper, head.vsan, head.sequence};
    const std::span<uint8_t> room(room_);
    if (head.table == table_id::label) {
        now_.emplace<protocol::label_fib_update>(room, words);
    } else if (head.table == table_id::multicast) {
        now_.emplace<protocol::multicast_fib_update>(room, words);
    } else {
        now_.emplace<protocol::unicast_fib_update>(room, words);
    }
}

added module_message::add(const module_path<unicast> &path) {
    auto &update = std::get<protocol::unicast_fib_update>(now_);
    const model::label_values labels({}, path.labels);
    if (!protocol::fits_path(labels)) {
        return added::never;
    }
    return added_or_not(path.what == nullptr ? protocol::add_key(update, path.where.to)
                                             : protocol::add_path(update, path.where.to, *path.what, labels));
}

added module_message::add(const module_path<multicast> &path) {
    auto &update = std::get<protocol::multicast_fib_update>(now_);
    return added_or_not(path.what == nullptr ? protocol::add_key(update, path.where.to)
                                             : protocol::add_path(update, path.where.to, *path.what));
}

added module_message::add(const module_path<label> &path) {
    auto &update = std::get<protocol::label_fib_update>(now_);
    if (path.what != nullptr && !protocol::fits_path(*path.what)) {
        return added::never;
    }
    return added_or_not(path.what == nullptr ? protocol::add_key(update, path.where)
                                             : protocol::add_path(update, path.where, *path.what));
}

void module_message::ask(const any_key &from, uint32_t /*sequence*/) {
    constexpr uint32_t query = 1;
    table_ = from.first;
    now_.emplace<module_question>().bytes =
        protocol::encode(protocol::verify_query{RIB_CLIENT_RIB, query, compared(table_), UINT32_MAX, from.second});
}

uint32_t module_message::opcode() const {
    return is_question()                   ? RIBKIT_OPCODE_FIB_VERF_QUERY
           : table_ == table_id::label     ? RIBKIT_OPCODE_FIB_FCL_UPDATE
           : table_ == table_id::multicast ? RIBKIT_OPCODE_FIB_FCM_UPDATE
                                           : RIBKIT_OPCODE_FIB_FCU_UPDATE;
}

std::span<const uint8_t> module_message::message() const {
    if (is_question()) {
        return std::get<module_question>(now_).bytes;
    }
    return std::span(room_).first(std::visit([](const auto &said) { return said.size(); }, now_));
}

verdict verdict_of(table_id table, uint32_t sequence, std::span<const uint8_t> answer) {
    switch (table) {
    case table_id::label:
        return read_verdict<wire::fcl_rsp_path>(label(), protocol::check_label_fib_answer, sequence, answer);
    case table_id::multicast:
        return read_verdict<wire::fcm_rsp_path>(multicast(), protocol::check_multicast_fib_answer, sequence, answer);
    default:
        return read_verdict<wire::fcu_rsp_path>(unicast(), protocol::check_unicast_fib_answer, sequence, answer);
    }
}

verdict findings_of(table_id table, std::span<const uint8_t> answer) {
    switch (table) {
    case table_id::label:
        return read_findings<wire::fcl_rsp_path, fib_check_fcl_rsp_path>(label(), answer);
    case table_id::multicast:
        return read_findings<wire::fcm_rsp_path, fib_check_fcm_rsp_path>(multicast(), answer);
    default:
        return read_findings<wire::fcu_rsp_path, fib_check_fcu_rsp_path>(unicast(), answer);
    }
}

} // namespace ribkit::rib
