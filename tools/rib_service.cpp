// One message after the other is taken, answered and dropped until the handle is closed. Whatever a message holds, it
// is answered, in an envelope if it came in one: with a refusal where it cannot be used.
#include "tools/rib_service.h"

#include "rib_codes.h"
#include "rib_wrap.h"
#include "ribkit_rib.h"
#include "tools/fcurt_query.h"
#include "tools/rib_link.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace ribkit {

namespace {

constexpr uint32_t queue_bound = 64;

void report(const rib_check_report &why) {
    std::array<char, 160> text{};
    rib_check_report_str(&why, text.data(), text.size());
    std::fprintf(stderr, "ribkit: the RIB refuses a message: %s\n", text.data());
}

std::vector<uint8_t> refusal(uint32_t result) {
    const auto bytes = encode(fcurt_response{result, 0, 0, 0, 0});
    return {bytes.begin(), bytes.end()};
}

} // namespace

rib_service::rib_service(const std::string &url, const rib_options &options)
    : handle_(url, options.patience), tables_(options.spaces, options.trace) {
    if (qip_listen(handle_.number(), &ribkit_rib_address, queue_bound) != 0) {
        throw std::system_error(errno, std::generic_category(), "the RIB cannot listen on " + shown_url(url));
    }
    rib_wrap_qip_note(handle_.number(), RIBKIT_OPCODE_STARTED, nullptr, 0); // what fails is in the debug history
    thread_ = std::thread([this] { serve(); });
    qip_step_aside();
    serving_.wait();
}

void rib_service::stop() {
    handle_.close();
    if (thread_.joinable()) {
        qip_step_aside();
        thread_.join();
    }
}

// A virtual clock knows a thread from its first call on, so that one is made before anybody may ask.
void rib_service::serve() {
    bool open = take_one(false);
    serving_.count_down();
    while (open) {
        open = take_one(true);
    }
}

/// @return whether the handle is open still
bool rib_service::take_one(bool may_wait) {
    const qip_recv_opts opts{{QIP_RECV_INCOMING, may_wait ? 0U : 1U}};
    qip_ref ref{};
    if (qip_recv(handle_.number(), &ref, &opts) != 0) {
        return errno != ECANCELED && errno != EBADF;
    }
    take(ref);
    rib_wrap_qip_drop(RIB_CLIENT_RIB, handle_.number(), &ref);
    return true;
}

void rib_service::take(const qip_ref &ref) {
    const auto *bytes = static_cast<const uint8_t *>(qip_payload_get(&ref));
    const uint32_t size = qip_payload_size(&ref);
    answered_++;
    if (qip_opcode_get(&ref) != RIB_CMI_OPCODE) {
        const auto answer = respond({qip_opcode_get(&ref), {bytes, size}});
        rib_wrap_qip_rsp(handle_.number(), &ref, answer.data(), static_cast<uint32_t>(answer.size()));
        return;
    }
    rib_check_report why{};
    std::vector<uint8_t> answer;
    if (const uint32_t result = rib_check_cmi_request(bytes, size, &why); result != RIB_OK) {
        report(why);
        answer = refusal(result);
    } else {
        uint32_t opcode = 0;
        uint32_t length = 0;
        const uint8_t *payload = nullptr;
        rib_wrap_cmi_recv(bytes, size, &opcode, &payload, &length);
        answer = respond({opcode, {payload, length}});
    }
    rib_wrap_cmi_rsp(handle_.number(), &ref, answer.data(), static_cast<uint32_t>(answer.size()));
}

std::vector<uint8_t> rib_service::respond(const request &asked) {
    switch (asked.opcode) {
    case RIBKIT_OPCODE_FCURT_UPDATE:
        return update(asked.payload);
    case RIBKIT_OPCODE_FCURT_QUERY:
        return find(asked.payload);
    default:
        return refusal(RIB_NOT_SUPPORTED);
    }
}

std::vector<uint8_t> rib_service::update(std::span<const uint8_t> payload) {
    rib_check_report why{};
    const auto bytes = encode(tables_.take_update(payload, &why));
    if (why.message != nullptr) {
        report(why);
    }
    return {bytes.begin(), bytes.end()};
}

std::vector<uint8_t> rib_service::find(std::span<const uint8_t> payload) const {
    rib_check_report why{};
    const uint32_t result = rib_check_fcurt_query(payload.data(), static_cast<uint32_t>(payload.size()), &why);
    if (result != RIB_OK) {
        report(why);
        return refusal(result);
    }
    const auto query = decode_fcurt_query(std::span<const uint8_t, RIBKIT_FCURT_QUERY_SIZE>(payload));
    if (query.type != RIBKIT_QUERY_ALL && query.type != RIBKIT_QUERY_VSAN_ALL) {
        return refusal(RIB_NOT_SUPPORTED);
    }
    return encode_whole(tables_.answer(query));
}

} // namespace ribkit
