// Requests go through the wrappers; where less time is left than they wait, what they do is done here.
#include "bus/rib_link.h"

#include "base/duration.h"
#include "base/text.h"
#include "bus/history.h"
#include "rib_codes.h"
#include "rib_text.h"
#include "rib_trace.h"
#include "rib_wrap.h"
#include "ribkit_rib.h"
#include "wrap/cmi_envelope.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace ribkit::bus {

namespace {

constexpr uint32_t notifications_bound = 64;
constexpr uint32_t errno_bits = 0xfff;
constexpr std::chrono::milliseconds longest_probe{1000};

// Of rib_wrap_qip_req_rsp and rib_wrap_cmi_req_rsp.
constexpr std::chrono::seconds plain_wait{20};
constexpr std::chrono::seconds envelope_wait{10};

// Of the service: the handle is gone, before the call or during it.
bool is_closed(uint32_t reason) { return reason == ECANCELED || reason == EBADF; }

bool is_platform_failure(uint32_t result) { return (result & ~errno_bits) == RIB_PLATFORM_FAILURE; }

qip_recv_opts incoming_within(std::chrono::milliseconds limit) {
    const auto count = static_cast<uint32_t>(limit.count());
    return {{QIP_RECV_INCOMING, count == 0 ? 1U : 0U, 0, 0, count}};
}

qip_recv_opts answer_within(std::chrono::milliseconds limit, uint32_t token) {
    const auto count = static_cast<uint32_t>(limit.count());
    return {{QIP_RECV_BY_TOKEN, count == 0 ? 1U : 0U, 0, token, count}};
}

/// That the RIB has started; what says so and more is damaged.
bool is_start(const qip_ref &note) {
    if (qip_opcode_get(&note) != RIBKIT_OPCODE_STARTED) {
        return false;
    }
    const uint32_t size = qip_payload_size(&note);
    if (size != 0) {
        note_in_history("client: notification of ", size, " bytes with opcode ", RIBKIT_OPCODE_STARTED,
                        " dropped: it has no payload");
    }
    return size == 0;
}

} // namespace

std::string result_text(uint32_t result) {
    if (is_platform_failure(result)) {
        const auto reason = static_cast<int>(result & errno_bits);
        return reason == ENOTCONN ? "nobody listens" : std::strerror(reason);
    }
    std::array<char, 64> text{};
    rib_rtn_to_str(result, text.data());
    return text.data();
}

// The errno of not being answered anything at all for so long, or 0. Asked without the wrappers, which print.
static int failure_to_answer(const service_handle &handle, std::chrono::milliseconds limit) {
    const qip_send_opts at_once{{1, 1}};
    qip_ref ref{};
    bool answered = qip_send(handle.number(), &ribkit_rib_address, 0, nullptr, 0, &ref, nullptr, &at_once) == 0;
    if (answered) {
        const qip_recv_opts opts = answer_within(limit, qip_rr_token_get(&ref));
        qip_drop(handle.number(), &ref);
        answered = qip_recv(handle.number(), &ref, &opts) == 0;
    }
    if (answered) {
        qip_drop(handle.number(), &ref);
        return 0;
    }
    const int error = errno;
    if (is_closed(static_cast<uint32_t>(error))) {
        throw link_closed();
    }
    return error;
}

bool is_answered(const service_handle &handle) { return failure_to_answer(handle, longest_probe) == 0; }

void refuse_second_rib(const std::string &url, patience &waiting) {
    const service_handle handle(url, waiting);
    const patience::waiting counted(waiting);
    const int error = failure_to_answer(handle, std::min(waiting.for_answer(), longest_probe));
    if (error == 0 || error == ETIMEDOUT || error == EAGAIN) {
        throw std::runtime_error(base::joined("another RIB ", error == 0 ? "answers" : "listens, but does not answer,",
                                              " at ", shown_url(url)));
    }
}

rib_link::rib_link(const std::string &url, uint32_t uuid, const link_options &options)
    : shown_url_(ribkit::bus::shown_url(url)), waiting_(options.patience), handle_(url, waiting_), uuid_(uuid),
      envelopes_(options.envelopes) {
    if (qip_listen(handle_.number(), &ribkit_listeners_address, notifications_bound) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot hear notifications on " + shown_url_);
    }
}

void rib_link::take_result(uint32_t opcode, uint32_t result) {
    if (result == RIB_BAD_PARAMETERS || result == RIB_EXCESS_DATA) {
        throw no_answer({opcode, result}, base::joined("the RIB at ", shown_url_, " refuses what client ", uuid_,
                                                       " sends: ", result_text(result),
                                                       "; its [[who]] tables may not let this name use client ", uuid_,
                                                       ", and what it says on standard error names whom it refuses"));
    }
    if (last_refusal_.opcode == opcode) {
        refusals_in_turn_ = 0;
    }
}

bool rib_link::await_after(const no_answer &why) {
    constexpr unsigned most_in_turn = 5;
    refusals_in_turn_ = !why.refused ? 0 : why.refused == last_refusal_ ? refusals_in_turn_ + 1 : 1;
    last_refusal_ = why.refused;
    if (refusals_in_turn_ == most_in_turn || waiting_.left().count() <= 0) {
        return false;
    }
    if (!why.refused) {
        std::fprintf(stderr, "ribkit: %s; asking again\n", why.what());
    } else if (refusals_in_turn_ == 1) {
        std::fprintf(stderr, "ribkit: the RIB refuses what came: %s; asking again\n",
                     result_text(why.refused.result).c_str());
    }
    return await();
}

void rib_link::renew_patience() {
    waiting_.renew();
    told_ = false;
}

static rib_wrap_msg message_of(uint32_t uuid, uint32_t opcode, std::span<uint8_t> request) {
    rib_wrap_msg asked{};
    asked.uuid = uuid;
    asked.opcode = opcode;
    asked.payload = request.data();
    asked.payload_size = static_cast<uint32_t>(request.size());
    return asked;
}

std::vector<uint8_t> rib_link::ask(uint32_t opcode, std::span<uint8_t> request) {
    rib_wrap_msg asked = message_of(uuid_, opcode, request);
    rib_wrap_msg answer{};
    const uint32_t result = ask(asked, answer);
    return taken(result, answer, {.opcode = opcode, .size = request.size()});
}

// Of a result that is no failure of the platform there is an answer.
std::vector<uint8_t> rib_link::taken(uint32_t result, rib_wrap_msg &answer, const sent_request &to) {
    if (is_platform_failure(result) && is_closed(result & errno_bits)) {
        throw link_closed();
    }
    std::vector<uint8_t> bytes;
    if (result == RIB_OK) {
        bytes.assign(answer.payload, answer.payload + answer.payload_size);
    }
    if (result == RIB_OK || result == RIB_BAD_PARAMETERS) { // of an envelope that does not hold what it says
        rib_wrap_qip_drop(uuid_, handle_.number(), &answer.ref);
    }
    if (result == RIB_BAD_PARAMETERS) {
        drop_answer(to.opcode, answer.payload_size, result_text(result));
    }
    if (result != RIB_OK) {
        throw no_answer(result_text(result));
    }
    traffic_.messages++;
    traffic_.bytes_sent += to.size;
    traffic_.bytes_received += bytes.size();
    return bytes;
}

std::optional<sent_request> rib_link::send(uint32_t opcode, std::span<uint8_t> request) {
    rib_wrap_msg asked = message_of(uuid_, opcode, request);
    const uint32_t result = send_at_once(asked);
    if (result == (RIB_PLATFORM_FAILURE | EAGAIN)) {
        return std::nullopt;
    }
    if (result != RIB_OK) {
        rib_wrap_msg nothing{};
        taken(result, nothing, {});
    }
    const uint32_t token = qip_rr_token_get(&asked.ref);
    qip_drop(handle_.number(), &asked.ref);
    return sent_request{opcode, token, request.size(), run_now()};
}

std::vector<uint8_t> rib_link::take_answer(const sent_request &to) {
    constexpr std::chrono::milliseconds least{1}; // for one that is there already
    const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(run_now() - to.at);
    const auto limit = std::max(least, std::min(waiting_.for_answer(), longest_wait() - waited));
    rib_wrap_msg answer{};
    const patience::waiting counted(waiting_);
    uint32_t result = receive(limit, to.token, answer);
    if (is_platform_failure(result)) { // as the wrappers say it
        rib_printf_rsp_fail(uuid_, "rib_link::take_answer() failed qip_recv() %u!\n", result & errno_bits);
    }
    result = result == RIB_OK ? open_answer(answer) : result;
    return taken(result, answer, to);
}

void rib_link::drop_answer(uint32_t opcode, size_t size, const std::string &why) {
    note_in_history("client: answer of ", size, " bytes to opcode ", opcode, " dropped: ", why);
    throw no_answer(why);
}

// The wrappers wait as long as they do: where less is left, what they do is done here with another limit.
uint32_t rib_link::ask(rib_wrap_msg &asked, rib_wrap_msg &answer) {
    const auto limit = waiting_.for_answer();
    const patience::waiting counted(waiting_);
    if (limit.count() <= 0) {
        return RIB_PLATFORM_FAILURE | ETIMEDOUT;
    }
    if (limit >= longest_wait()) {
        return (envelopes_ ? rib_wrap_cmi_req_rsp : rib_wrap_qip_req_rsp)(handle_.number(), &asked, &answer);
    }
    const uint32_t result = ask_within(limit, asked, answer);
    return result == RIB_OK ? open_answer(answer) : result;
}

std::chrono::milliseconds rib_link::longest_wait() const { return envelopes_ ? envelope_wait : plain_wait; }

uint32_t rib_link::ask_within(std::chrono::milliseconds limit, rib_wrap_msg &asked, rib_wrap_msg &answer) {
    if (const uint32_t failure = send_at_once(asked); failure != RIB_OK) {
        return failure;
    }
    const uint32_t token = qip_rr_token_get(&asked.ref);
    qip_drop(handle_.number(), &asked.ref); // as the wrappers do, whatever comes of it
    return receive(limit, token, answer);
}

uint32_t rib_link::send_at_once(rib_wrap_msg &asked) {
    return (envelopes_ ? rib_wrap_cmi_send_non_blk : rib_wrap_qip_send_non_blk)(handle_.number(), &asked.ref, &asked);
}

uint32_t rib_link::receive(std::chrono::milliseconds limit, uint32_t token, rib_wrap_msg &answer) {
    const qip_recv_opts opts = answer_within(limit, token);
    return qip_recv(handle_.number(), &answer.ref, &opts) == 0
               ? RIB_OK
               : RIB_PLATFORM_FAILURE | (static_cast<uint32_t>(errno) & errno_bits);
}

uint32_t rib_link::open_answer(rib_wrap_msg &answer) const {
    answer.payload = static_cast<uint8_t *>(qip_payload_get(&answer.ref));
    answer.payload_size = qip_payload_size(&answer.ref);
    if (!envelopes_) {
        return RIB_OK;
    }
    if (rib_check_cmi_answer(answer.payload, answer.payload_size, nullptr) != RIB_OK) {
        return RIB_BAD_PARAMETERS;
    }
    answer.payload += wrap::content_at;
    answer.payload_size -= wrap::content_at;
    return RIB_OK;
}

bool rib_link::heard_of_start(std::chrono::milliseconds limit) {
    listen(started_ ? std::chrono::milliseconds{} : limit);
    return std::exchange(started_, false);
}

void rib_link::find() {
    const int failure = failure_now();
    if (failure != 0 && !await()) {
        throw no_answer(result_text(RIB_PLATFORM_FAILURE | static_cast<uint32_t>(failure)));
    }
}

int rib_link::failure_now() {
    const auto limit = std::min(waiting_.for_answer(), longest_probe);
    const patience::waiting counted(waiting_);
    return failure_to_answer(handle_, limit);
}

bool rib_link::pause() {
    const auto pause = waiting_.next_pause();
    if (pause) {
        listen(*pause);
    }
    return pause.has_value();
}

bool rib_link::await() {
    while (pause()) {
        if (failure_now() == 0) {
            return true;
        }
        if (!told_ && waiting_.seconds_left().count() > 0) {
            std::fprintf(stderr, "ribkit: waiting for a RIB at %s, for %s at most\n", shown_url_.c_str(),
                         base::duration_text(waiting_.seconds_left()).c_str());
            told_ = true;
        }
    }
    return false;
}

// A server that comes back tells nobody, so that one looks now and then.
void rib_link::listen(std::chrono::milliseconds limit) {
    constexpr std::chrono::milliseconds longest{1000};
    do {
        const auto part = std::min(limit, longest);
        limit -= part;
        take_notes(part);
        look_around();
    } while (!started_ && limit.count() > 0);
}

void rib_link::look_around() {
    const uint32_t now = qip_reconnections(handle_.number());
    if (started_) {
        reconnections_ = now;
    } else if (now != reconnections_ && is_answered(handle_)) {
        reconnections_ = now;
        started_ = true;
    }
}

// As many as may wait at once, and no more: nobody stays here because another one tells all the time.
void rib_link::take_notes(std::chrono::milliseconds limit) {
    qip_recv_opts opts = incoming_within(limit);
    for (uint32_t taken = 0; taken < notifications_bound; taken++) {
        qip_ref note{};
        if (qip_recv(handle_.number(), &note, &opts) != 0) {
            if (is_closed(static_cast<uint32_t>(errno))) {
                throw link_closed();
            }
            return;
        }
        take_in(note);
        opts = incoming_within({}); // those that wait already
    }
}

void rib_link::take_in(qip_ref &note) {
    const bool tells_start = is_start(note);
    started_ = tells_start || started_;
    const uint32_t opcode = qip_opcode_get(&note);
    const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&note));
    const std::vector<uint8_t> message(payload, payload + (take_note_ ? qip_payload_size(&note) : 0));
    rib_wrap_qip_drop(uuid_, handle_.number(), &note);
    if (take_note_ && !tells_start) {
        take_note_(opcode, message);
    }
}

} // namespace ribkit::bus
