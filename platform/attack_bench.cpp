// One handle sends 100 000 requests as fast as it can; another one asks and waits for the answer, again and again,
// until nothing of the flood is left. The slowest hundredth of its answers is compared with 20 ms; none may be lost.
#include "platform/transport_bench.h"

#include "bench/harness.h"
#include "platform/service_peer.h"
#include "testing/temporary_directory.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

using namespace ribkit::bench;

namespace ribkit::platform {

namespace {

constexpr uint32_t flood_size = 100000;
constexpr uint32_t flood_opcode = 8;
constexpr uint32_t honest_opcode = 7;
constexpr double goal = 20e6; // nanoseconds

using clock = std::chrono::steady_clock;

uint32_t opened(const std::string &url) {
    uint32_t handle = 0;
    if (qip_open(url.c_str(), &handle) != 0) {
        std::perror("the attack's handle");
        std::exit(1);
    }
    return handle;
}

/// Listens, and answers until it is asked with opcode 0.
class victim {
  public:
    victim(const std::string &url, bool knows_names) : handle_(opened(url)) {
        const char *const names[] = {"honest", "attacker"};
        if (qip_listen_to(handle_, &ribkit_rib_address, 64, names, knows_names ? 2 : 0) != 0) {
            std::perror("the attack's listener");
            std::exit(1);
        }
        serving_ = std::thread{[this] { serve(); }};
    }
    victim(const victim &) = delete;
    victim &operator=(const victim &) = delete;
    ~victim() {
        serving_.join();
        qip_close(handle_);
    }

    [[nodiscard]] uint32_t flooded() const { return flooded_; }

  private:
    void serve() {
        for (uint32_t opcode = honest_opcode; opcode != 0;) {
            qip_ref request{};
            if (qip_recv(handle_, &request, nullptr) != 0) {
                return;
            }
            opcode = qip_opcode_get(&request);
            flooded_ += opcode == flood_opcode ? 1 : 0;
            qip_send(handle_, &ribkit_rib_address, 0, nullptr, 0, nullptr, &request, nullptr);
            qip_drop(handle_, &request);
        }
    }

    uint32_t handle_;
    std::atomic<uint32_t> flooded_{0};
    std::thread serving_;
};

/// One question and its answer; false where none comes.
bool is_answered(uint32_t client, uint32_t opcode) {
    qip_ref ref{};
    if (qip_send(client, &ribkit_rib_address, opcode, "?", 1, &ref, nullptr, nullptr) != 0) {
        return false;
    }
    const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 20, qip_rr_token_get(&ref)}};
    qip_drop(client, &ref);
    const bool answered = qip_recv(client, &ref, &opts) == 0;
    qip_drop(client, &ref);
    return answered;
}

struct honest_view {
    std::vector<double> answers;
    uint32_t lost = 0;
};

/// Asks until the flood has been sent and no more of it is served.
honest_view asked(uint32_t client, const victim &server, const std::atomic<bool> &sent) {
    constexpr int most_quiet = 200;
    honest_view seen;
    for (int quiet = 0; quiet < most_quiet;) {
        const uint32_t before = server.flooded();
        const auto start = clock::now();
        if (is_answered(client, honest_opcode)) {
            seen.answers.push_back(std::chrono::duration<double, std::nano>(clock::now() - start).count());
        } else {
            ++seen.lost;
        }
        quiet = sent && server.flooded() == before ? quiet + 1 : 0;
    }
    return seen;
}

void row(const std::string &what, const std::string &url, const std::string &name_key, bool knows_names) {
    const auto named = [&](const char *name) { return opened(name_key.empty() ? url : url + name_key + name); };
    const uint32_t client = named("honest");
    const uint32_t attacker = named("attacker");
    honest_view seen;
    uint32_t served = 0;
    {
        const victim server{url, knows_names};
        std::atomic<bool> sent{false};
        std::thread flood{[&] {
            for (uint32_t count = 0; count < flood_size; ++count) {
                qip_send(attacker, &ribkit_rib_address, flood_opcode, "!", 1, nullptr, nullptr, nullptr);
            }
            sent = true;
        }};
        seen = asked(client, server, sent);
        flood.join();
        served = server.flooded();
        qip_send(client, &ribkit_rib_address, 0, nullptr, 0, nullptr, nullptr, nullptr);
    }
    qip_close(client);
    qip_close(attacker);
    std::sort(seen.answers.begin(), seen.answers.end());
    print_row(what, {trips::at(seen.answers, 99), goal}, 1.0);
    std::printf("%-58s %zu answers, %u lost, slowest %.2f ms; %u of the flood served\n", "    of the honest one",
                seen.answers.size(), seen.lost, seen.answers.back() / 1e6, served);
}

} // namespace

void attack_rows(const char *server_url) {
    heading("an honest request beside a flood, p99; peer: 20 ms", "answer");
    row("in process", "local:attack", "", false);
    const testing::temporary_directory home;
    row("between processes", "unix:" + home.file("bus"), "", false);
    if (server_url == nullptr) {
        missing_row("over a server", "platform_bench nats://HOST:PORT measures this");
        return;
    }
    const std::string url = server_url;
    row("over a server, anybody listened to", url, "?name=", false);
    row("over a server, known names listened to", url, "?name=", true);
}

} // namespace ribkit::platform
