// What loading a whole switch costs: 239 switches, 4094 VSANs, a route to every other domain in each, sent over the bus
// in one process, with 8 updates unanswered. Beside it stand the route client, which also compares and keeps what it
// sends, one update at a time, and the least that any RIB does: the same messages copied once and put into one ordered
// map.
#include "bench/harness.h"
#include "clients/route_client.h"
#include "protocol/route_changes.h"
#include "rib/service/load_rig.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <malloc.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

using namespace ribkit;
using namespace ribkit::bench;
using namespace ribkit::rib;

namespace {

constexpr uint32_t many_vsans = 4094;
constexpr uint32_t few_vsans = 42;
constexpr int rounds = 3;
constexpr double most_bytes = 200; // a route in a RIB at rest

void check(const rib::rib_service &service, const load &wanted) {
    if (service.tables().memory().routes != wanted.paths.size()) {
        give_up("the RIB does not have what it was sent");
    }
}

template <uint32_t Unanswered> double load_in_pipeline(const load &wanted) {
    running_rib rib(wanted);
    pipelined_client client(rib.url, Unanswered);
    const double passed = time_of([&] { client.bring(wanted); }, 1);
    rib.service.stop();
    check(rib.service, wanted);
    return passed / wanted.routes();
}
constexpr auto load_one_by_one = load_in_pipeline<1>;
constexpr auto load_eight_at_a_time = load_in_pipeline<most_unanswered>;

double load_by_route_client(const load &wanted) {
    running_rib rib(wanted);
    clients::unicast_client client(rib.url, RIB_CLIENT_FSPF, {});
    const double passed = time_of([&] { client.converge(wanted.paths.all()); }, 1);
    rib.service.stop();
    check(rib.service, wanted);
    return passed / wanted.routes();
}

/// The peer: each message written, copied as a bus would, and its routes stored by key.
double load_into_map(const load &wanted) {
    struct stored {
        uint32_t metric;
        uint32_t flag;
        std::vector<model::next_hop> hops;
    };
    std::map<model::route_key, stored> table;
    std::vector<uint8_t> room = room_of_message();
    std::vector<uint8_t> copy = room_of_message();
    const double passed = time_of(
        [&] {
            for (const auto &[vsan, changes] : wanted.changes) {
                const auto message = written(room, vsan, changes);
                std::memcpy(copy.data(), message.data(), message.size());
                for (const auto &one : protocol::unicast_changes(protocol::update_view(copy.data()))) {
                    table[{vsan, one.to}] = {
                        one.what.metric, one.what.flag, {one.what.hops.begin(), one.what.hops.end()}};
                }
            }
        },
        1);
    keep(table.size());
    return passed / wanted.routes();
}

/// The best of several rounds of each, one after the other.
times best_of(double (*ours)(const load &), const load &of_ours, double (*peer)(const load &), const load &of_peer) {
    times best{1e300, 1e300};
    for (int round = 0; round < rounds; round++) {
        best.ours = std::min(best.ours, ours(of_ours));
        best.peer = std::min(best.peer, peer(of_peer));
    }
    return best;
}

/// Bytes that the allocator has given out.
double allocated() {
    const auto now = mallinfo2();
    return static_cast<double>(now.uordblks) + static_cast<double>(now.hblkhd);
}

/// Of the process, in bytes: what it has now, or the most since the last call that forgets.
double resident(const std::string &row) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (double kilobytes = 0; word == row && status >> kilobytes) {
            return kilobytes * 1024;
        }
    }
    return 0;
}
void forget_peak() { std::ofstream("/proc/self/clear_refs") << "5\n"; }

/// The RIB's own memory: the client is gone when it is counted, and has little beside its buffer.
void memory_rows(const load &wanted) {
    malloc_trim(0);
    forget_peak();
    const double resident_before = resident("VmRSS:");
    const double before = allocated();
    running_rib rib(wanted);
    pipelined_client(rib.url).bring(wanted);
    const double peak = resident("VmHWM:") - resident_before;
    const double bytes = (allocated() - before) / wanted.routes();
    std::printf("\n%-58s %12s %12s %8s\n", "memory of the RIB, bytes a route", "ours", "bound", "ratio");
    print_row("at rest, as the allocator counts", {bytes, most_bytes}, 1);
    std::printf("%-58s %12.1f MB for %.0f routes\n", "    most while it is loaded, RIB and client", peak / 1e6,
                wanted.routes());
}

} // namespace

int main() {
    const load whole(many_vsans);
    const load small(few_vsans);
    heading("loading a RIB over the bus", "rt");
    const times ways = best_of(load_eight_at_a_time, whole, load_one_by_one, whole);
    print_row("8 updates unanswered; peer: one update at a time", ways, 1.1);
    std::printf("%-58s %12.0f %12.0f\n", "    routes a second", 1e9 / ways.ours, 1e9 / ways.peer);
    print_row("the route client; peer: 8 updates, and nothing kept",
              best_of(load_by_route_client, whole, load_eight_at_a_time, whole), 1.5);
    print_row("8 updates unanswered; peer: copied into one ordered map",
              best_of(load_eight_at_a_time, whole, load_into_map, whole), 1);
    print_row("974 372 routes; peer: 9 996 routes", best_of(load_eight_at_a_time, whole, load_eight_at_a_time, small),
              2);
    memory_rows(whole);
    return 0;
}
