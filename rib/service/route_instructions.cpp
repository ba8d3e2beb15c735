// What a route costs the RIB, in instructions, the figure that repeats: callgrind watches one function.
// usage: route_instructions CASE; prints how many routes the watched function took. Without CASE it lists them, those
// of many segments with the same of few, beside which a route may cost so much at most.
#include "protocol/route_messages.h"
#include "rib/modules/modules.h"
#include "rib/service/updates.h"
#include "rib_codes.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

using namespace ribkit;
using namespace ribkit::rib;
using messages = std::vector<std::vector<uint8_t>>;

constexpr uint32_t share = 256; // positions for each VSAN

std::vector<uint8_t> routes_of(uint32_t vsan, uint32_t count) {
    constexpr std::array<model::next_hop, 1> hops{{{0x01010001, 2}}};
    std::vector<uint8_t> bytes(wire::fcurt_update.size + count * protocol::fcurt_record_size(hops.size()));
    const protocol::update_writer update(bytes);
    update.set<"uuid">(RIB_CLIENT_FSPF).set<"vsan">(vsan).set<"oper">(RIB_OPER_UPDATE_RSP);
    for (uint32_t i = 0; i < count; i++) {
        protocol::add_route(update, RIB_ACTION_ADD, {i << 8, RIB_MASK_AREA}, {500, RIB_FLAG_ACTIVE, hops});
    }
    return bytes;
}

/// Every VSAN fills its segment, every second one half of its neighbour's as well: the boundary between them moves.
messages all_segments(uint32_t vsans, uint32_t &routes) {
    messages all;
    for (uint32_t vsan = 1; vsan <= vsans; vsan++) {
        const uint32_t count = vsan % 2 == 1 ? share / 2 : share + share / 2;
        all.push_back(routes_of(vsan, count));
        routes += count;
    }
    return all;
}

/// One VSAN takes the segments of all: every eight routes the boundaries on the way to the next free block move.
messages one_segment(uint32_t vsans, uint32_t &routes) {
    routes = vsans * share;
    return {routes_of(1, routes)};
}

/// Ten thousand routes, and a million: a route to each other domain in every VSAN.
messages all_domains(uint32_t vsans, uint32_t &routes) {
    messages all;
    for (uint32_t vsan = 1; vsan <= vsans; vsan++) {
        all.push_back(routes_of(vsan, RIB_LAST_DOMAIN));
    }
    routes = vsans * RIB_LAST_DOMAIN;
    return all;
}

/// Updates of a hundred paths, which are written nowhere.
class lost_update final : public update_sink {
  public:
    void begin(const module_head &head) override {
        sequence = head.sequence;
        paths = 0;
    }
    added add(const module_path<unicast> & /*path*/) override { return one_more(); }
    added add(const module_path<multicast> & /*path*/) override { return one_more(); }
    added add(const module_path<label> & /*path*/) override { return one_more(); }

    uint32_t sequence = 0;
    uint32_t paths = 0;

  private:
    added one_more() {
        constexpr uint32_t most = 100;
        paths += paths < most ? 1 : 0;
        return paths < most ? added::yes : added::no_room;
    }
};

/// Tells a module what it has to be told, and hears that it has taken it.
void bring(module_feed &feed) {
    size_t idle = 0; // a table that has nothing to say when its turn comes leaves it to the others
    while (feed.has_work() && idle < tables) {
        lost_update update;
        idle = feed.write(update) ? 0 : idle + 1;
        if (idle == 0) {
            feed.settle(update.sequence, {.accepted = update.paths});
        }
    }
}

struct followed_state {
    explicit followed_state(uint32_t vsans)
        : routes({.spaces = {vsans, vsans * share, vsans * share * unit_block}}, &follower) {}

    modules follower{routes};
    state routes;
};

struct counted_case {
    const char *name;
    uint32_t vsans;
    messages (*make)(uint32_t vsans, uint32_t &routes);
    const char *peer_and_bound;
    bool is_followed = false; ///< by a module that is told each update
};

constexpr counted_case cases[] = {
    {"route-10-segments", 10, all_segments, ""},
    {"route-1000-segments", 1000, all_segments, " route-10-segments 1.3"},
    {"route-one-takes-10-segments", 10, one_segment, ""},
    {"route-one-takes-1000-segments", 1000, one_segment, " route-one-takes-10-segments 1.3"},
    {"route-42-vsans", 42, all_domains, ""},
    {"route-4094-vsans", 4094, all_domains, " route-42-vsans 1.3"},
    {"route-42-vsans-and-module", 42, all_domains, " route-42-vsans 2", true},
    {"route-4094-vsans-and-module", 4094, all_domains, " route-42-vsans-and-module 1.3", true},
};

} // namespace

/// The function that is watched.
extern "C" [[gnu::noinline]] uint32_t ribkit_bench_counted(state &rib, const messages &all, modules &followed) {
    uint32_t taken = 0;
    for (const auto &message : all) {
        taken += take_update<unicast>(rib, message).accepted;
        for (auto &[number, feed] : followed.all()) {
            bring(feed);
        }
    }
    return taken;
}

int main(int argc, char **argv) {
    for (const counted_case &c : cases) {
        if (argc != 2) {
            std::printf("%s%s\n", c.name, c.peer_and_bound);
        } else if (std::strcmp(argv[1], c.name) == 0) {
            uint32_t routes = 0;
            const messages all = c.make(c.vsans, routes);
            followed_state rib(c.vsans);
            if (c.is_followed) {
                bring(rib.follower.enter(1, 0));
            }
            const uint32_t taken = ribkit_bench_counted(rib.routes, all, rib.follower);
            std::printf("%u\n", taken);
            return taken == routes ? 0 : 1;
        }
    }
    return argc == 1 ? 0 : 2;
}
