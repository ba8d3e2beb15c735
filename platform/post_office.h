// The lock of one bus, and the senders who wait there until a queue has room.
#pragma once

#include "platform/clock.h"
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

namespace ribkit::platform {

/// What the mailboxes of one bus share: their lock, and the senders who wait for room in any of them.
class post_office {
  public:
    std::mutex lock;

    void wait_for_room(std::unique_lock<std::mutex> &locked);
    void room_made();

  private:
    std::condition_variable room_;
    std::vector<timed_wait *> waiting_;
    uint64_t rooms_made_ = 0;
};

} // namespace ribkit::platform
