// Events of one moment are one step: the fabric changes, the client follows, and what it cost is recorded.
#include "lab/fabric_run.h"

#include "base/duration.h"
#include "base/text.h"
#include "bus/patience.h"
#include "lab/run_text.h"

#include <algorithm>
#include <numeric>

namespace ribkit::lab {

namespace {

using std::chrono::milliseconds;

} // namespace

double run_record::routes_per_second() const {
    return seconds() > 0 ? static_cast<double>(total.sent()) / seconds() : 0;
}

fabric_run::fabric_run(fabric f, route_roles &clients, base::progress_line &progress, bool real_time, line_taker said)
    : fabric_(std::move(f)), clients_(clients), progress_(progress), real_time_(real_time), said_(std::move(said)) {}

void fabric_run::play() {
    start_ = bus::run_now();
    say("at 0s: the fabric starts");
    step({});
    const auto events = fabric_.events();
    for (auto next = events.begin(); next != events.end();) {
        const auto later = std::find_if(next, events.end(), [&](const auto &event) { return event.at != next->at; });
        happen(next->at, {next, later});
        next = later;
    }
}

void fabric_run::stay() {
    for (;;) {
        if (rib_started(std::chrono::hours(1))) {
            start_anew();
        }
    }
}

// The RIB may start anew meanwhile.
void fabric_run::wait_until(milliseconds at) {
    for (auto now = bus::run_now(); real_time_ && now < start_ + at; now = bus::run_now()) {
        const auto left = std::chrono::ceil<milliseconds>(start_ + at - now);
        if (rib_started(left)) {
            start_anew();
        }
    }
}

void fabric_run::start_anew() {
    const auto passed = std::chrono::duration_cast<milliseconds>(bus::run_now() - start_);
    const auto at = std::max(passed, record_.steps.back().at); // events may have been ahead of the time
    say(base::joined("at ", base::duration_text(at), ": the RIB is there again"));
    step({at, {}, {}});
}

void fabric_run::happen(milliseconds at, std::vector<fabric_event> events) {
    wait_until(at);
    run_step next{at, {}, {}};
    for (const fabric_event &event : events) {
        fabric_.apply(event);
        say(base::joined("at ", base::duration_text(at), ": ", event_text(fabric_, event)));
        take_module_event(event, next);
    }
    next.events = std::move(events);
    step(std::move(next));
}

void fabric_run::take_module_event(const fabric_event &event, run_step &step) {
    if (event.subject != event_subject::module || !takes_module_event_) {
        return;
    }
    const fabric_module &about = fabric_.modules[event.index];
    step.modules.push_back({event.index, takes_module_event_(about, event)});
    if (event.turn != module_turn::goes_down) {
        say(base::joined("  ", module_text(about, step.modules.back().is)));
    }
}

// One of them hears it first. While one listens, the others only have to be registered.
bool fabric_run::rib_started(milliseconds limit) {
    constexpr milliseconds longest = std::chrono::seconds(10);
    bool started = false;
    do {
        const auto part = std::min(limit, longest);
        limit -= part;
        for (const auto &client : clients_) {
            const bool listens = client == clients_.front();
            started = client->rib_started(listens ? part : milliseconds{}) || started;
            client->stay_registered();
        }
    } while (!started && limit.count() > 0);
    if (started) {
        std::for_each(clients_.begin(), clients_.end(), [](const auto &client) { client->suppose_start(); });
    }
    return started;
}

void fabric_run::step(run_step next) {
    const auto start = bus::run_now();
    routes_.follow(fabric_, [this](size_t done, size_t total) { progress_.show("VSANs computed", done, total); });
    for (const auto &client : clients_) {
        client->compute(fabric_, routes_);
    }
    const std::chrono::duration<double> computing = bus::run_now() - start;
    try {
        converge(next, computing);
    } catch (...) {
        record(std::move(next)); // as far as it came
        throw;
    }
    progress_.clear();
    next.lost = routes_.lost();
    say_traffic(next);
    if (!next.lost.empty()) {
        say(unreachable_text(fabric_, next.lost));
    }
    if (announces_ && next.events.empty()) {
        announce(next.traffic.refused);
    }
    record(std::move(next));
}

void fabric_run::converge(run_step &next, std::chrono::duration<double> computing) {
    const auto add = [&](const route_role &client) {
        next.by_role.push_back({client.name(), client.traffic()});
        next.traffic += client.traffic();
    };
    next.traffic.computing = computing;
    for (const auto &client : clients_) {
        try {
            client->converge();
        } catch (...) {
            add(*client);
            throw;
        }
        add(*client);
        settle_();
    }
    // While one of them waited long, the others may have been forgotten.
    std::for_each(clients_.begin(), clients_.end(), [](const auto &client) { client->keep_registered(); });
}

// Of several clients, those that had something to do are named.
void fabric_run::say_traffic(const run_step &done) {
    if (clients_.size() == 1 || done.traffic.sent() == 0) {
        return say(base::joined("  ", traffic_text(done.traffic)));
    }
    for (const auto &[name, traffic] : done.by_role) {
        if (traffic.sent() != 0) {
            say(base::joined("  ", name, ": ", traffic_text(traffic)));
        }
    }
}

void fabric_run::announce(size_t refused) {
    const size_t wanted = std::accumulate(clients_.begin(), clients_.end(), size_t{0},
                                          [](size_t sum, const auto &client) { return sum + client->wanted(); });
    say(refused == 0 ? base::joined("  the RIB has all ", wanted, wanted == 1 ? " route" : " routes")
                     : base::joined("  the RIB has refused ", refused, " of ", wanted, " routes"));
}

void fabric_run::record(run_step step) {
    record_.total += step.traffic;
    record_.steps.push_back(std::move(step));
}

} // namespace ribkit::lab
