// Who starts a thread stays awake until it takes part: a sleeper would lose its turn to the others.
#include "bus/service_thread.h"

#include "ribkit_platform.h"

#include <cstdint>

namespace ribkit::bus {

void service_thread::start(std::function<void()> serve) {
    thread_ = std::thread([this, serve = std::move(serve)] {
        qip_take_part();
        takes_part_ = true;
        serve();
        ended_ = true;
    });
    while (!takes_part_) {
        std::this_thread::yield();
    }
}

void service_thread::join() {
    if (!thread_.joinable()) {
        return;
    }
    uint64_t now = 0;
    while (!ended_ && qip_virtual_time(&now) == 0) {
        qip_pause(1);
    }
    thread_.join();
}

} // namespace ribkit::bus
