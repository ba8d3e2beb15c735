// Clients that follow a fabric through its events.
#pragma once

#include "base/progress.h"
#include "lab/fabric.h"
#include "lab/fabric_routes.h"
#include "lab/modules.h"
#include "lab/route_role.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace ribkit::lab {

/// What a client had to do.
struct role_traffic {
    std::string_view name;
    clients::client_traffic traffic;
};

/// A module behind an event of its own.
struct moved_module {
    size_t index;
    module_now is;
};

/// One moment of a run: its events (none at the start, nor where the RIB is there again), and the traffic that they
/// caused.
struct run_step {
    std::chrono::milliseconds at;
    std::vector<fabric_event> events;
    clients::client_traffic traffic;         ///< of all clients
    std::vector<unreachable_domains> lost{}; ///< domains that became unreachable
    std::vector<role_traffic> by_role{};     ///< of each client, in their order
    std::vector<moved_module> modules{};     ///< those that something has happened to
};

struct run_record {
    std::vector<run_step> steps;
    clients::client_traffic total;

    [[nodiscard]] double seconds() const { return (total.computing + total.exchanging).count(); }
    [[nodiscard]] double routes_per_second() const;
};

class fabric_run {
  public:
    using line_taker = std::function<void(const std::string &line)>;

    /// @param clients one at least
    /// @param progress is cleared before something is said
    /// @param real_time wait until an event is due
    /// @param said called with every line that says what happens
    fabric_run(fabric f, route_roles &clients, base::progress_line &progress, bool real_time, line_taker said);

    /// What else has to be done where something happens to a module; nothing unless this is called.
    /// @param about the module, as it is from now on
    using module_taker = std::function<module_now(const fabric_module &about, const fabric_event &event)>;
    void take_module_events(module_taker taker) { takes_module_event_ = std::move(taker); }

    /// Called when a client has done its part of a step: what it has caused may have an end first.
    void let_settle(std::function<void()> settle) { settle_ = std::move(settle); }

    /// From now on it is also said when all routes of the clients are in a RIB that did not have them.
    void announce_routes() { announces_ = true; }

    /// All events, one moment after the other. Throws as the clients do; what was done until then is on record.
    void play();

    /// Brings the RIB up to date whenever it is there again, until the clients are closed (link_closed).
    [[noreturn]] void stay();

    [[nodiscard]] const fabric &now() const { return fabric_; }
    [[nodiscard]] const run_record &record() const { return record_; }

  private:
    void wait_until(std::chrono::milliseconds at);
    void happen(std::chrono::milliseconds at, std::vector<fabric_event> events);
    void take_module_event(const fabric_event &event, run_step &step);
    void start_anew();
    bool rib_started(std::chrono::milliseconds limit);
    void step(run_step next);
    void converge(run_step &next, std::chrono::duration<double> computing);
    void say_traffic(const run_step &done);
    void record(run_step step);
    void announce(size_t refused);
    void say(const std::string &line) { said_(line); }

    fabric fabric_;
    fabric_routes routes_;
    route_roles &clients_;
    base::progress_line &progress_;
    bool real_time_;
    line_taker said_;
    module_taker takes_module_event_{};
    std::function<void()> settle_ = [] {};
    bool announces_ = false;
    run_record record_;
    std::chrono::steady_clock::time_point start_;
};

} // namespace ribkit::lab
