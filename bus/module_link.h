// The way to a module: whoever wants to know what it has asks it.
#pragma once

#include "bus/service_handle.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ribkit::bus {

class module_link {
  public:
    /// Opens the bus as service_handle does. Module, server and answers may together take as long as patience lasts.
    /// @param number of the module, from 1
    module_link(const std::string &url, uint32_t number, std::chrono::milliseconds patience);

    /// Waits for the module, and for its answer.
    /// @return the answer's payload. Throws std::runtime_error where none comes
    std::vector<uint8_t> ask(uint32_t opcode, std::span<const uint8_t> request);

  private:
    uint32_t send(uint32_t opcode, std::span<const uint8_t> request);
    [[nodiscard]] std::string name() const;

    std::string url_;
    uint32_t number_;
    patience waiting_;
    service_handle handle_;
};

} // namespace ribkit::bus
