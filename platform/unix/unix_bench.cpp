// The peer is the least that two threads can do with sockets: a pair of them, and the kernel's copies.
#include "platform/transport_bench.h"

#include "bench/harness.h"
#include "platform/service_peer.h"
#include "testing/temporary_directory.h"

#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

using namespace ribkit::bench;

namespace ribkit::platform {

namespace {

// An empty packet ends the serving thread.
class socket_pair {
  public:
    explicit socket_pair(size_t size) : room_(size) {
        if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends_) != 0) {
            std::perror("the peer's sockets");
            std::exit(1);
        }
        serving_ = std::thread{[this] { serve(); }};
    }
    socket_pair(const socket_pair &) = delete;
    socket_pair &operator=(const socket_pair &) = delete;
    ~socket_pair() {
        shutdown(ends_[0], SHUT_WR);
        serving_.join();
        close(ends_[0]);
        close(ends_[1]);
    }

    void round_trip(const std::vector<uint8_t> &payload) {
        send(ends_[0], payload.data(), payload.size(), MSG_NOSIGNAL);
        recv(ends_[0], room_.data(), room_.size(), 0);
        keep(room_.data());
    }

  private:
    void serve() {
        std::vector<uint8_t> request(room_.size());
        ssize_t size = 0;
        while ((size = recv(ends_[1], request.data(), request.size(), 0)) > 0) {
            send(ends_[1], request.data(), static_cast<size_t>(size), MSG_NOSIGNAL);
        }
    }

    int ends_[2] = {-1, -1};
    std::vector<uint8_t> room_;
    std::thread serving_;
};

} // namespace

void unix_rows() {
    heading("between processes of one machine; peer: a bare pair of sockets", "trip");
    for (const size_t size : {64, 1024, 16384}) {
        const testing::temporary_directory home;
        const std::vector<uint8_t> payload(size, 0x5a);
        const by_service ours{("unix:" + home.file("bus")).c_str()};
        socket_pair peer{size};
        print_trips("request and answer of " + std::to_string(size) + " bytes",
                    compare_trips([&] { ours.round_trip(payload); }, [&] { peer.round_trip(payload); }), no_bound);
    }
}

} // namespace ribkit::platform
