// Full queues are rare: whoever waits for room anywhere is woken, and looks again.
#include "platform/post_office.h"

namespace ribkit::platform {

void post_office::wait_for_room(std::unique_lock<std::mutex> &locked) {
    timed_wait own;
    waiting_.push_back(&own);
    const uint64_t seen = rooms_made_;
    own.wait(room_, locked, never, [&] { return rooms_made_ != seen; });
    std::erase(waiting_, &own);
}

void post_office::room_made() {
    ++rooms_made_;
    for (timed_wait *one : waiting_) {
        one->end();
    }
    if (!waiting_.empty()) {
        room_.notify_all();
    }
}

} // namespace ribkit::platform
