// A handle of the message service that closes itself.
#pragma once

#include "bus/patience.h"
#include "ribkit_platform.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

namespace ribkit::bus {

/// The bus as it may be printed: without user, password or token.
std::string shown_url(const std::string &url);

/// Whether a server carries the bus, so that several may listen at one address.
bool names_server(const std::string &url);

class service_handle {
  public:
    /// Opens the bus. Where no server is there, tries again for as long as patience lasts, and says so on standard
    /// error. Throws an input_error where the URL is none of a bus, and std::runtime_error where it cannot be opened.
    service_handle(const std::string &url, patience &waiting);
    explicit service_handle(const std::string &url, std::chrono::milliseconds allowed = {});
    service_handle(const service_handle &) = delete;
    service_handle &operator=(const service_handle &) = delete;
    ~service_handle() { close(); }

    /// Ends what waits on the handle; harmless when it is closed already.
    void close();

    [[nodiscard]] uint32_t number() const { return number_; }

  private:
    void open(const std::string &url, patience &waiting);

    uint32_t number_ = 0;
    std::atomic<uint32_t> open_{1}; // a word: riscv64 exchanges bytes with libatomic only
};

} // namespace ribkit::bus
