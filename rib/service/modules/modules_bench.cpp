// What it costs to bring a whole switch's routes from a client through the RIB into two modules, all in one process:
// the client hears of an update when both modules have taken it. Beside it stands the same load into a RIB without
// modules.
#include "bench/harness.h"
#include "fib/service/fib_service.h"
#include "rib/service/load_rig.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

using namespace ribkit;
using namespace ribkit::bench;
using namespace ribkit::rib;

namespace {

constexpr uint32_t many_vsans = 4094;
constexpr uint32_t few_vsans = 42;
constexpr int rounds = 3;
constexpr double most_nanoseconds = 4000; // a route: 250 000 a second

/// A RIB and its modules, which it knows.
struct running_switch {
    explicit running_switch(const load &of, uint32_t modules) : rib(of) {
        for (uint32_t number = 1; number <= modules; number++) {
            fibs.push_back(std::make_unique<fib::fib_service>(rib.url, fib::fib_options{.number = number}));
        }
        const auto is_active = [](const auto &one) {
            return one->read([](const fib::module &of_it) { return of_it.fib.now() == model::fib_state::active; });
        };
        for (int tries = 0; !std::all_of(fibs.begin(), fibs.end(), is_active); tries++) {
            if (tries == 10'000) {
                give_up("the RIB does not hear of its modules");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    void check(const load &wanted) {
        for (const auto &one : fibs) {
            if (one->read([](const fib::module &of_it) { return of_it.fib.count(); }) != wanted.paths.size()) {
                give_up("a module does not have what the RIB was sent");
            }
        }
    }

    running_rib rib;
    std::vector<std::unique_ptr<fib::fib_service>> fibs;
};

template <uint32_t Modules> double load_all(const load &wanted) {
    running_switch all(wanted, Modules);
    pipelined_client client(all.rib.url);
    const double passed = time_of([&] { client.bring(wanted); }, 1);
    all.check(wanted);
    return passed / wanted.routes();
}

times best_of(double (*ours)(const load &), const load &of_ours, double (*peer)(const load &), const load &of_peer) {
    times best{1e300, 1e300};
    for (int round = 0; round < rounds; round++) {
        best.ours = std::min(best.ours, ours(of_ours));
        best.peer = std::min(best.peer, peer(of_peer));
    }
    return best;
}

/// From a change of one route to both modules' answers, in microseconds.
void print_delays(const load &wanted) {
    constexpr size_t changes = 20'000;
    running_switch all(wanted, 2);
    pipelined_client client(all.rib.url);
    client.bring(wanted);
    std::vector<double> delays;
    auto route = wanted.changes.front().second.front();
    for (size_t i = 0; i < changes; i++) {
        route.what.metric = static_cast<uint32_t>(i);
        delays.push_back(time_of([&] { client.bring_one(wanted.changes.front().first, {route}); }, 1) / 1000);
    }
    std::sort(delays.begin(), delays.end());
    std::printf("%-58s %9.0f us %9.0f us\n", "one change to both modules' answers: p50, p99", delays[changes / 2],
                delays[changes * 99 / 100]);
}

} // namespace

int main() {
    const load whole(many_vsans);
    const load small(few_vsans);
    heading("from a client through the RIB into two modules", "rt");
    const times through = best_of(load_all<2>, whole, load_all<0>, whole);
    print_row("974 372 routes; bound: 250 000 a second", {through.ours, most_nanoseconds}, 1);
    print_row("974 372 routes; peer: a RIB without modules", through, 100);
    std::printf("%-58s %12.0f %12.0f\n", "    routes a second", 1e9 / through.ours, 1e9 / through.peer);
    print_row("974 372 routes; peer: 9 996 routes", best_of(load_all<2>, whole, load_all<2>, small), 2);
    print_delays(small);
    return 0;
}
