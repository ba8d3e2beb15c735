// The service's part in what the modules have to say: who they are, what they answer, and the requests that wait for
// that.
#include "protocol/fib/fib_checks.h"
#include "protocol/fib/fib_records.h"
#include "rib/service/rib_service.h"
#include "rib/service/system_queries.h"
#include "rib/service/updates.h"
#include "rib_codes.h"
#include "ribkit_rib.h"

#include <algorithm>
#include <new>
#include <utility>

namespace ribkit::rib {

namespace {

constexpr uint64_t patience = 5'000'000; // microseconds: a request waits no longer for modules

protocol::fcurt_response response_of(const update_answer &answer) {
    return {answer.result, answer.oper, answer.vsan, answer.accepted, answer.held};
}

} // namespace

// All that can fail is done before anything is changed.
/// @param take what is done, and whose doing that which happens meanwhile is; it returns the RIB's own answer
template <class Take>
bytes rib_service::hold_for_modules(const request &asked, const update_answer &failed, std::optional<table_id> compares,
                                    Take take) {
    const uint32_t sender = qip_sender_get(&asked.ref);
    if (!held_.has_room(sender)) {
        return refuse(asked, RIB_OUT_OF_MEMORY, "too many of its requests wait for modules");
    }
    const waiting::id id = followed_.begin();
    update_answer answer = failed;
    try {
        held_.hold(id, {asked.ref, asked.in_envelope, asked.opcode, sender, qip_now() + patience, compares});
        keeps_request_ = true;
        answer = take();
    } catch (const std::bad_alloc &) {
        followed_.end(answer);
        if (keeps_request_) {
            return {};
        }
        throw;
    }
    followed_.end(answer);
    return {};
}

template <class Kind> bytes rib_service::update_and_wait(const request &asked) {
    const uint32_t oper = operation_of<Kind>(asked.payload);
    const bool compares = oper == RIB_OPER_VERIFY;
    return hold_for_modules(
        asked, {RIB_OUT_OF_MEMORY, oper, 0}, compares ? std::optional(Kind::id) : std::nullopt, [&]() -> update_answer {
            const protocol::fcurt_response response = take_routes<Kind>(asked);
            if (compares && response.result == RIB_OK) {
                begin_report(rib_, Kind::id, seconds_now());
            }
            return {response.result, response.oper, response.vsan, response.accepted, response.held};
        });
}

/// A whole table, of all VSANs.
bytes rib_service::compare_and_wait(const request &asked, table_id table) {
    return hold_for_modules(asked, {RIB_OUT_OF_MEMORY, RIB_OPER_VERIFY, 0}, table, [&]() -> update_answer {
        begin_report(rib_, table, seconds_now());
        followed_.compare(table, 0);
        const size_t held = table == table_id::label       ? rib_.routes.routes<label>().count()
                            : table == table_id::multicast ? rib_.routes.routes<multicast>().count()
                                                           : rib_.routes.routes<unicast>().count();
        return {RIB_OK, RIB_OPER_VERIFY, 0, 0, static_cast<uint32_t>(held)};
    });
}

template bytes rib_service::update_and_wait<unicast>(const request &);
template bytes rib_service::update_and_wait<multicast>(const request &);
template bytes rib_service::update_and_wait<label>(const request &);

/// A module speaks as the line cards' manager.
bytes rib_service::hear_module(const request &asked) {
    rib_check_report why{};
    if (const uint32_t result = protocol::check_module_message(asked.payload, &why); result != RIB_OK) {
        return refuse(asked, result, text_of(why));
    }
    const model::module_node told = protocol::module_of(asked.payload);
    if (!may_speak(asked, RIB_CLIENT_LINE_CARD_MANAGER)) {
        return refuse(asked, RIB_BAD_PARAMETERS, "it may not speak for a module");
    }
    const auto said = encode(protocol::fcurt_response{RIB_OK, 0, 0, 0, 0});
    bytes answer(said.begin(), said.end());
    exchange_.hear(told, holds_ && !hold_.is_over(qip_now()));
    return answer;
}

bool rib_service::have_modules_all() const {
    const auto &all = followed_.all();
    return std::all_of(all.begin(), all.end(), [](const auto &one) {
        const module_condition how = one.second.condition();
        return how == module_condition::gone || how == module_condition::garbled || one.second.is_done();
    });
}

/// @return whether it was one
bool rib_service::hear_module_answer(const qip_ref &ref) {
    if (qip_opcode_get(&ref) != 0 || qip_sender_get(&ref) != 0 || !exchange_.awaits()) {
        return false;
    }
    const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&ref));
    try {
        exchange_.take_answer(qip_rr_token_get(&ref), {payload, qip_payload_size(&ref)});
    } catch (const std::bad_alloc &) { // as if it had not come
        return true;
    }
    return true;
}

void rib_service::look_after_modules() {
    if (holds_ && hold_.is_over(qip_now())) {
        holds_ = false;
        followed_.release();
    }
    exchange_.give_up_late(qip_now());
    while (const auto late = held_.overdue(qip_now())) {
        followed_.give_up(*late);
        answer_held();
    }
    exchange_.send_some();
    answer_held(); // those that nobody can answer
}

/// Answers the requests for which all modules have answered.
void rib_service::answer_held() {
    while (auto done = followed_.take_done()) {
        if (auto one = held_.take(done->request)) {
            if (one->compares && done->found) {
                report(*one->compares, std::move(*done->found));
            }
            answer(one->ref, one->in_envelope, encode(response_of(done->answer)));
            rib_wrap_qip_drop(RIB_CLIENT_RIB, handle_.number(), &one->ref);
        }
    }
}

/// Where there is no memory for it, the report stays one that is not complete.
void rib_service::report(table_id table, waiting::findings found) {
    try {
        finish_report(rib_, table, std::move(found), seconds_now());
    } catch (const std::bad_alloc &) {
        return;
    }
}

void rib_service::drop_held() {
    while (auto one = held_.take_any()) {
        qip_drop(handle_.number(), &one->ref);
    }
}

} // namespace ribkit::rib
