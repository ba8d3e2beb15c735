// A request and its answer between two threads: through the message service, and through the least that such a thing
// can be written with by hand: two queues, each with a mutex and a condition variable, the payload copied once each
// way.
#include "platform/transport_bench.h"
#include "bench/harness.h"
#include "platform/service_peer.h"

#include <condition_variable>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

using namespace ribkit::bench;

namespace ribkit::platform {

namespace {

struct block {
    std::unique_ptr<uint8_t[]> bytes;
    size_t size = 0;
};

block copied(const uint8_t *bytes, size_t size) {
    block made{std::make_unique_for_overwrite<uint8_t[]>(size), size};
    std::memcpy(made.bytes.get(), bytes, size);
    return made;
}

class plain_queue {
  public:
    void put(block one) {
        const std::scoped_lock lock{mutex_};
        waiting_.push_back(std::move(one));
        arrived_.notify_one();
    }

    block take() {
        std::unique_lock lock{mutex_};
        arrived_.wait(lock, [this] { return !waiting_.empty(); });
        block first = std::move(waiting_.front());
        waiting_.pop_front();
        return first;
    }

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<block> waiting_;
};

// An empty request ends the serving thread.
class by_hand {
  public:
    by_hand() = default;
    by_hand(const by_hand &) = delete;
    by_hand &operator=(const by_hand &) = delete;
    ~by_hand() {
        requests_.put({});
        serving_.join();
    }

    void round_trip(const std::vector<uint8_t> &payload) {
        requests_.put(copied(payload.data(), payload.size()));
        keep(answers_.take().bytes.get());
    }

  private:
    void serve() {
        for (block request = requests_.take(); request.size != 0; request = requests_.take()) {
            answers_.put(copied(request.bytes.get(), request.size));
        }
    }

    plain_queue requests_;
    plain_queue answers_;
    std::thread serving_{[this] { serve(); }};
};

void row(size_t size) {
    const std::vector<uint8_t> payload(size, 0x5a);
    const by_service ours{"local:bench"};
    by_hand peer;
    print_trips("request and answer of " + std::to_string(size) + " bytes",
                compare_trips([&] { ours.round_trip(payload); }, [&] { peer.round_trip(payload); }), 1.3);
}

} // namespace

} // namespace ribkit::platform

int main(int argc, char **argv) {
    ribkit::bench::heading("between two threads; peer: mutex and condition variable", "trip");
    for (const size_t size : {64, 1024, 16384}) {
        ribkit::platform::row(size);
    }
    ribkit::platform::unix_rows();
    ribkit::platform::nats_rows(argc > 1 ? argv[1] : nullptr);
    ribkit::platform::attack_rows(argc > 1 ? argv[1] : nullptr);
    return 0;
}
