// FSPF as a client of the RIB: it keeps what the RIB has accepted, and sends what changed since.
#pragma once

#include "tools/fabric.h"
#include "tools/fcurt_message.h"
#include "tools/routes.h"
#include "tools/service_handle.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>

namespace ribkit {

struct client_options {
    bool trace = false;
    size_t message_limit = size_t{64} * 1024; ///< bytes; at least smallest_message_limit
    /// Called as work goes on: what is done, how much of it, and how much there is.
    std::function<void(const char *what, size_t done, size_t total)> progress = [](const char *, size_t, size_t) {};
};

/// What went over the bus, counted in route records.
struct client_traffic {
    size_t added = 0, deleted = 0, changed = 0;
    size_t refused = 0; ///< of those sent, not accepted
    size_t messages = 0;
    size_t bytes_sent = 0, bytes_received = 0;
    std::chrono::duration<double> computing{}, exchanging{};

    [[nodiscard]] size_t sent() const { return added + deleted + changed; }
    client_traffic &operator+=(const client_traffic &more);
};

class fspf_client {
  public:
    fspf_client(const std::string &url, client_options options);

    /// Computes the routes of every VSAN and brings the RIB up to date. Throws std::runtime_error where it does not
    /// answer; what it refuses is reported on standard error and sent again the next time.
    client_traffic converge(const fabric &f);

    /// Sends one update and awaits the answer, whose result is reported where it is no success.
    fcurt_response exchange(std::span<uint8_t> update);

  private:
    using vsan_changes = std::map<uint32_t, std::vector<route_change>>;
    vsan_changes changes_for(const fabric &f);
    void send(uint32_t vsan, std::vector<route_change> changes);
    void find_accepted(uint32_t vsan, std::span<const route_change> changes);
    fcurt_response ask(std::span<uint8_t> update);
    void count(uint32_t vsan, const route_change &change);
    static void trace(std::span<const uint8_t> update);

    service_handle handle_;
    client_options options_;
    std::map<uint32_t, route_table> accepted_; ///< by VSAN
    client_traffic traffic_;                   ///< of the current call
    size_t to_send_ = 0;
};

} // namespace ribkit
