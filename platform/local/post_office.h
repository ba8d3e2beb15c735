// The lock of one bus, and whoever waits there until a sender's messages find room.
#pragma once

#include "platform/clock.h"
#include "platform/ring.h"
#include <cstdint>
#include <mutex>

namespace ribkit::platform {

/// Somebody who is told when a sender who had no room anywhere may have it now. It is told with the office's lock held.
class room_wish : public ring_place {
  public:
    explicit room_wish(uint32_t sender) : sender_(sender) {}

    virtual void room_made() noexcept = 0;

    [[nodiscard]] uint32_t sender() const { return sender_; }

  protected:
    ~room_wish() = default;

  private:
    uint32_t sender_;
};

/// What the mailboxes of one bus share: their lock, and the wishes for room in any of them.
class post_office {
  public:
    std::mutex lock;

    /// Until a message of this sender may find room that did not before.
    void wait_for_room(std::unique_lock<std::mutex> &locked, uint32_t sender);

    /// Stands until it leaves, or ends.
    void add(room_wish &wish) { wishes_.push_back(wish); }

    void room_made(uint32_t sender);
    void room_made_for_all();

  private:
    ring<room_wish> wishes_;
};

} // namespace ribkit::platform
