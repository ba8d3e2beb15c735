// FSPF as a client of the RIB: it keeps what the RIB has accepted, and sends what changed since. Where it is not known
// what the RIB has, because an answer is missing or the RIB has started anew, the client reads it. What it counts is
// what became of the RIB's routes, however often that had to be sent.
#pragma once

#include "bus/rib_link.h"
#include "clients/client_traffic.h"
#include "model/routes.h"
#include "protocol/route_messages.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <span>
#include <string>

namespace ribkit::clients {

struct client_options {
    bool trace = false;
    size_t message_limit = size_t{64} * 1024; ///< bytes; at least smallest_message_limit
    bus::link_options link{};
    /// Called as work goes on: what is done, how much of it, and how much there is.
    std::function<void(const char *what, size_t done, size_t total)> progress = [](const char *, size_t, size_t) {};
};

class fspf_client {
  public:
    fspf_client(const std::string &url, client_options options);

    /// Has what the RIB holds of this client read before anything is sent.
    void start_over();

    /// Looks for the RIB, and waits for it. Throws no_answer where there is none in time, and link_closed.
    void find_rib() { link_.find(); }

    /// Brings the RIB's routes of these VSANs to what is wanted. What the RIB refuses is reported on standard error and
    /// sent again the next time. Where it does not answer, it is asked again for as long as the link's patience lasts,
    /// which is renewed whenever a VSAN's routes are in; throws no_answer after that, and link_closed.
    client_traffic converge(const model::wanted_routes &wanted);

    /// What the last call to converge came to, also where it has thrown.
    [[nodiscard]] const client_traffic &traffic() const { return traffic_; }

    /// Sends one update and awaits the answer. Throws no_answer and link_closed.
    protocol::fcurt_response exchange(std::span<uint8_t> update);

    /// Whether the RIB has started anew, so that its routes are gone, or may have; waits for that so long. Throws
    /// link_closed.
    bool rib_started(std::chrono::milliseconds limit);

    /// Ends whatever another thread waits for here.
    void close() { link_.close(); }

  private:
    /// Changes of which it is not known yet which of them the RIB has made.
    struct open_changes {
        std::vector<model::route_change> changes;
        size_t made; ///< at most
    };
    /// What makes one table of another. Many VSANs in turn ask for the same.
    struct difference {
        model::shared_routes before, after;
        std::vector<model::route_change> changes;
    };

    /// A message, and what is in it.
    struct message_part {
        std::span<uint8_t> bytes;
        std::span<const model::route_change> changes;
    };

    void bring_all(const model::wanted_routes &wanted);
    bool bring(uint32_t vsan, const model::shared_routes &wanted);
    const std::vector<model::route_change> &changes_to(uint32_t vsan, const model::shared_routes &wanted);
    void send(uint32_t vsan, std::span<const model::route_change> changes, bool last_round);
    message_part write(uint32_t vsan, std::span<const model::route_change> changes);
    protocol::fcurt_response deliver(uint32_t vsan, std::span<uint8_t> message,
                                     std::span<const model::route_change> changes);
    void note_refused(uint32_t vsan, const protocol::fcurt_response &response,
                      std::span<const model::route_change> changes);
    void read(uint32_t vsan);
    void settle(uint32_t vsan, const model::route_table &after);
    static void trace(std::span<const uint8_t> update);

    bus::rib_link link_;
    client_options options_;
    std::map<uint32_t, model::shared_routes> accepted_; ///< by VSAN; null is empty
    std::map<uint32_t, open_changes> open_;             ///< by VSAN, since `accepted_`
    std::set<uint32_t> unsure_;                         ///< VSANs of which it is not known what the RIB has
    bool reads_first_ = false;                          ///< nor of those that are not in `accepted_`
    difference difference_;                             ///< the last one asked for
    std::vector<uint8_t> room_;                         ///< where messages are written
    client_traffic traffic_;                            ///< of the current call
    size_t to_send_ = 0;
};

} // namespace ribkit::clients
