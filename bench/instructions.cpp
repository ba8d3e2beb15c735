// Instructions, the figure that repeats: runs one conversion many times inside a function that callgrind is told to
// watch. usage: codec_instructions CASE; prints how many units the watched function did.
#include "bench/loop_peer.h"
#include "bench/samples.h"
#include "fib_codec.h"
#include "rib_codec.h"

#include <cstdio>
#include <cstring>

namespace {

using namespace ribkit;
using namespace ribkit::bench;

constexpr uint32_t units = 1000;

uint32_t path(const void *src, void *dst) {
    fib_hton_fcu_path(src, dst);
    return 0;
}
uint32_t path_loop(const void *src, void *dst) {
    loop::hton_fcu_path(src, dst);
    return 0;
}
uint32_t rsp(const void *src, void *dst) {
    rib_hton_fcurt_rsp(src, dst);
    return 0;
}

sample four_hops() {
    return fcurt_update(units, [](uint32_t) { return 4U; });
}
sample response() { return sample(wire::route_rsp.size); }

struct counted_case {
    const char *name;
    sample (*make)();
    uint32_t first; // offset of what is converted
    bool steps;     // to the next record
    uint32_t (*convert)(const void *, void *);
};

constexpr counted_case cases[] = {
    {"route", four_hops, wire::fcurt_update.size, true, rib_hton_fcurt},
    {"route-loop", four_hops, wire::fcurt_update.size, true, loop::hton_fcurt},
    {"label-route", label_route, 0, false, rib_hton_fclrt},
    {"label-route-loop", label_route, 0, false, loop::hton_fclrt},
    {"fib-path", unicast_path, 0, false, path},
    {"fib-path-loop", unicast_path, 0, false, path_loop},
    {"response", response, 0, false, rsp},
};

} // namespace

/// The function that is watched.
extern "C" [[gnu::noinline]] void ribkit_bench_counted(uint32_t (*convert)(const void *, void *), const uint8_t *src,
                                                       uint8_t *dst, bool steps) {
    for (uint32_t i = 0; i < units; ++i) {
        const uint32_t size = convert(src, dst);
        src += steps ? size : 0;
        dst += steps ? size : 0;
    }
}

int main(int argc, char **argv) {
    for (const counted_case &c : cases) {
        if (argc == 2 && std::strcmp(argv[1], c.name) == 0) {
            sample from = c.make();
            sample to(from.size);
            ribkit_bench_counted(c.convert, from.data() + c.first, to.data() + c.first, c.steps);
            std::printf("%u\n", units);
            return 0;
        }
    }
    for (const counted_case &c : cases) {
        std::printf("%s\n", c.name);
    }
    return argc == 1 ? 0 : 2;
}
