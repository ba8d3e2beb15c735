// RIBs of other versions, for the tests of what asks a RIB for its formats before it says anything else.
#pragma once

#include "bus/service_handle.h"
#include "protocol/route_messages.h"
#include "protocol/wire_digests.h"
#include "rib_codes.h"
#include "ribkit_rib.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace ribkit::testing {

/// This program's formats but for one: the digest of that message is another.
inline std::vector<uint8_t> formats_but(std::string_view message) {
    std::vector<uint8_t> theirs = protocol::own_wire_digests();
    const std::string entry = std::string(message) + '\0';
    const auto at = std::search(theirs.begin(), theirs.end(), entry.begin(), entry.end());
    EXPECT_NE(at, theirs.end()) << message;
    if (at != theirs.end()) {
        at[protocol::wire_digest.size - 1] ^= 1;
    }
    return theirs;
}

/// The answer of a RIB that does not do what it is asked for.
inline std::vector<uint8_t> refusal_of_rib(uint32_t result) {
    const auto words = encode(protocol::fcurt_response{result, 0, 0, 0, 0});
    return {words.begin(), words.end()};
}

/// Answers the question for its formats with given bytes, and anything else with a refusal.
class other_rib {
  public:
    other_rib(const std::string &url, std::vector<uint8_t> formats) : formats_(std::move(formats)), handle_(url) {
        EXPECT_EQ(qip_listen(handle_.number(), &ribkit_rib_address, 64), 0);
        thread_ = std::thread([this] { serve(); });
    }
    other_rib(const other_rib &) = delete;
    other_rib &operator=(const other_rib &) = delete;
    ~other_rib() {
        handle_.close();
        thread_.join();
    }

    /// How many messages came beside the question; those with nothing in them ask only whether somebody is there.
    [[nodiscard]] unsigned told() const { return told_; }

  private:
    void serve() {
        const std::vector<uint8_t> refused = refusal_of_rib(RIB_NOT_SUPPORTED);
        for (qip_ref ref{}; qip_recv(handle_.number(), &ref, nullptr) == 0; qip_drop(handle_.number(), &ref)) {
            const bool asks = qip_opcode_get(&ref) == RIBKIT_OPCODE_WIRE_DIGESTS;
            told_ += asks || qip_payload_size(&ref) == 0 ? 0 : 1;
            const auto &said = asks ? formats_ : refused;
            qip_send(handle_.number(), nullptr, 0, said.data(), static_cast<uint32_t>(said.size()), nullptr, &ref,
                     nullptr);
        }
    }

    const std::vector<uint8_t> formats_;
    std::atomic<unsigned> told_ = 0;
    bus::service_handle handle_;
    std::thread thread_;
};

} // namespace ribkit::testing
