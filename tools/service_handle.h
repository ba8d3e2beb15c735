// A handle of the message service that closes itself.
#pragma once

#include "ribkit_platform.h"

#include <cerrno>
#include <cstdint>
#include <string>
#include <system_error>

namespace ribkit {

class service_handle {
  public:
    explicit service_handle(const std::string &url) {
        if (qip_open(url.c_str(), &number_) != 0) {
            throw std::system_error(errno, std::generic_category(), "cannot open " + url);
        }
    }
    service_handle(const service_handle &) = delete;
    service_handle &operator=(const service_handle &) = delete;
    ~service_handle() { close(); }

    /// Ends what waits on the handle; harmless when it is closed already.
    void close() {
        if (open_) {
            open_ = false;
            qip_close(number_);
        }
    }

    [[nodiscard]] uint32_t number() const { return number_; }

  private:
    uint32_t number_ = 0;
    bool open_ = true;
};

} // namespace ribkit
