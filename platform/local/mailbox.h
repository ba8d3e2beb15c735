// Where an endpoint's messages wait for it: the queues of the addresses that it listens at, the answers to its
// requests, and the threads that wait for either. A message is handed straight to the thread that waits for it.
#pragma once

#include "platform/faults/faults.h"
#include "platform/local/fair_queue.h"
#include "platform/local/post_office.h"
#include "platform/ring.h"
#include "platform/spin_habit.h"
#include "platform/transport.h"
#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace ribkit::platform {

/// What a fault script makes of one message, with all that it takes: nothing has happened yet.
struct arrival {
    class mailbox *box = nullptr;
    disturbance done{};
    std::array<packet, 2> at_once{};
    std::array<std::unique_ptr<late_action>, 2> late{};
    packet behind_the_next{};
};

/// All but `receive` are called with the office's lock held. What arrives is disturbed as the handle's
/// fault script says.
class mailbox : public std::enable_shared_from_this<mailbox> {
  public:
    static constexpr size_t most_awaited = 4096; ///< answers outstanding or unread

    mailbox(std::shared_ptr<post_office> office, std::shared_ptr<const handle_faults> faults)
        : office_(std::move(office)), faults_(std::move(faults)), queue_(*office_) {}
    mailbox(const mailbox &) = delete;
    mailbox &operator=(const mailbox &) = delete;
    ~mailbox() = default;

    [[nodiscard]] bool closed() const { return closed_; }
    door &add_door(uint32_t bound) { return queue_.add_door(bound); }

    /// Whether another message of this sender may wait at the address. Room that is made is told to the office.
    [[nodiscard]] bool has_room(const door &way_in, uint32_t sender) const { return queue_.has_room(way_in, sender); }

    /// Beyond the bound, where a sender cannot be made to wait: within limits of his own.
    [[nodiscard]] bool can_hold_back(const door &way_in, const message &letter) const {
        return queue_.can_hold_back(way_in, letter);
    }
    bool is_first_lost(const door &way_in, uint32_t sender) { return queue_.is_first_lost(way_in, sender); }

    /// The sender has room there, or insists. All of it happens, or nothing where it throws.
    void put(door &way_in, message letter);

    /// The two halves of `put`, for whoever puts into several mailboxes or none: the first may throw, the second
    /// follows before the lock is let go.
    arrival prepare(door *way_in, message letter);
    static void complete(arrival &all) noexcept;

    /// From now on the answer with this token is awaited; 0, or ENOBUFS. There is room for it then.
    int expect(uint32_t token);

    /// One that nothing here awaits; never 0.
    uint32_t new_token();

    /// The next token follows this one.
    void continue_after(uint32_t token) { last_token_ = token; }

    void expect_no_more(uint32_t token);

    /// An answer that nobody awaits is thrown away.
    void put_answer(message letter);

    [[nodiscard]] bool awaits(uint32_t token) const;

    /// Ends the wait for an answer, or for all that have not come, with an errno.
    void fail(uint32_t token, int error) noexcept;
    void fail_all(int error) noexcept;

    int receive(const selector &selected, message &letter);

    /// What nobody will read, to be destroyed without the lock.
    struct leftovers {
        packet incoming;
        packet behind_the_next;
        std::vector<message> answers;
    };

    /// Ends all waits.
    leftovers close() noexcept;

  private:
    struct waiter;
    class late_arrival;

    void put_off(arrival &made, size_t place, packet one);
    void arrive_in_turn(packet &one) noexcept;
    void take_in(packet &one) noexcept;
    void take_in_answer(message &letter) noexcept;
    bool hand_to_reader(message &letter) noexcept;
    bool take_answer(const selector &selected, message &letter);
    bool take(const selector &selected, message &letter);
    bool spin(waiter &self, std::unique_lock<std::mutex> &locked);
    int sleep(waiter &self, std::unique_lock<std::mutex> &locked);
    void give_up(waiter &self);

    std::shared_ptr<post_office> office_;
    std::shared_ptr<const handle_faults> faults_;
    fair_queue queue_;
    packet behind_the_next_;
    std::vector<message> answers_;  // in the order of arrival; room for as many as are awaited
    std::vector<uint32_t> awaited_; // few: searched from one end
    uint32_t last_token_ = 0;
    ring<waiter> waiters_;
    spin_habit habit_;
    bool closed_ = false;
};

/// An answer is awaited as long as this lives, or for good once it is kept. With the office's lock held.
class expected_answer {
  public:
    expected_answer(mailbox &box, uint32_t token) : box_(box), token_(token), error_(box.expect(token)) {}
    expected_answer(const expected_answer &) = delete;
    expected_answer &operator=(const expected_answer &) = delete;
    ~expected_answer() {
        if (!kept_ && error_ == 0) {
            box_.expect_no_more(token_);
        }
    }

    [[nodiscard]] int error() const { return error_; }
    void keep() { kept_ = true; }

  private:
    mailbox &box_;
    uint32_t token_;
    int error_;
    bool kept_ = false;
};

} // namespace ribkit::platform
