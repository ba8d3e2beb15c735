// FSPF as a client of the RIB: it keeps what the RIB has accepted, and sends what changed since. Where it is not known
// what the RIB has, because an answer is missing or the RIB has started anew, the client reads it.
#pragma once

#include "tools/fabric.h"
#include "tools/fcurt_message.h"
#include "tools/rib_link.h"
#include "tools/routes.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <span>
#include <string>

namespace ribkit {

struct client_options {
    bool trace = false;
    size_t message_limit = size_t{64} * 1024; ///< bytes; at least smallest_message_limit
    link_options link{};
    /// Called as work goes on: what is done, how much of it, and how much there is.
    std::function<void(const char *what, size_t done, size_t total)> progress = [](const char *, size_t, size_t) {};
};

/// What went over the bus, counted in route records.
struct client_traffic {
    size_t added = 0, deleted = 0, changed = 0;
    size_t refused = 0; ///< of those sent, not in the RIB as they were meant to be
    size_t messages = 0;
    size_t bytes_sent = 0, bytes_received = 0;
    std::chrono::duration<double> computing{}, exchanging{};

    [[nodiscard]] size_t sent() const { return added + deleted + changed; }
    client_traffic &operator+=(const client_traffic &more);
};

class fspf_client {
  public:
    fspf_client(const std::string &url, client_options options);

    /// Has what the RIB holds of this client read before anything is sent.
    void start_over(const fabric &f);

    /// Computes the routes of every VSAN and brings the RIB up to date. What the RIB refuses is reported on standard
    /// error and sent again the next time. Where it does not answer, it is asked again for as long as the link's
    /// patience; throws no_answer after that, and link_closed.
    client_traffic converge(const fabric &f);

    /// Sends one update and awaits the answer. Throws no_answer and link_closed.
    fcurt_response exchange(std::span<uint8_t> update);

    /// Whether the RIB has started anew, so that its routes are gone, or may have; waits for that so long. Throws
    /// link_closed.
    bool rib_started(std::chrono::milliseconds limit);

    /// Ends whatever another thread waits for here.
    void close() { link_.close(); }

  private:
    using vsan_routes = std::map<uint32_t, route_table>;

    void bring_all(const vsan_routes &wanted);
    void bring(uint32_t vsan, const route_table &wanted);
    void send(uint32_t vsan, const std::vector<route_change> &changes, bool last_round);
    void find_refused(const fcurt_response &response, uint32_t vsan, std::span<const route_change> changes);
    void read(uint32_t vsan);
    void count(uint32_t vsan, const route_change &change);
    static void trace(std::span<const uint8_t> update);

    rib_link link_;
    client_options options_;
    vsan_routes accepted_;      ///< by VSAN
    std::set<uint32_t> unsure_; ///< VSANs of which it is not known what the RIB has
    client_traffic traffic_;    ///< of the current call
    size_t to_send_ = 0;
};

} // namespace ribkit
