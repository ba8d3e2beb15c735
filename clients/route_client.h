// A client of the RIB, of one of its tables: given the routes that it wants, it brings the RIB there with the fewest
// messages. It keeps what the RIB has accepted, and sends what changed since. Where it is not known what the RIB has,
// because an answer is missing or the RIB has started anew, the client reads it; a client that starts anew may merge
// instead. What it counts is what became of the RIB's routes, however often that had to be sent.
#pragma once

#include "bus/rib_link.h"
#include "clients/client_traffic.h"
#include "clients/table_reader.h"
#include "model/system.h"
#include "protocol/route_messages.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace ribkit::clients {

/// A VSAN's table as a client holds it. Several VSANs may share one, and nobody changes it.
template <class Table> using own_table = std::map<typename Table::key_in_vsan, typename Table::route>;
template <class Table> using shared_table = std::shared_ptr<const own_table<Table>>;
/// What a client wants the RIB to have, by VSAN.
template <class Table> using wanted_tables = std::map<uint32_t, shared_table<Table>>;

/// What a client does about routes of its own that it knows nothing of.
enum class takeover : uint8_t {
    reads,  ///< asks for them, and sends what is different
    merges, ///< names all that it wants: the RIB keeps those, and removes the rest
};

struct client_options {
    bool trace = false;
    size_t message_limit = size_t{64} * 1024; ///< bytes; at least smallest_message_limit
    bus::link_options link{};
    /// Called as work goes on: what is done, how much of it, and how much there is.
    std::function<void(const char *what, size_t done, size_t total)> progress = [](const char *, size_t, size_t) {};
    std::string name{};                 ///< under which it registers; empty: it does not
    std::optional<uint32_t> distance{}; ///< with which it registers; none: what a client of its identity has
};

/// @tparam Table unicast_table, multicast_table or label_table
template <class Table> class route_client {
  public:
    using change = model::table_change<typename Table::key_in_vsan, typename Table::route>;

    route_client(const std::string &url, uint32_t uuid, client_options options);

    /// The RIB may hold routes of this client that it knows nothing of.
    void start_over(takeover how = takeover::reads);

    /// Looks for the RIB, and waits for it. Throws no_answer where there is none in time, and link_closed.
    void find_rib() { link_.find(); }

    /// From now on it registers with this distance; none: what a client of its identity has.
    void set_distance(std::optional<uint32_t> distance);

    /// Brings the RIB's routes of these VSANs to what is wanted. What the RIB refuses is reported on standard error and
    /// sent again the next time. Where it does not answer, it is asked again for as long as the link's patience lasts,
    /// which is renewed whenever a VSAN's routes are in; throws no_answer after that, and link_closed.
    client_traffic converge(const wanted_tables<Table> &wanted);

    /// What the last call to converge came to, also where it has thrown.
    [[nodiscard]] const client_traffic &traffic() const { return traffic_; }

    /// Sends one update and awaits the answer. Throws no_answer and link_closed.
    protocol::fcurt_response exchange(std::span<uint8_t> update);

    /// Whether the RIB has started anew, so that its routes are gone, or may have; waits for that so long, and stays
    /// registered meanwhile. Throws link_closed.
    bool rib_started(std::chrono::milliseconds limit);

    /// Somebody else has heard that the RIB has started anew.
    void suppose_start();

    /// Registers again where it is time, as converge does. Throws no_answer and link_closed.
    void keep_registered();
    /// The same for whoever waits: a RIB that does not answer hears it later. Throws link_closed.
    void stay_registered();

    /// Ends whatever another thread waits for here.
    void close() { link_.close(); }

  private:
    /// Changes of which it is not known yet which of them the RIB has made.
    struct open_changes {
        std::vector<change> changes;
        size_t made; ///< at most
    };
    /// What makes one table of another. Many VSANs in turn ask for the same.
    struct difference {
        shared_table<Table> before, after;
        std::vector<change> changes;
    };

    /// A message, and what is in it.
    struct message_part {
        std::span<uint8_t> bytes;
        std::span<const change> changes;
    };

    void bring_all(const wanted_tables<Table> &wanted);
    bool bring(uint32_t vsan, const shared_table<Table> &wanted);
    const std::vector<change> &changes_to(uint32_t vsan, const shared_table<Table> &wanted);
    void send(uint32_t vsan, std::span<const change> changes, bool last_round);
    void merge(uint32_t vsan, const shared_table<Table> &wanted);
    message_part write(uint32_t vsan, std::span<const change> changes, uint32_t oper);
    protocol::fcurt_response change_routes(uint32_t vsan, message_part message);
    protocol::fcurt_response deliver(message_part message);
    void note_refused(uint32_t vsan, const protocol::fcurt_response &response, std::span<const change> changes);
    void read(uint32_t vsan);
    void settle(uint32_t vsan, const own_table<Table> &after);
    [[nodiscard]] bool registers_now() const;
    void say_alive();
    static void trace(std::span<const uint8_t> update);

    bus::rib_link link_;
    uint32_t uuid_;
    client_options options_;
    std::map<uint32_t, shared_table<Table>> accepted_; ///< by VSAN; null is empty
    std::map<uint32_t, open_changes> open_;            ///< by VSAN, since `accepted_`
    std::set<uint32_t> unsure_;                        ///< VSANs of which it is not known what the RIB has
    std::optional<takeover> takes_over_;               ///< what is done about those that are not in `accepted_`
    difference difference_;                            ///< the last one asked for
    std::vector<uint8_t> room_;                        ///< where messages are written
    client_traffic traffic_;                           ///< of the current call
    size_t to_send_ = 0;
    std::optional<std::chrono::steady_clock::time_point> said_; ///< when it registered last, with this RIB
};

extern template class route_client<unicast_table>;
extern template class route_client<multicast_table>;
extern template class route_client<label_table>;

using unicast_client = route_client<unicast_table>;
using multicast_client = route_client<multicast_table>;
using label_client = route_client<label_table>;

} // namespace ribkit::clients
