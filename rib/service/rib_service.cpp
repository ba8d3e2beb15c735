// One message after the other is taken, answered and dropped until the service is stopped. Whatever a message holds, it
// is answered, in an envelope if it came in one: with a refusal where it cannot be used, or memory fails.
#include "rib/service/rib_service.h"

#include "base/text.h"
#include "bus/history.h"
#include "bus/rib_link.h"
#include "protocol/route_messages.h"
#include "protocol/wire_digests.h"
#include "rib/service/updates.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "ribkit_rib.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <exception>
#include <new>
#include <stdexcept>
#include <system_error>

namespace ribkit::rib {

namespace {

constexpr uint32_t queue_bound = 64;
constexpr uint64_t microseconds = 1'000'000; ///< a second

std::array<uint8_t, wire::route_rsp.size> refusal(uint32_t result) {
    return encode(protocol::fcurt_response{result, 0, 0, 0, 0});
}

constexpr bool lacks_memory(uint32_t result) {
    return result == RIB_OUT_OF_MEMORY || result == (RIB_PLATFORM_FAILURE | ENOMEM);
}

std::string sender_of(const qip_ref &ref) {
    const std::string name = qip_sender_name(&ref);
    return name.empty() ? base::joined("sender ", qip_sender_get(&ref)) : name;
}

} // namespace

rib_service::rib_service(const std::string &url, const rib_options &options)
    : handle_(url, options.patience), policy_(options.policy), binds_names_(!url.starts_with("local:")),
      gave_way_(options.gave_way),
      notices_([this](uint32_t opcode, std::span<const uint8_t> message) { return send_notice(opcode, message); }),
      watch_(rib_.logs, notices_, followed_, options.trace),
      rib_({options.spaces, options.policy.quotas, options.trace || options.memory}, &watch_, seconds_now()),
      exchange_(handle_.number(), followed_, rib_), hold_(qip_now(), options.hold),
      complaints_(options.complaints_to, !options.counts_at_end) {
    describe(options.vsans);
    listen(url);
    if (bus::names_server(url)) {
        send_claim();
    }
    rib_wrap_qip_note(handle_.number(), RIBKIT_OPCODE_STARTED, nullptr, 0); // what fails is in the debug history
    thread_.start([this] { serve(); });
    if (bus::names_server(url) && !stand_by()) {
        stop();
        throw std::runtime_error("another RIB answers at " + bus::shown_url(url));
    }
}

// Whether a VSAN is suspended is known with the routes: as if its manager had said so.
void rib_service::describe(const described_vsans &vsans) {
    for (const auto &[vsan, is] : vsans) {
        const bool suspended = is.state == model::vsan_state::suspended;
        rib_.described.emplace(vsan, is).first->second.state = model::vsan_state::active;
        if (suspended) {
            rib_.routes.update<unicast>({RIB_CLIENT_VSAN_MANAGER, vsan, RIB_OPER_SUSPEND},
                                        std::span<const unicast::change>());
        }
    }
}

void rib_service::listen(const std::string &url) {
    std::vector<const char *> names;
    for (const auto &[name, clients] : policy_.who) {
        names.push_back(name.c_str());
    }
    if (qip_listen_to(handle_.number(), &ribkit_rib_address, queue_bound, names.data(),
                      static_cast<uint32_t>(names.size())) != 0) {
        throw std::system_error(errno, std::generic_category(), "the RIB cannot listen on " + bus::shown_url(url));
    }
}

void rib_service::stop() {
    {
        const std::scoped_lock locked(lock_);
        stopped_ = true;
        stopping_.notify_all();
    }
    handle_.close();
    thread_.join();
    drop_held();
    complaints_.end();
}

void rib_service::serve() {
    while (take_one()) {
    }
}

// Whoever answers fast keeps nobody else waiting: behind an answer of a module a request has its turn.
/// @return whether the service goes on
bool rib_service::take_one() {
    const qip_recv_opts opts = next_wait();
    const qip_recv_opts at_once{{QIP_RECV_INCOMING, 1}};
    qip_ref ref{};
    if (qip_recv(handle_.number(), &ref, &opts) == 0) {
        failures_ = 0;
        const bool was_answer = qip_sender_get(&ref) == 0;
        take_and_drop(ref);
        if (was_answer && qip_recv(handle_.number(), &ref, &at_once) == 0) {
            take_and_drop(ref);
        }
    } else if (errno != ETIMEDOUT && !(opts.word[1] != 0 && errno == EAGAIN)) {
        rest_after(errno);
    }
    keep_house();
    const std::scoped_lock locked(lock_);
    return !stopped_;
}

void rib_service::take_and_drop(qip_ref &ref) {
    keeps_request_ = false;
    take(ref);
    if (!keeps_request_) {
        rib_wrap_qip_drop(RIB_CLIENT_RIB, handle_.number(), &ref);
    }
}

// Without an end, but where somebody's time may be over or something waits to be sent.
qip_recv_opts rib_service::next_wait() const {
    constexpr uint64_t soon = 50; // milliseconds
    const bool hears_answers = !claims_open_.empty() || exchange_.awaits();
    qip_recv_opts opts{{hears_answers ? QIP_RECV_ANYTHING : QIP_RECV_INCOMING, exchange_.can_send() ? 1U : 0U}};
    uint64_t limit = notices_.waits() ? soon : rib_.clients.size() != 0 ? 1000 : 0;
    for (const auto due : {exchange_.next_due(), held_.next_due(), holds_ ? hold_.due() : std::nullopt}) {
        if (due) {
            const uint64_t left = (*due - std::min(*due, qip_now())) / 1000 + 1;
            limit = limit == 0 ? left : std::min(limit, left);
        }
    }
    opts.word[4] = static_cast<uint32_t>(limit);
    return opts;
}

/// What is due when a request was taken, or none came.
void rib_service::keep_house() {
    try {
        lose_clients();
        look_after_modules();
        settled_ = have_modules_all();
        notices_.flush();
    } catch (const std::bad_alloc &) { // later
        return;
    }
}

void rib_service::lose_clients() {
    const uint64_t heard = qip_now() / microseconds;
    if (rib_.clients.size() == 0 || heard == looked_) {
        return;
    }
    looked_ = heard;
    watch_.set_time(seconds_now());
    while (const auto lost = rib_.lose(heard, seconds_now())) {
        bus::note_in_history(line_of_loss(*lost));
    }
    notices_.listen(rib_.clients.size() != 0);
}

// What is lost with a server its listeners know of.
bool rib_service::send_notice(uint32_t opcode, std::span<const uint8_t> message) const {
    const qip_send_opts at_once{{0, 1}};
    return qip_send(handle_.number(), &ribkit_listeners_address, opcode, message.data(),
                    static_cast<uint32_t>(message.size()), nullptr, nullptr, &at_once) == 0 ||
           (errno != EAGAIN && errno != ENOMEM && errno != ENOBUFS);
}

// What fails again and again would do so for ever: the pauses grow. They are of real time, so that the first failures
// are without one: under a virtual clock others would have lost their patience.
void rib_service::rest_after(int error) {
    constexpr std::chrono::milliseconds longest{250};
    constexpr uint32_t borne = 16;
    claims_open_.clear();
    exchange_.look_for_lost();
    failures_++;
    std::unique_lock locked(lock_);
    if (!stopped_ && failures_ > borne) {
        complaints_.add("the RIB cannot receive", std::strerror(error));
        qip_step_aside();
        stopping_.wait_for(locked, std::min(longest, std::chrono::milliseconds(1U << std::min(failures_ - borne, 8U))),
                           [this] { return stopped_; });
    }
}

// Nothing that a message causes ends the service.
void rib_service::take(const qip_ref &ref) {
    const uint32_t opcode = qip_opcode_get(&ref);
    const bool in_envelope = opcode == RIB_CMI_OPCODE;
    if (is_answer_to_claim(ref)) {
        return hear_answer(ref);
    }
    if (hear_module_answer(ref)) {
        return;
    }
    answered_++;
    uint32_t failure = RIB_OK;
    try {
        const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&ref));
        const auto response =
            in_envelope ? respond_in_envelope(ref) : respond({ref, opcode, {payload, qip_payload_size(&ref)}});
        if (!response.empty()) {
            answer(ref, in_envelope, response);
        }
        return;
    } catch (const std::bad_alloc &) {
        failure = RIB_OUT_OF_MEMORY;
    } catch (const std::exception &) {
        failure = RIB_FAILED;
    }
    complain(ref, opcode, failure, "");
    answer(ref, in_envelope, refusal(failure));
}

// A failure of memory may be over at once; the client would wait in vain.
void rib_service::answer(const qip_ref &ref, bool in_envelope, std::span<const uint8_t> payload) {
    constexpr int most_tries = 4;
    settled_ = have_modules_all();
    const auto wrapper = in_envelope ? rib_wrap_cmi_rsp : rib_wrap_qip_rsp;
    const auto size = static_cast<uint32_t>(payload.size());
    int tries = 1;
    while (lacks_memory(wrapper(handle_.number(), &ref, payload.data(), size)) && tries < most_tries) {
        tries++;
    }
    if (tries == most_tries) {
        complaints_.add("the RIB cannot answer", std::strerror(ENOMEM));
    }
}

bytes rib_service::respond_in_envelope(const qip_ref &ref) {
    const auto *envelope = static_cast<const uint8_t *>(qip_payload_get(&ref));
    const uint32_t size = qip_payload_size(&ref);
    rib_check_report why{};
    if (const uint32_t result = rib_check_cmi_request(envelope, size, &why); result != RIB_OK) {
        return refuse({ref, RIB_CMI_OPCODE, {}}, result, text_of(why));
    }
    uint32_t opcode = 0;
    uint32_t length = 0;
    const uint8_t *payload = nullptr;
    rib_wrap_cmi_recv(envelope, size, &opcode, &payload, &length);
    return respond({ref, opcode, {payload, length}, true});
}

const rib_service::request_row rib_service::own_requests[] = {
    {RIBKIT_OPCODE_PROBE, &rib_service::hear_probe},
    {RIBKIT_OPCODE_CLAIM, &rib_service::hear_claim},
    {RIBKIT_OPCODE_WIRE_DIGESTS, &rib_service::tell_formats},
    {RIBKIT_OPCODE_FCURT_UPDATE, &rib_service::update<unicast>},
    {RIBKIT_OPCODE_FCMRT_UPDATE, &rib_service::update<multicast>},
    {RIBKIT_OPCODE_FCLRT_UPDATE, &rib_service::update<label>},
    {RIBKIT_OPCODE_FIB_NODE, &rib_service::hear_module},
};

bytes rib_service::respond(const request &asked) {
    watch_.set_time(seconds_now());
    if (rib_.notes_requests) {
        bus::note_in_history("rib: opcode ", asked.opcode, ", ", asked.payload.size(), " bytes from ",
                             sender_of(asked.ref));
    }
    for (const request_row &row : own_requests) {
        if (row.opcode == asked.opcode) {
            return (this->*row.handler)(asked);
        }
    }
    return ask(asked);
}

bytes rib_service::hear_probe(const request &asked) {
    if (!asked.payload.empty()) {
        return refuse(asked, RIB_NOT_SUPPORTED, "no such opcode");
    }
    const auto said = refusal(RIB_NOT_SUPPORTED);
    return {said.begin(), said.end()};
}

bytes rib_service::tell_formats(const request &asked) {
    return asked.payload.empty() ? protocol::own_wire_digests() : refuse(asked, RIB_EXCESS_DATA, "it has no payload");
}

/// Since 1970.
uint32_t rib_service::seconds_now() { return static_cast<uint32_t>(std::time(nullptr)); }

arrival rib_service::arrival_of(const request &asked) {
    return {seconds_now(), qip_now() / microseconds, asked.in_envelope};
}

/// What is answered from what the RIB knows.
bytes rib_service::ask(const request &asked) {
    const request_handler *row = find_handler(asked.opcode);
    if (row == nullptr) {
        return refuse(asked, RIB_NOT_SUPPORTED, "no such opcode");
    }
    rib_check_report why{};
    const auto size = static_cast<uint32_t>(asked.payload.size());
    if (const uint32_t result = row->check(asked.payload.data(), size, &why); result != RIB_OK) {
        return refuse(asked, result, text_of(why));
    }
    const uint32_t client = row->client(asked.payload.data());
    if (!may_speak(asked, client)) {
        return refuse(asked, RIB_BAD_PARAMETERS, base::joined("it may not use client ", client));
    }
    rib_.unsent = static_cast<uint32_t>(notices_.kept());
    rib_.unanswered = followed_.in_flight();
    rib_.waiting = static_cast<uint32_t>(held_.size());
    reply answer = row->answer(rib_, asked.payload.data(), arrival_of(asked));
    notices_.listen(rib_.clients.size() != 0);
    if (answer.compares) {
        return compare_and_wait(asked, *answer.compares);
    }
    return answer.result == RIB_OK ? std::move(answer.message) : refuse(asked, answer.result, "", client);
}

// The answer has its room before anything is changed: what was done is never answered as if it had failed.
template <class Kind> bytes rib_service::update(const request &asked) {
    hold_.hear_update(qip_now());
    const uint32_t oper = operation_of<Kind>(asked.payload);
    if (waits_for_modules(oper) && (oper == RIB_OPER_VERIFY || !followed_.all().empty())) {
        return update_and_wait<Kind>(asked);
    }
    bytes answer(wire::route_rsp.size);
    const auto words = encode(take_routes<Kind>(asked));
    std::copy(words.begin(), words.end(), answer.begin());
    return answer;
}

/// Does what an update says, and complains where it makes no sense.
template <class Kind> protocol::fcurt_response rib_service::take_routes(const request &asked) {
    rib_check_report why{};
    std::string barred;
    uint32_t sender = 0;
    const auto speaks = [&](uint32_t client) {
        barred = may_speak(asked, client) ? "" : base::joined("it may not use client ", client);
        sender = barred.empty() ? client : 0;
        return barred.empty();
    };
    const update_origin from{seconds_now(), asked.in_envelope, speaks};
    const protocol::fcurt_response response = take_update<Kind>(rib_.routes, asked.payload, from, &why);
    if (response.result != RIB_OK) {
        complain(asked.ref, asked.opcode, response.result,
                 why.message != nullptr ? text_of(why)
                 : !barred.empty()      ? barred
                                   : base::joined("vsan ", response.vsan, ", ", response.accepted, " routes accepted"),
                 sender);
    }
    return response;
}

bytes rib_service::refuse(const request &asked, uint32_t result, const std::string &why, uint32_t client) {
    complain(asked.ref, asked.opcode, result, why, client);
    const auto said = refusal(result);
    return {said.begin(), said.end()};
}

/// @param client who it is that is refused, where that is known
void rib_service::complain(const qip_ref &ref, uint32_t opcode, uint32_t result, const std::string &why,
                           uint32_t client) {
    rib_.refused.add(result, client);
    try {
        complaints_.add(base::joined("the RIB refuses opcode 0x", std::hex, opcode, std::dec, " from ", sender_of(ref),
                                     ": ", bus::result_text(result)),
                        why);
    } catch (const std::exception &) { // no memory for the text
        return;
    }
}

bool rib_service::may_speak(const request &asked, uint32_t client) const {
    return client <= RIBKIT_LAST_CLIENT && (!binds_names_ || policy_.allows(qip_sender_name(&asked.ref), client));
}

} // namespace ribkit::rib
