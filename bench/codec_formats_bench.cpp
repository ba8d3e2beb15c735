// The same update through other formats.
#include "bench/codec_bench.h"
#include "bench/harness.h"
#include "bench/peers/peers.h"
#include "bench/samples.h"
#include "rib_codec.h"

#include <vector>

namespace ribkit::bench {

namespace {

constexpr uint32_t routes = 1000;
static_assert(sizeof(host_route) == 64, "a route as ribkit's host form has it");

std::vector<host_route> random_routes() {
    std::mt19937 engine(3);
    const auto random = [&engine](uint32_t below) { return static_cast<uint32_t>(engine()) % below; };
    std::vector<host_route> all(routes);
    for (host_route &route : all) {
        route = {random(1 << 24), 0xff0000, random(UINT32_MAX), 1, random(10000), 9, 4, {}};
        for (host_hop &hop : route.hops) {
            hop = {0x01000000 | random(1 << 20), random(240)};
        }
    }
    return all;
}

/// ribkit sends the host form as it stands: header, then record by record.
void send(const sample &header, const std::vector<host_route> &all, uint8_t *out) {
    rib_hton_fcurt_update(header.room.data(), out);
    const auto *src = reinterpret_cast<const uint8_t *>(all.data());
    uint8_t *dst = out + wire::fcurt_update.size;
    for (uint32_t i = 0; i < routes; ++i) {
        const uint32_t size = rib_hton_fcurt(src, dst);
        src += size;
        dst += size;
    }
}

} // namespace

void format_rows() {
    heading("unicast update, 1000 routes with 4 hops, sending", "route");
    const std::vector<host_route> all = random_routes();
    const sample header = fcurt_update(0, [](uint32_t) { return 0U; });
    sample out(1 << 20);
    const host_update update{12, 1, 1, routes, all.data()};
    const auto row = [&](const char *name, sender peer, double bound) {
        print_row(std::string("to ") + name + ", its bytes: " + std::to_string(peer(update, out.data(), out.size)),
                  compare(
                      routes,
                      [&] {
                          send(header, all, out.data());
                          keep(out.data());
                      },
                      [&] { keep(peer(update, out.data(), out.size)); }),
                  bound);
    };
#ifdef RIBKIT_BENCH_CAPNP
    row("Cap'n Proto", capnp_send, 1.0 / 6);
#else
    missing_row("to Cap'n Proto", "not built: needs capnproto and libcapnp-dev");
#endif
#ifdef RIBKIT_BENCH_FLATBUFFERS
    row("FlatBuffers", flatbuffers_send, no_bound);
#else
    missing_row("to FlatBuffers", "not built: needs flatbuffers-compiler and libflatbuffers-dev");
#endif
#ifdef RIBKIT_BENCH_PROTOBUF
    row("protobuf", protobuf_send, 1.0 / 14);
#else
    missing_row("to protobuf", "not built: needs protobuf-compiler and libprotobuf-dev");
#endif
#ifdef RIBKIT_BENCH_XDR
    row("XDR", xdr_send, no_bound);
#else
    missing_row("to XDR", "not built: needs libtirpc-dev");
#endif
    static_cast<void>(row);
}

} // namespace ribkit::bench
