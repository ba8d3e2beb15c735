// Where an endpoint's messages wait for it: the bounded queues of the addresses that it listens at, the answers to its
// requests, and the threads that wait for either. A message is handed straight to the thread that waits for it.
#pragma once

#include "platform/post_office.h"
#include "platform/spin_habit.h"
#include "platform/transport.h"
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace ribkit::platform {

/// The queue of one address: how many messages may wait, and do.
struct door {
    uint32_t bound = 0;
    uint32_t waiting = 0;

    [[nodiscard]] bool has_room() const { return waiting < bound; }
};

/// All but `receive` are called with the office's lock held. What arrives is disturbed as a fault script says.
class mailbox : public std::enable_shared_from_this<mailbox> {
  public:
    static constexpr size_t most_awaited = 4096; ///< answers outstanding or unread

    explicit mailbox(std::shared_ptr<post_office> office) : office_(std::move(office)) {}
    mailbox(const mailbox &) = delete;
    mailbox &operator=(const mailbox &) = delete;
    ~mailbox() = default;

    [[nodiscard]] bool closed() const { return closed_; }
    door &add_door(uint32_t bound);

    /// The door has room, or the sender insists.
    void put(door &way_in, message letter);

    /// From now on the answer with this token is awaited; 0, or ENOBUFS.
    int expect(uint32_t token);
    void expect_no_more(uint32_t token);

    /// An answer that nobody awaits is thrown away.
    void put_answer(message letter);

    [[nodiscard]] bool awaits(uint32_t token) const;

    /// Ends the wait for an answer, or for all that have not come, with an errno.
    void fail(uint32_t token, int error);
    void fail_all(int error);

    int receive(const selector &selected, message &letter);

    /// Ends all waits; the messages that nobody will read are returned, to be destroyed without the lock.
    std::vector<message> close();

  private:
    struct waiter;
    struct parcel {
        message letter;
        door *way_in; // null for an answer
    };

    void arrive(parcel one);
    void arrive_later(parcel one, uint32_t milliseconds);
    void arrive_in_turn(parcel one);
    void take_in(parcel one);
    void take_in_answer(message letter);
    waiter *waiter_for(const message &letter, bool is_answer);
    bool take(const selector &selected, message &letter);
    bool take_incoming(message &letter);
    bool take_answer(const selector &selected, message &letter);
    bool spin(waiter &self, std::unique_lock<std::mutex> &locked);
    int sleep(waiter &self, std::unique_lock<std::mutex> &locked);
    void give_up(waiter &self);

    std::shared_ptr<post_office> office_;
    std::deque<door> doors_;
    std::deque<parcel> incoming_;
    std::vector<parcel> behind_the_next_;
    std::vector<message> answers_;  // in the order of arrival
    std::vector<uint32_t> awaited_; // few: searched from one end
    std::vector<waiter *> waiters_;
    spin_habit habit_;
    bool closed_ = false;
};

} // namespace ribkit::platform
