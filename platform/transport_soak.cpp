// Many requests through one transport while messages are lost, late, doubled, swapped and cut: every request has to be
// answered or reported, and no reference may be left over. `platform_soak URL [REQUESTS]`; fails by its exit status.
#include "ribkit_platform.h"
#include "ribkit_rib.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

// One message in a hundred, each kind of disturbance a fifth of them.
constexpr const char *script = "drop one-in 500\ndelay one-in 500 20\nduplicate one-in 500\nreorder one-in 500\n"
                               "truncate one-in 500 2\n";

bool load_script() {
    const std::string file = "/tmp/ribkit-soak-" + std::to_string(getpid());
    std::ofstream{file} << script;
    char error[200];
    const bool loaded = qip_faults_load(file.c_str(), error, sizeof error) == 0;
    unlink(file.c_str());
    return loaded;
}

void serve(uint32_t server) {
    qip_ref request{};
    while (qip_recv(server, &request, nullptr) == 0) {
        qip_send(server, &ribkit_rib_address, 0, qip_payload_get(&request), qip_payload_size(&request), nullptr,
                 &request, nullptr);
        qip_drop(server, &request);
    }
}

std::string outcome_of(uint32_t client, uint32_t number) {
    uint32_t payload[16] = {number};
    qip_ref ref{};
    if (qip_send(client, &ribkit_rib_address, 7, payload, sizeof payload, &ref, nullptr, nullptr) != 0) {
        return std::string{"not sent: "} + std::strerror(errno);
    }
    const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 0, qip_rr_token_get(&ref), 50}};
    qip_drop(client, &ref);
    if (qip_recv(client, &ref, &opts) != 0) {
        return std::string{"no answer: "} + std::strerror(errno);
    }
    const bool whole = qip_payload_size(&ref) == sizeof payload;
    const bool right = whole && std::memcmp(qip_payload_get(&ref), payload, sizeof payload) == 0;
    qip_drop(client, &ref);
    return right ? "answered" : whole ? "another's answer" : "cut answer";
}

} // namespace

int main(int argc, char **argv) {
    const uint32_t requests = argc > 2 ? static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 10)) : 100000;
    uint32_t client = 0;
    uint32_t server = 0;
    if (argc < 2 || qip_open(argv[1], &server) != 0 || qip_listen(server, &ribkit_rib_address, 64) != 0 ||
        qip_open(argv[1], &client) != 0 || !load_script()) {
        std::fprintf(stderr, "usage: platform_soak URL [REQUESTS]; or the URL cannot be opened\n");
        return 2;
    }
    std::thread serving{serve, server};
    std::map<std::string, uint32_t> outcomes;
    const auto start = std::chrono::steady_clock::now();
    for (uint32_t number = 0; number < requests; ++number) {
        ++outcomes[outcome_of(client, number)];
    }
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    qip_close(client);
    qip_close(server);
    serving.join();
    for (const auto &[outcome, count] : outcomes) {
        std::printf("%8u %s\n", count, outcome.c_str());
    }
    std::printf("%8u references held, %.1f s\n", qip_refs_held(), passed.count());
    return qip_refs_held() == 0 && !outcomes.contains("another's answer") ? 0 : 1;
}
