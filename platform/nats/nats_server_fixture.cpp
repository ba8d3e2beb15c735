// The server writes the port that it got into a file once it accepts connections: there is no gap in which another
// process could take a port that looked free.
#include "platform/nats/nats_server_fixture.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace ribkit::platform {

namespace {

std::string content_of(const std::string &file) {
    std::ifstream stream{file};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

[[noreturn]] void become(const char *const *words, const char *log, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int output = open(log, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    if (getppid() == parent) {
        execv(words[0], const_cast<char *const *>(words));
    }
    _exit(127);
}

} // namespace

nats_server::nats_server(const std::string &configuration) {
    configure(configuration);
    start();
}

void nats_server::configure(const std::string &configuration) const {
    std::ofstream{home_.file("server.conf")} << configuration << "\n";
    if (process_ > 0) {
        kill(process_, SIGHUP);
    }
}

void nats_server::launch() {
    const std::string port = port_ == 0 ? "-1" : std::to_string(port_);
    const std::string configuration = home_.file("server.conf");
    const std::string log = home_.file("log");
    const std::string ports = home_.file("");
    const char *const words[] = {
        RIBKIT_NATS_SERVER, "-a", "127.0.0.1",           "-p",   port.c_str(), "--ports_file_dir",
        ports.c_str(),      "-c", configuration.c_str(), nullptr};
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        become(words, log.c_str(), parent);
    }
}

// The file says {"nats":["nats://127.0.0.1:PORT"]}; 0 before it is there and whole.
uint16_t nats_server::announced_port() const {
    const std::string text = content_of(home_.file("nats-server_" + std::to_string(process_) + ".ports"));
    return text.ends_with("]}") ? static_cast<uint16_t>(std::strtoul(&text[text.rfind(':') + 1], nullptr, 10)) : 0;
}

// Another process may take the port between two runs of the server, and give it back: it tries again.
void nats_server::start() {
    launch();
    uint16_t port = 0;
    for (int attempt = 0; (port = announced_port()) == 0; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
        const bool ended = waitpid(process_, nullptr, WNOHANG) == process_;
        if (attempt == 6000 || (ended && port_ == 0)) {
            std::fprintf(stderr, "nats-server does not start: %s\n", content_of(home_.file("log")).c_str());
            std::abort();
        }
        if (ended) {
            launch();
        }
    }
    port_ = port;
}

void nats_server::stop() {
    if (process_ > 0) {
        kill(process_, SIGKILL); // asked to end, it would wait for handshakes that nobody finishes
        waitpid(process_, nullptr, 0);
        process_ = 0;
    }
}

void nats_server::suspend() const {
    kill(process_, SIGSTOP);
    waitpid(process_, nullptr, WUNTRACED); // until then its threads may go on
}

std::string nats_server::url(const std::string &identity, const std::string &scheme) const {
    return scheme + "://" + identity + (identity.empty() ? "" : "@") + "127.0.0.1:" + std::to_string(port_);
}

} // namespace ribkit::platform
