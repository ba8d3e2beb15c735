// What waits at the addresses of one endpoint: a lane for every sender with something waiting. The senders take turns,
// so that a message waits for at most one of each other sender, however many they send. What putting a message needs
// is had before: the putting itself cannot fail.
#pragma once

#include "platform/local/post_office.h"
#include "platform/message.h"
#include <deque>
#include <list>

namespace ribkit::platform {

/// An address that is listened at, and how many messages of one sender may wait there.
struct door {
    uint32_t bound = 0;
};

struct parcel {
    message letter;
    door *way_in = nullptr; ///< null for an answer
    uint64_t number = 0;    ///< in the order of arrival
};

/// What one sender has sent to one address, in order.
struct lane {
    uint32_t sender = 0;
    door *way_in = nullptr;
    std::list<parcel> waiting{};
    size_t bytes = 0;
    bool has_lost = false; ///< a message that could not be held back
};

/// Messages on their way, and the lanes that they may have to open.
struct packet {
    std::list<parcel> parcels{};
    std::list<lane> lanes{};

    [[nodiscard]] bool empty() const { return parcels.empty(); }
};

inline uint32_t sender_of(const message &letter) { return letter.from->number; }

class fair_queue {
  public:
    static constexpr size_t most_lanes = 1024; ///< senders with something waiting, counted for each address
    static constexpr size_t most_held_back = 65536;
    static constexpr size_t most_bytes_held_back = 64 << 20; ///< shared by the senders with something waiting
    static constexpr size_t bytes_around = 256;              ///< that a message takes beyond its payload

    explicit fair_queue(post_office &office) : office_(office) {}

    door &add_door(uint32_t bound) { return doors_.emplace_back(door{.bound = bound}); }
    [[nodiscard]] bool has_room(const door &way_in, uint32_t sender) const;

    /// Beyond the bound, for a receiver that cannot make this sender wait.
    [[nodiscard]] bool can_hold_back(const door &way_in, const message &letter) const;

    /// A message of this sender was lost: whether it is the first since nothing of his waited.
    bool is_first_lost(const door &way_in, uint32_t sender);

    packet packed(door *way_in, message letter);

    /// Puts the first message, room or not.
    void put(packet &one) noexcept;

    /// False where nothing waits.
    bool take(message &letter) noexcept;

    /// What its first message needed on its way is used again.
    void recycle(packet &one) noexcept;

    /// Everything that waits.
    packet emptied() noexcept;

  private:
    static constexpr size_t most_spare = 64;

    std::list<lane>::iterator oldest_of(uint32_t sender);
    void end_turn(uint32_t sender);

    post_office &office_;
    std::deque<door> doors_;
    std::list<lane> lanes_; // those of the sender whose turn it is come first
    packet spare_;
    uint64_t arrived_ = 0;
};

} // namespace ribkit::platform
