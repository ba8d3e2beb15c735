// A client of the RIB, of one of its tables: given the routes that it wants, it brings the RIB there with the fewest
// messages. It keeps what the RIB has accepted, and sends what changed since, several updates before the first is
// answered. Where it is not known what the RIB has,
// because an answer is missing or the RIB has started anew, the client reads it; a client that starts anew may merge
// instead. What it counts is what became of the RIB's routes, however often that had to be sent.
#pragma once

#include "bus/rib_link.h"
#include "clients/client_traffic.h"
#include "clients/known_routes.h"
#include "clients/registration.h"
#include "clients/update_pipeline.h"
#include "clients/wire_agreement.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace ribkit::clients {

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
    route_client(const std::string &url, uint32_t uuid, client_options options);
    route_client(const route_client &) = delete;
    route_client &operator=(const route_client &) = delete;
    ~route_client() = default;

    /// The RIB may hold routes of this client that it knows nothing of.
    void start_over(takeover how = takeover::reads);

    /// Looks for the RIB, waits for it, and compares formats. Throws as clients::find_rib does.
    void find_rib() { clients::find_rib(link_); }

    /// From now on it registers with this distance; none: what a client of its identity has.
    void set_distance(std::optional<uint32_t> distance) { registration_.set_distance(distance); }

    /// Brings the RIB's routes of these VSANs to what is wanted. What the RIB refuses is reported on standard error and
    /// sent again the next time. Where it does not answer, it is asked again for as long as the link's patience lasts,
    /// which is renewed whenever a VSAN's routes are in; throws no_answer after that, and link_closed.
    client_traffic converge(const wanted_tables<Table> &wanted);

    /// What the last call to converge came to, also where it has thrown.
    [[nodiscard]] const client_traffic &traffic() const { return traffic_; }

    /// Sends one update and awaits the answer. Throws no_answer and link_closed.
    protocol::fcurt_response exchange(std::span<uint8_t> update) {
        return response_in<Table>(link_.ask(Table::update, update));
    }

    /// Whether the RIB has started anew, so that its routes are gone, or may have; waits for that so long, and stays
    /// registered meanwhile. Throws link_closed.
    bool rib_started(std::chrono::milliseconds limit);

    /// Somebody else has heard that the RIB has started anew.
    void suppose_start();

    /// Registers again where it is time, as converge does. Throws no_answer and link_closed.
    void keep_registered() { registration_.keep(); }
    /// The same for whoever waits: a RIB that does not answer hears it later. Throws link_closed.
    void stay_registered() { registration_.stay(); }

    /// Ends whatever another thread waits for here.
    void close() { link_.close(); }

  private:
    using content = update_content<Table>;

    /// An update that was answered with less than all of it.
    struct refusal {
        protocol::fcurt_response response;
        std::vector<change_of<Table>> changes;
    };
    /// What is on its way to bring a VSAN's routes in.
    struct errand {
        shared_difference<Table> of;
        size_t unanswered = 0;
        bool is_sent = false; ///< all of it
        std::vector<refusal> refused{};
    };

    void bring_all(const wanted_tables<Table> &wanted);
    bool bring_each(const wanted_tables<Table> &wanted);
    void bring(uint32_t vsan, const shared_table<Table> &wanted);
    void take_over(uint32_t vsan, const shared_table<Table> &wanted);
    void merge(uint32_t vsan, const shared_table<Table> &wanted);
    void send(uint32_t vsan, const shared_difference<Table> &difference);
    void take_answer(const content &about, const protocol::fcurt_response &response);
    void end_errand(uint32_t vsan);
    void note_refused(uint32_t vsan, const std::vector<refusal> &refused);
    void read(uint32_t vsan);

    uint32_t uuid_;
    client_options options_;
    bus::rib_link link_;
    registration registration_;
    update_writer<Table> writer_;
    update_pipeline<Table> pipeline_;
    known_routes<Table> known_;
    std::optional<takeover> takes_over_; ///< what is done about VSANs of which nothing is known
    // Of the current call:
    std::map<uint32_t, errand> errands_;  ///< by VSAN; it is unsure as long
    std::map<uint32_t, unsigned> rounds_; ///< in which somebody else had changed this client's routes, by VSAN
    std::set<uint32_t> refused_;          ///< VSANs to which nothing more is sent
    bool has_come_in_ = false;            ///< a VSAN's routes, since patience was renewed
    client_traffic traffic_;
    size_t to_send_ = 0;
};

extern template class route_client<unicast_table>;
extern template class route_client<multicast_table>;
extern template class route_client<label_table>;

using unicast_client = route_client<unicast_table>;
using multicast_client = route_client<multicast_table>;
using label_client = route_client<label_table>;

} // namespace ribkit::clients
