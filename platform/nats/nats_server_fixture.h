// A server of a test's own, on loopback and a port that it chooses itself; it ends with the object, and with the test's
// process however that ends.
#pragma once

#include "testing/temporary_directory.h"
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
    ~nats_server() { stop(); }

    void stop();

    /// It stays there but does nothing any more; only stop() ends this.
    void suspend() const;

    /// Again, on the same port. The server ends with the thread that starts it.
    void start();

    /// Another configuration's text, for the next start, or taken over while it runs.
    void configure(const std::string &configuration) const;

    /// "nats://HOST:PORT", with "IDENTITY@" before the host where given.
    [[nodiscard]] std::string url(const std::string &identity = "", const std::string &scheme = "nats") const;

  private:
    void launch();
    [[nodiscard]] uint16_t announced_port() const;

    testing::temporary_directory home_;
    uint16_t port_ = 0;
    pid_t process_ = 0;
};

} // namespace ribkit::platform
