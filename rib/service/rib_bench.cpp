// What loading a whole switch costs: 239 switches, 4094 VSANs, a route to every other domain in each, sent over the bus
// in one process. Beside it stand the ways it is compared with: one update at a time, as the route client sends, and
// the least that any RIB does, the same messages copied once and put into one ordered map.
#include "bench/harness.h"
#include "clients/route_client.h"
#include "lab/fabric_file.h"
#include "lab/fabric_generator.h"
#include "lab/fabric_routes.h"
#include "protocol/route_changes.h"
#include "protocol/uses.h"
#include "rib/service/rib_service.h"
#include "rib_check.h"
#include "rib_codes.h"
#include "rib_wrap.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <malloc.h>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace ribkit;
using namespace ribkit::bench;

namespace {

constexpr uint32_t switches = 239;
constexpr uint32_t many_vsans = 4094;
constexpr uint32_t few_vsans = 42;
constexpr uint32_t most_unanswered = 8;
constexpr int rounds = 3;
constexpr double most_bytes = 200; // a route in a RIB at rest

[[noreturn]] void give_up(const char *why) {
    std::fprintf(stderr, "rib_bench: %s\n", why);
    std::exit(1);
}

/// What the local switch of a generated fabric wants its RIB to have.
struct load {
    explicit load(uint32_t vsans)
        : spaces(rib::rib_spaces::for_vsans(vsans)),
          from(lab::parse_fabric(lab::generate_fabric({.switches = switches, .vsans = vsans}), "bench")) {
        paths.follow(from, [](size_t, size_t) {});
        for (const auto &[vsan, routes] : paths.all()) {
            changes.emplace_back(vsan, model::changes_between({}, *routes));
        }
    }
    [[nodiscard]] double routes() const { return static_cast<double>(paths.size()); }

    rib::rib_spaces spaces;
    lab::fabric from;
    lab::fabric_routes paths;
    std::vector<std::pair<uint32_t, std::vector<model::route_change>>> changes; ///< by VSAN
};

/// The update with all routes of a VSAN.
std::span<uint8_t> written(std::vector<uint8_t> &room, uint32_t vsan, const std::vector<model::route_change> &changes) {
    const protocol::update_writer update(room);
    update.set<"uuid">(RIB_CLIENT_FSPF).set<"vsan">(vsan).set<"oper">(RIB_OPER_UPDATE_RSP);
    if (protocol::add_routes(update, changes) != changes.size()) {
        give_up("the routes of a VSAN are more than a message");
    }
    return std::span(room).first(update.size());
}

std::vector<uint8_t> room_of_message() { return std::vector<uint8_t>(size_t{64} * 1024); }

/// Sends updates without waiting for each answer.
class pipelined_client {
  public:
    explicit pipelined_client(const std::string &url) : handle_(url) {
        if (rib_token_alloc(&open_, most_unanswered) != RIB_OK) {
            give_up("no memory for tokens");
        }
    }
    pipelined_client(const pipelined_client &) = delete;
    pipelined_client &operator=(const pipelined_client &) = delete;
    ~pipelined_client() { rib_token_release(&open_); }

    void bring(const load &wanted) {
        for (const auto &[vsan, changes] : wanted.changes) {
            if (open_.count == most_unanswered) {
                take_answer();
            }
            send(written(room_, vsan, changes));
        }
        while (open_.count != 0) {
            take_answer();
        }
    }

  private:
    void send(std::span<uint8_t> message) {
        rib_wrap_msg asked{};
        asked.uuid = RIB_CLIENT_FSPF;
        asked.opcode = RIBKIT_OPCODE_FCURT_UPDATE;
        asked.payload = message.data();
        asked.payload_size = static_cast<uint32_t>(message.size());
        qip_ref sent{};
        if (rib_wrap_qip_send_non_blk(handle_.number(), &sent, &asked) != RIB_OK ||
            rib_token_add(&open_, qip_rr_token_get(&sent)) != RIB_OK) {
            give_up("an update could not be sent");
        }
        rib_wrap_qip_drop(RIB_CLIENT_FSPF, handle_.number(), &sent);
    }

    void take_answer() {
        constexpr uint32_t longest = 20; // seconds
        const qip_recv_opts any{{QIP_RECV_ANY_ANSWER, 0, longest}};
        qip_ref answer{};
        if (qip_recv(handle_.number(), &answer, &any) != 0 ||
            rib_token_remove(&open_, qip_rr_token_get(&answer)) != RIB_OK) {
            give_up("an answer is missing");
        }
        const codec::view<wire::route_rsp> said(static_cast<const uint8_t *>(qip_payload_get(&answer)));
        if (said.get<protocol::use<wire::route_rsp, "result">>() != RIB_OK) {
            give_up("an update was refused");
        }
        rib_wrap_qip_drop(RIB_CLIENT_FSPF, handle_.number(), &answer);
    }

    bus::service_handle handle_;
    rib_token open_{};
    std::vector<uint8_t> room_ = room_of_message();
};

/// A RIB on a bus of its own.
struct running_rib {
    explicit running_rib(const load &of) : service(url, {.spaces = of.spaces}) {}

    std::string url = "local:rib-bench";
    rib::rib_service service;
};

void check(const rib::rib_service &service, const load &wanted) {
    if (service.tables().memory().routes != wanted.paths.size()) {
        give_up("the RIB does not have what it was sent");
    }
}

double load_in_pipeline(const load &wanted) {
    running_rib rib(wanted);
    pipelined_client client(rib.url);
    const double passed = time_of([&] { client.bring(wanted); }, 1);
    rib.service.stop();
    check(rib.service, wanted);
    return passed / wanted.routes();
}

double load_one_by_one(const load &wanted) {
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
    const times ways = best_of(load_in_pipeline, whole, load_one_by_one, whole);
    print_row("8 updates unanswered; peer: one update at a time", ways, 1.1);
    std::printf("%-58s %12.0f %12.0f\n", "    routes a second", 1e9 / ways.ours, 1e9 / ways.peer);
    print_row("8 updates unanswered; peer: copied into one ordered map",
              best_of(load_in_pipeline, whole, load_into_map, whole), 1);
    print_row("974 372 routes; peer: 9 996 routes", best_of(load_in_pipeline, whole, load_in_pipeline, small), 2);
    memory_rows(whole);
    return 0;
}
