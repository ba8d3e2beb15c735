// What is asked counts as no traffic of the client's: nothing of its own goes with it.
#include "clients/wire_agreement.h"

#include "base/text.h"
#include "clients/question.h"
#include "protocol/wire_digests.h"
#include "rib_codes.h"
#include "ribkit_rib.h"

namespace ribkit::clients {

static std::string text_of(const std::vector<std::string_view> &messages) {
    std::string text(messages.front());
    if (messages.size() > 1) {
        text += base::joined(" and ", messages.size() - 1, messages.size() == 2 ? " other" : " others");
    }
    return text;
}

other_formats difference(const std::string &shown_url, const std::vector<std::string_view> &messages) {
    return other_formats(base::joined("the RIB at ", shown_url, " has another format of ", text_of(messages),
                                      ": it is of another version, and nothing is sent to it"));
}

/// @param theirs has passed its check
static void refuse_difference(const std::string &shown_url, std::span<const uint8_t> theirs,
                              std::string_view beginning) {
    const auto different = protocol::different_messages(theirs, beginning);
    if (!different.empty()) {
        throw difference(shown_url, different);
    }
}

static void compare_formats(bus::rib_link &link) {
    std::vector<uint8_t> theirs;
    try {
        theirs = ask_checked(link, RIBKIT_OPCODE_WIRE_DIGESTS, {}, protocol::check_wire_digests);
    } catch (const refused_question &) {
        return;
    }
    refuse_difference(link.shown_url(), theirs, "rib_");
}

/// Empty where none came in time.
static std::vector<uint8_t> answer_of(const bus::service_handle &handle, uint32_t opcode) {
    const qip_send_opts at_once{{1, 1}};
    qip_ref ref{};
    if (qip_send(handle.number(), &ribkit_rib_address, opcode, nullptr, 0, &ref, nullptr, &at_once) != 0) {
        return {};
    }
    const qip_recv_opts within_a_second{{QIP_RECV_BY_TOKEN, 0, 0, qip_rr_token_get(&ref), 1000}};
    qip_drop(handle.number(), &ref);
    if (qip_recv(handle.number(), &ref, &within_a_second) != 0) {
        return {};
    }
    const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&ref));
    std::vector<uint8_t> answer(payload, payload + qip_payload_size(&ref));
    qip_drop(handle.number(), &ref);
    return answer;
}

void find_rib(bus::rib_link &link) {
    link.find();
    patiently(link, [&link] { compare_formats(link); });
    link.take_traffic();
}

void compare_formats_of_modules(const std::string &url, std::chrono::milliseconds patience) {
    const bus::service_handle handle(url, patience);
    const auto theirs = answer_of(handle, RIBKIT_OPCODE_WIRE_DIGESTS);
    if (protocol::check_wire_digests(theirs.data(), static_cast<uint32_t>(theirs.size()), nullptr) == RIB_OK) {
        refuse_difference(bus::shown_url(url), theirs, "fib_");
    }
}

} // namespace ribkit::clients
