// One message after the other is taken, answered and dropped until the handle is closed. Whatever a message holds, it
// is answered: with a refusal where it cannot be used.
#include "tools/rib_service.h"

#include "rib_codes.h"
#include "rib_wrap.h"

#include <array>
#include <cstdio>

namespace ribkit {

namespace {

constexpr qip_addr rib_address{0xfe000001, 25};
constexpr uint32_t queue_bound = 64;

} // namespace

rib_service::rib_service(const std::string &url, const rib_spaces &spaces, bool trace)
    : handle_(url), tables_(spaces, trace) {
    if (qip_listen(handle_.number(), &rib_address, queue_bound) != 0) {
        throw std::system_error(errno, std::generic_category(), "the RIB cannot listen on " + url);
    }
    thread_ = std::thread([this] { serve(); });
}

void rib_service::stop() {
    handle_.close();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void rib_service::serve() {
    qip_ref request{};
    while (qip_recv(handle_.number(), &request, nullptr) == 0) {
        answer(request);
        rib_wrap_qip_drop(RIB_CLIENT_RIB, handle_.number(), &request);
    }
}

fcurt_response rib_service::respond(uint32_t opcode, std::span<const uint8_t> payload) {
    if (opcode != fcurt_update_opcode) {
        return {RIB_NOT_SUPPORTED, 0, 0, 0, 0};
    }
    rib_check_report why{};
    const fcurt_response response = tables_.take_update(payload, &why);
    if (why.message != nullptr) {
        std::array<char, 160> text{};
        rib_check_report_str(&why, text.data(), text.size());
        std::fprintf(stderr, "ribkit: the RIB refuses a message: %s\n", text.data());
    }
    return response;
}

void rib_service::answer(const qip_ref &request) {
    const std::span payload(static_cast<const uint8_t *>(qip_payload_get(&request)), qip_payload_size(&request));
    const auto bytes = encode(respond(qip_opcode_get(&request), payload));
    rib_wrap_qip_rsp(handle_.number(), &request, bytes.data(), bytes.size());
}

} // namespace ribkit
