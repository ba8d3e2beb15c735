// The RIB as a listener on the message bus, on a thread of its own.
#pragma once

#include "tools/rib_tables.h"
#include "tools/service_handle.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <latch>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace ribkit {

struct rib_options {
    rib_spaces spaces{};
    bool trace = false;                    ///< print a line for every route that moves in the hardware
    std::chrono::milliseconds patience{0}; ///< how long a server of the bus is waited for
};

class rib_service {
  public:
    /// Listens at the RIB's address of this bus, and notifies its clients. Throws as service_handle does, and
    /// std::system_error where it cannot listen.
    explicit rib_service(const std::string &url, const rib_options &options = {});
    rib_service(const rib_service &) = delete;
    rib_service &operator=(const rib_service &) = delete;
    ~rib_service() { stop(); }

    /// Answers no more.
    void stop();

    /// For reading once the service has stopped.
    [[nodiscard]] const rib_tables &tables() const { return tables_; }
    [[nodiscard]] size_t answered() const { return answered_; }

  private:
    struct request {
        uint32_t opcode;
        std::span<const uint8_t> payload;
    };

    void serve();
    bool take_one(bool may_wait);
    void take(const qip_ref &ref);
    std::vector<uint8_t> respond(const request &asked);
    std::vector<uint8_t> update(std::span<const uint8_t> payload);
    std::vector<uint8_t> find(std::span<const uint8_t> payload) const;

    service_handle handle_;
    rib_tables tables_;
    size_t answered_ = 0;
    std::latch serving_{1};
    std::thread thread_;
};

} // namespace ribkit
