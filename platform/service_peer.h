// Two threads on a transport, one asking and one answering, for the benchmarks.
#pragma once

#include "bench/harness.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace ribkit::platform {

class by_service {
  public:
    explicit by_service(const char *url)
        : client_(opened(url, false)), serving_{[server = opened(url, true)] { serve(server); }} {}
    by_service(const by_service &) = delete;
    by_service &operator=(const by_service &) = delete;
    ~by_service() {
        qip_send(client_, &ribkit_rib_address, 0, nullptr, 0, nullptr, nullptr, nullptr);
        serving_.join();
        qip_close(client_);
    }

    void round_trip(const std::vector<uint8_t> &payload) const {
        qip_ref ref{};
        qip_send(client_, &ribkit_rib_address, 7, payload.data(), static_cast<uint32_t>(payload.size()), &ref, nullptr,
                 nullptr);
        const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 20, qip_rr_token_get(&ref)}};
        qip_drop(client_, &ref);
        qip_recv(client_, &ref, &opts);
        bench::keep(qip_payload_get(&ref));
        qip_drop(client_, &ref);
    }

  private:
    static uint32_t opened(const char *url, bool listening) {
        uint32_t handle = 0;
        if (qip_open(url, &handle) != 0 || (listening && qip_listen(handle, &ribkit_rib_address, 16) != 0)) {
            std::perror("the benchmark's handle");
            std::exit(1);
        }
        return handle;
    }

    static void serve(uint32_t server) {
        qip_ref request{};
        while (qip_recv(server, &request, nullptr) == 0 && qip_opcode_get(&request) != 0) {
            qip_send(server, &ribkit_rib_address, 0, qip_payload_get(&request), qip_payload_size(&request), nullptr,
                     &request, nullptr);
            qip_drop(server, &request);
        }
        qip_drop(server, &request);
        qip_close(server);
    }

    uint32_t client_;
    std::thread serving_;
};

/// Every call timed by itself, a few of one and a few of the other in turn.
struct trips {
    std::vector<double> ours, peer;

    static double at(const std::vector<double> &sorted, size_t percent) {
        return sorted[sorted.size() * percent / 100];
    }
    [[nodiscard]] bench::times medians() const { return {at(ours, 50), at(peer, 50)}; }
};

template <typename Ours, typename Peer> trips compare_trips(Ours &&ours, Peer &&peer) {
    constexpr int rounds = 250;
    constexpr int in_a_row = 20;
    trips taken;
    for (int round = 0; round < rounds; round++) {
        for (int i = 0; i < in_a_row; i++) {
            taken.ours.push_back(bench::time_of(ours, 1));
        }
        for (int i = 0; i < in_a_row; i++) {
            taken.peer.push_back(bench::time_of(peer, 1));
        }
    }
    std::sort(taken.ours.begin(), taken.ours.end());
    std::sort(taken.peer.begin(), taken.peer.end());
    return taken;
}

/// The medians beside each other, then what ours are like.
inline void print_trips(const std::string &what, const trips &taken, double bound) {
    bench::print_row(what, taken.medians(), bound);
    const double median = trips::at(taken.ours, 50);
    std::printf("%-58s p50 %.1f us, p99 %.1f us, %.0f a second\n", "    of ours", median / 1e3,
                trips::at(taken.ours, 99) / 1e3, 1e9 / median);
}

} // namespace ribkit::platform
