// The RIB as a listener on the message bus, on a thread of its own.
#pragma once

#include "tools/rib_tables.h"
#include "tools/service_handle.h"

#include <cstdint>
#include <span>
#include <string>
#include <thread>

namespace ribkit {

class rib_service {
  public:
    /// Listens at the RIB's address of this bus. Throws std::system_error where that cannot be.
    explicit rib_service(const std::string &url, const rib_spaces &spaces = {}, bool trace = false);
    ~rib_service() { stop(); }

    /// Answers no more.
    void stop();

    /// For reading once the service has stopped.
    [[nodiscard]] const rib_tables &tables() const { return tables_; }

  private:
    void serve();
    void answer(const qip_ref &request);
    fcurt_response respond(uint32_t opcode, std::span<const uint8_t> payload);

    service_handle handle_;
    rib_tables tables_;
    std::thread thread_;
};

} // namespace ribkit
