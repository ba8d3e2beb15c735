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

uint32_t module_message::opcode() const {
    return table_ == table_id::label       ? RIBKIT_OPCODE_FIB_FCL_UPDATE
           : table_ == table_id::multicast ? RIBKIT_OPCODE_FIB_FCM_UPDATE
                                           : RIBKIT_OPCODE_FIB_FCU_UPDATE;
}

std::span<const uint8_t> module_message::message() const {
    const auto size = std::visit(
        [](const auto &update) -> uint32_t {
            if constexpr (std::is_same_v<decltype(update), const std::monostate &>) {
                return 0;
            } else {
                return update.size();
            }
        },
        now_);
    return std::span(room_).first(size);
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

} // namespace ribkit::rib
