// What the library's parts cost in instructions of their own code, which repeat exactly: callgrind runs this program,
// and each case leaves a profile of its own. `bench/instructions.txt` keeps the figures; the test `instructions`
// compares. usage: counted_cases; under callgrind with --collect-atstart=no
#include "bench/samples.h"
#include "codec/kernels.h"
#include "fib_codec.h"
#include "rib_check.h"
#include "rib_codec.h"
#include "rib_mem.h"
#include "rib_show.h"
#include "rib_trace.h"
#include "rib_wrap.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <valgrind/callgrind.h>

namespace {

using namespace ribkit;
using namespace ribkit::bench;

constexpr uint32_t rounds = 100;

/// So many calls of `one`, counted under that name.
template <class One> void count(const char *name, const One &one) {
    CALLGRIND_TOGGLE_COLLECT;
    for (uint32_t i = 0; i < rounds; ++i) {
        one();
    }
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name);
}

/// Messages in host form, and what is made of them.
struct converted {
    sample host;
    sample network;
    explicit converted(sample message) : host(std::move(message)), network(host.size) {}
};

converted routes() {
    return converted(fcurt_update(100, [](uint32_t i) { return 1 + i % 4; }));
}

/// Both directions of an update with 100 routes, of a label route, of a module's path and of a response.
void count_converters(const char *set) {
    converted update = routes();
    converted label(label_route());
    converted path(unicast_path());
    converted response{sample(wire::route_rsp.size)};
    const auto both = [set](const char *what, converted &m, auto to_network, auto to_host) {
        std::array<char, 64> name{};
        std::snprintf(name.data(), name.size(), "hton %s %s", what, set);
        count(name.data(), [&] { to_network(m.host.data(), m.network.data()); });
        std::snprintf(name.data(), name.size(), "ntoh %s %s", what, set);
        count(name.data(), [&] { to_host(m.network.data(), m.host.data()); });
    };
    constexpr size_t first = wire::fcurt_update.size;
    const auto each = [](auto convert) {
        return [convert](const uint8_t *from, uint8_t *to) {
            size_t at = first;
            for (int i = 0; i < 100; ++i) {
                at += convert(from + at, to + at);
            }
        };
    };
    both("header of routes", update, rib_hton_fcurt_update, rib_ntoh_fcurt_update);
    both("100 unicast routes", update, each(rib_hton_fcurt), each(rib_ntoh_fcurt));
    both("label route", label, rib_hton_fclrt, rib_ntoh_fclrt);
    both("unicast path", path, fib_hton_fcu_path, fib_ntoh_fcu_path);
    both("response", response, rib_hton_fcurt_rsp, rib_ntoh_fcurt_rsp);
}

void count_checks() {
    converted update = routes();
    rib_hton_fcurt_update(update.host.data(), update.network.data());
    size_t at = wire::fcurt_update.size;
    for (int i = 0; i < 100; ++i) {
        at += rib_hton_fcurt(update.host.data() + at, update.network.data() + at);
    }
    const auto accepted = [](const char *name, auto check, const uint8_t *message, size_t size) {
        if (check(message, static_cast<uint32_t>(size), nullptr) != 0) {
            std::fprintf(stderr, "%s refuses its message\n", name);
            std::exit(1);
        }
        count(name, [=] { check(message, static_cast<uint32_t>(size), nullptr); });
    };
    accepted("check 100 unicast routes", rib_check_fcurt_update, update.network.data(), update.host.size);
    converted label(label_route());
    rib_hton_fclrt(label.host.data(), label.network.data());
    accepted("check label route", rib_check_fclrt, label.network.data(), label.host.size);
    converted path(unicast_path());
    fib_hton_fcu_path(path.host.data(), path.network.data());
    accepted("check unicast path", fib_check_fcu_path, path.network.data(), path.host.size);
}

/// A thousand items come and go in a pool, and a thousand blocks in a space.
void count_memory() {
    constexpr uint32_t items = 1024;
    static std::array<void *, items> live;
    static std::array<uint32_t, items> blocks;
    struct pool *pool = pool_create(64, 40);
    struct bud *space = bud_create(16 * items);
    count("pool 1024 items", [pool] {
        for (void *&item : live) {
            item = pool_alloc(pool);
        }
        for (uint32_t i = 0; i < items; ++i) {
            pool_free(pool, live[(i * 37) % items]);
        }
    });
    count("buddy 1024 blocks", [space] {
        for (uint32_t i = 0; i < items; ++i) {
            bud_alloc(space, 1 + i % 16, &blocks[i]);
        }
        for (uint32_t i = 0; i < items; ++i) {
            const uint32_t which = (i * 37) % items;
            bud_free(space, 1 + which % 16, blocks[which]);
        }
    });
    pool_destroy(pool);
    bud_destroy(space);
    static std::array<uint8_t, 512> map;
    count("bitmap every bit", [] {
        for (uint32_t bit = 0; bit < 8 * map.size(); bit += 3) {
            bmap_set(map.data(), static_cast<uint32_t>(map.size()), bit);
        }
        bmap_count(map.data(), static_cast<uint32_t>(map.size()));
    });
}

void count_tokens() {
    struct rib_token list {};
    rib_token_alloc(&list, 64);
    count("tokens 64", [&list] {
        for (uint32_t i = 0; i < 64; ++i) {
            rib_token_add(&list, i);
        }
        for (uint32_t i = 0; i < 64; ++i) {
            rib_token_remove(&list, 63 - i);
        }
    });
    rib_token_release(&list);
}

void count_texts() {
    converted update = routes();
    rib_hton_fcurt_update(update.host.data(), update.network.data());
    rib_hton_fcurt(update.host.data() + wire::fcurt_update.size, update.network.data() + wire::fcurt_update.size);
    count("trace header of routes",
          [&] { rib_printf_fcurt_update(static_cast<uint32_t>(update.network.size), update.network.data()); });
    count("trace unicast route",
          [&] { rib_printf_fcurt(update.network.data(), update.network.data() + wire::fcurt_update.size); });
    static std::array<uint8_t, 128> entry{};
    count("show unicast route", [] { rib_show_fcu(1, entry.data()); });
    count("show multicast route", [] { rib_show_fcm(1, entry.data()); });
}

} // namespace

int main() {
    codec::active_kernels = codec::scalar_kernels.data();
    count_converters("scalar");
    if (__builtin_cpu_supports("avx2")) {
        codec::active_kernels = codec::avx2_kernels.data();
        count_converters("avx2");
    }
    codec::active_kernels = codec::scalar_kernels.data();
    count_checks();
    count_memory();
    count_tokens();
    count_texts();
    return 0;
}
