// A server of a test's own, on loopback and a port of its own; ended with the object.
#pragma once

#include <cstdint>
#include <string>
#include <sys/types.h>

namespace ribkit::platform {

class nats_server {
  public:
    /// Starts it with a configuration's text and waits until it accepts connections.
    explicit nats_server(const std::string &configuration = "");
    nats_server(const nats_server &) = delete;
    nats_server &operator=(const nats_server &) = delete;
    ~nats_server();

    void stop();
    void start();

    /// "nats://HOST:PORT", with "USER:PASSWORD@" before the host where given.
    [[nodiscard]] std::string url(const std::string &identity = "") const;

  private:
    std::string file_;
    uint16_t port_;
    pid_t process_ = 0;
};

} // namespace ribkit::platform
