// Only the sender whose message was taken is woken: of many who wait with full queues the others would look in vain.
#include "platform/local/post_office.h"

#include <condition_variable>

namespace ribkit::platform {

namespace {

class waiting_sender final : public room_wish {
  public:
    using room_wish::room_wish;

    void room_made() noexcept override {
        made_ = true;
        own_.end();
        wake_.notify_one();
    }

    void wait(std::unique_lock<std::mutex> &locked) {
        own_.wait(wake_, locked, never, [this] { return made_; });
    }

  private:
    bool made_ = false;
    std::condition_variable wake_;
    timed_wait own_;
};

} // namespace

void post_office::wait_for_room(std::unique_lock<std::mutex> &locked, uint32_t sender) {
    waiting_sender self{sender};
    add(self);
    self.wait(locked);
}

void post_office::room_made(uint32_t sender) {
    wishes_.for_each([&](room_wish &one) {
        if (one.sender() == sender) {
            one.room_made();
        }
    });
}

void post_office::room_made_for_all() {
    wishes_.for_each([](room_wish &one) { one.room_made(); });
}

} // namespace ribkit::platform
