#include "platform/nats_server.h"

#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace ribkit::platform {

namespace {

sockaddr_in loopback(uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

uint16_t free_port() {
    const int probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    bind(probe, reinterpret_cast<sockaddr *>(&address), size);
    getsockname(probe, reinterpret_cast<sockaddr *>(&address), &size);
    close(probe);
    return ntohs(address.sin_port);
}

bool accepts(uint16_t port) {
    const int probe = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = loopback(port);
    const bool connected = connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    close(probe);
    return connected;
}

} // namespace

nats_server::nats_server(const std::string &configuration) : port_(free_port()) {
    file_ = "/tmp/ribkit-nats-" + std::to_string(getpid()) + "-" + std::to_string(port_) + ".conf";
    std::ofstream{file_} << configuration << "\n";
    start();
}

void nats_server::start() {
    const std::string port = std::to_string(port_);
    const char *words[] = {RIBKIT_NATS_SERVER, "-a", "127.0.0.1", "-p", port.c_str(), "-c", file_.c_str(), nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn(&process_, words[0], &quiet, nullptr, const_cast<char *const *>(words), environ);
    posix_spawn_file_actions_destroy(&quiet);
    for (int attempt = 0; !accepts(port_); ++attempt) {
        if (attempt == 1000) {
            std::fputs("nats-server does not start\n", stderr);
            std::abort();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
    }
}

void nats_server::stop() {
    if (process_ > 0) {
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
        process_ = 0;
    }
}

nats_server::~nats_server() {
    stop();
    unlink(file_.c_str());
}

std::string nats_server::url(const std::string &identity) const {
    return "nats://" + identity + (identity.empty() ? "" : "@") + "127.0.0.1:" + std::to_string(port_);
}

} // namespace ribkit::platform
