// A module that is not there yet may come; one that is there answers, or is given up.
#include "bus/module_link.h"

#include "base/stop_signals.h"
#include "base/text.h"
#include "ribkit_rib.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace ribkit::bus {

module_link::module_link(const std::string &url, uint32_t number, std::chrono::milliseconds patience)
    : url_(url), number_(number), waiting_(patience), handle_(url, waiting_) {}

std::string module_link::name() const { return base::joined("module ", number_, " at ", shown_url(url_)); }

/// @return the token of the answer
uint32_t module_link::send(uint32_t opcode, std::span<const uint8_t> request) {
    const qip_addr there{RIBKIT_NODE_MODULE, number_};
    const qip_send_opts at_once{{0, 1}};
    qip_ref sent{};
    while (qip_send(handle_.number(), &there, opcode, request.data(), static_cast<uint32_t>(request.size()), &sent,
                    nullptr, &at_once) != 0) {
        const int reason = errno;
        const auto pause = reason == ENOTCONN || reason == EAGAIN ? waiting_.next_pause() : std::nullopt;
        if (!pause) {
            throw std::runtime_error(base::joined("no answer from ", name(), ": ",
                                                  reason == ENOTCONN ? "nobody listens there" : std::strerror(reason)));
        }
        base::sleep_stoppably(*pause);
    }
    const uint32_t token = qip_rr_token_get(&sent);
    qip_drop(handle_.number(), &sent);
    return token;
}

std::vector<uint8_t> module_link::ask(uint32_t opcode, std::span<const uint8_t> request) {
    qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 0, send(opcode, request)}};
    const patience::waiting counted(waiting_);
    opts.word[4] = static_cast<uint32_t>(std::max<int64_t>(waiting_.for_answer().count(), 1));
    qip_ref answer{};
    if (qip_recv(handle_.number(), &answer, &opts) != 0) {
        throw std::runtime_error(base::joined("no answer from ", name(), ": ", std::strerror(errno)));
    }
    const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&answer));
    std::vector<uint8_t> said(payload, payload + qip_payload_size(&answer));
    qip_drop(handle_.number(), &answer);
    return said;
}

} // namespace ribkit::bus
