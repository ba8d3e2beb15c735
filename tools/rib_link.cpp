#include "tools/rib_link.h"

#include "rib_codes.h"
#include "rib_text.h"
#include "rib_wrap.h"
#include "ribkit_rib.h"
#include "tools/input_error.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace ribkit {

namespace {

constexpr uint32_t notifications_bound = 64;
constexpr uint32_t errno_bits = 0xfff;

// Of the service: the handle is gone, before the call or during it.
bool is_closed(uint32_t reason) { return reason == ECANCELED || reason == EBADF; }

bool is_platform_failure(uint32_t result) { return (result & ~errno_bits) == RIB_PLATFORM_FAILURE; }

qip_recv_opts incoming_within(std::chrono::milliseconds limit) {
    const auto count = static_cast<uint32_t>(limit.count());
    return {{QIP_RECV_INCOMING, count == 0 ? 1U : 0U, 0, 0, count}};
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

// The errno of not being answered anything at all within a second, or 0.
static int failure_to_answer(const service_handle &handle) {
    qip_ref ref{};
    bool answered = qip_send(handle.number(), &ribkit_rib_address, 0, nullptr, 0, &ref, nullptr, nullptr) == 0;
    if (answered) {
        const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 1, qip_rr_token_get(&ref)}};
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

bool is_answered(const service_handle &handle) { return failure_to_answer(handle) == 0; }

void refuse_second_rib(const std::string &url, std::chrono::milliseconds patience) {
    const int error = failure_to_answer(service_handle(url, patience));
    if (error == 0 || error == ETIMEDOUT) {
        throw std::runtime_error(
            joined("another RIB ", error == 0 ? "answers" : "listens, but does not answer,", " at ", shown_url(url)));
    }
}

rib_link::rib_link(const std::string &url, uint32_t uuid, const link_options &options)
    : handle_(url, options.patience), uuid_(uuid), envelopes_(options.envelopes) {
    if (qip_listen(handle_.number(), &ribkit_listeners_address, notifications_bound) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot hear notifications on " + shown_url(url));
    }
}

std::vector<uint8_t> rib_link::ask(uint32_t opcode, std::span<uint8_t> request) {
    rib_wrap_msg asked{};
    rib_wrap_msg answer{};
    asked.uuid = uuid_;
    asked.opcode = opcode;
    asked.payload = request.data();
    asked.payload_size = static_cast<uint32_t>(request.size());
    const auto wrapper = envelopes_ ? rib_wrap_cmi_req_rsp : rib_wrap_qip_req_rsp;
    const uint32_t result = wrapper(handle_.number(), &asked, &answer);
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
    if (result != RIB_OK) {
        throw no_answer(result_text(result));
    }
    traffic_.messages++;
    traffic_.bytes_sent += request.size();
    traffic_.bytes_received += bytes.size();
    return bytes;
}

bool rib_link::heard_of_start(std::chrono::milliseconds limit) {
    listen(started_ ? std::chrono::milliseconds{} : limit);
    return std::exchange(started_, false);
}

bool rib_link::await(pauses &trying) {
    while (const auto pause = trying.next()) {
        listen(*pause);
        if (is_answered()) {
            return true;
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
    } else if (now != reconnections_ && is_answered()) {
        reconnections_ = now;
        started_ = true;
    }
}

void rib_link::take_notes(std::chrono::milliseconds limit) {
    qip_recv_opts opts = incoming_within(limit);
    qip_ref note{};
    while (qip_recv(handle_.number(), &note, &opts) == 0) {
        started_ = started_ || qip_opcode_get(&note) == RIBKIT_OPCODE_STARTED;
        rib_wrap_qip_drop(uuid_, handle_.number(), &note);
        opts = incoming_within({}); // those that wait already
    }
    if (is_closed(static_cast<uint32_t>(errno))) {
        throw link_closed();
    }
}

} // namespace ribkit
