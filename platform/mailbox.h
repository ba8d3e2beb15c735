// Where an endpoint's messages wait for it: the bounded queues of the addresses that it listens at, the answers to its
// requests, and the threads that wait for either. A message is handed straight to the thread that waits for it.
#pragma once

#include "platform/transport.h"
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <unordered_set>
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
    uint32_t waiting_ = 0;
};

/// The queue of one address: how many messages may wait, and do.
struct door {
    uint32_t bound = 0;
    uint32_t waiting = 0;

    [[nodiscard]] bool has_room() const { return waiting < bound; }
};

/// All but `receive` are called with the office's lock held.
class mailbox {
  public:
    static constexpr size_t most_awaited = 4096; ///< answers outstanding or unread

    explicit mailbox(post_office &office) : office_(office) {}
    mailbox(const mailbox &) = delete;
    mailbox &operator=(const mailbox &) = delete;
    ~mailbox() = default;

    [[nodiscard]] bool closed() const { return closed_; }
    door &add_door(uint32_t bound);

    /// The door has room, or the sender insists.
    void put(door &way_in, message_ptr letter);

    /// From now on the answer with this token is awaited; 0, or ENOBUFS.
    int expect(uint32_t token);
    void expect_no_more(uint32_t token) { awaited_.erase(token); }

    /// Takes an answer in; one that nobody awaits is left with the caller, who throws it away without the lock.
    void put_answer(message_ptr &letter);

    int receive(const selector &selected, message_ptr &letter);

    /// Ends all waits; the messages that nobody will read are returned, to be destroyed without the lock.
    std::vector<message_ptr> close();

  private:
    struct waiter;
    struct queued {
        message_ptr letter;
        door *way_in;
    };

    waiter *waiter_for(const message &letter, bool is_answer);
    message_ptr take(const selector &selected);
    message_ptr take_incoming();
    message_ptr take_answer(const selector &selected);
    int sleep(waiter &self, const selector &selected, std::unique_lock<std::mutex> &locked);
    void give_up(waiter &self, const selector &selected);

    post_office &office_;
    std::deque<door> doors_;
    std::deque<queued> incoming_;
    std::deque<message_ptr> answers_;
    std::unordered_set<uint32_t> awaited_;
    std::vector<waiter *> waiters_;
    bool closed_ = false;
};

} // namespace ribkit::platform
