// Single messages against the plain loop, and what a check costs.
#include "bench/codec_bench.h"
#include "bench/harness.h"
#include "bench/loop_peer.h"
#include "bench/samples.h"
#include "fib_codec.h"
#include "rib_check.h"
#include "rib_codec.h"

#include <cstring>

namespace ribkit::bench {

namespace {

template <class Ours, class Peer>
void both_ways(const std::string &what, sample host, Ours send, Ours receive, Peer loop_send, Peer loop_receive,
               double send_bound, double receive_bound) {
    sample network(host.size);
    sample out(host.size);
    send(host.data(), network.data());
    const auto timed = [&](auto convert, sample &from) {
        return [&out, &from, convert] {
            convert(from.data(), out.data());
            keep(out.data());
        };
    };
    print_row(what + ", sending", compare(1, timed(send, host), timed(loop_send, host)), send_bound);
    print_row(what + ", receiving", compare(1, timed(receive, network), timed(loop_receive, network)), receive_bound);
}

using record_converter = uint32_t (*)(const void *, void *);

/// As a client converts an update: where a record ends, and the next begins, is known once it has been converted.
void label_route_rows() {
    constexpr size_t n = 64;
    sample one = label_route();
    sample host(n * one.size);
    sample network(host.size);
    sample out(host.size);
    for (size_t i = 0; i < n; ++i) {
        std::memcpy(host.data() + i * one.size, one.data(), one.size);
        rib_hton_fclrt(one.data(), network.data() + i * one.size);
    }
    const auto timed = [&out](record_converter convert, sample &from) {
        return [&out, &from, convert] {
            for (size_t at = 0; at < from.size;) {
                at += convert(from.data() + at, out.data() + at);
            }
            keep(out.data());
        };
    };
    print_row("label routes in a run, sending", compare(n, timed(rib_hton_fclrt, host), timed(loop::hton_fclrt, host)),
              0.40);
    print_row("label routes in a run, receiving",
              compare(n, timed(rib_ntoh_fclrt, network), timed(loop::ntoh_fclrt, network)), 0.30);
}

void check_row() {
    constexpr uint32_t routes = 1000;
    sample host = fcurt_update(routes, [](uint32_t) { return 4U; });
    sample network(host.size);
    sample out(host.size);
    rib_hton_fcurt_update(host.data(), network.data());
    for (size_t at = wire::fcurt_update.size; at < host.size;) {
        at += rib_hton_fcurt(host.data() + at, network.data() + at);
    }
    const auto convert = [&] {
        rib_ntoh_fcurt_update(network.data(), out.data());
        for (size_t at = wire::fcurt_update.size; at < network.size;) {
            at += rib_ntoh_fcurt(network.data() + at, out.data() + at);
        }
        keep(out.data());
    };
    print_row("update of 1000 routes: check and conversion, to conversion",
              compare(
                  routes,
                  [&] {
                      keep(rib_check_fcurt_update(network.data(), static_cast<uint32_t>(network.size), nullptr));
                      convert();
                  },
                  convert),
              1.5);
}

} // namespace

void message_rows() {
    heading("single messages, to the loop", "msg");
    both_ways("label route, 16 interfaces of 3 labels", label_route(), rib_hton_fclrt, rib_ntoh_fclrt, loop::hton_fclrt,
              loop::ntoh_fclrt, 0.40, 0.30);
    label_route_rows();
    both_ways("FIB unicast path, 16 paths of 3 hops", unicast_path(), fib_hton_fcu_path, fib_ntoh_fcu_path,
              loop::hton_fcu_path, loop::ntoh_fcu_path, 0.40, 0.40);
    both_ways("response, 20 bytes", sample(20), rib_hton_fcurt_rsp, rib_ntoh_fcurt_rsp, loop::hton_rsp, loop::hton_rsp,
              1.15, 1.15);
    heading("checks", "rte");
    check_row();
}

} // namespace ribkit::bench
