// One connection between two processes, of which one has connected and sends messages, while the other listens,
// answers, and says how many more messages it has room for. Everything is called with the endpoint's lock held, but for
// what is atomic.
#pragma once

#include "platform/descriptor.h"
#include "platform/local/mailbox.h"
#include "platform/unix/unix_packet.h"
#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <sys/types.h>

namespace ribkit::platform {

/// A listening socket's side of its queue.
struct unix_listener;

/// What has arrived over a connection and waits for a reader. Messages end on any thread.
struct arrived_messages {
    std::atomic<uint32_t> unread{0};
    std::atomic<size_t> bytes{0};
    std::atomic<uint32_t> room_owed{0}; ///< read, and not yet said to the sender
};

class unix_connection {
  public:
    explicit unix_connection(descriptor socket) : socket_(std::move(socket)) {}

    [[nodiscard]] bool is_open() const { return socket_.is_open(); }
    [[nodiscard]] int socket() const { return socket_.get(); }
    void close();

    /// Puts a message into the queue of what is to be sent.
    void post(packet_kind kind, message letter);

    /// Sends what the socket takes, and what room is owed; 0, EAGAIN where it takes no more, or another errno.
    int flush();

    /// Says that messages are missing between the last one and the next; 0 or an errno.
    int say_gap();

    /// Says why, and closes it.
    void refuse(int reason);

    /// Messages sent so far.
    [[nodiscard]] uint64_t sent() const { return sent_; }

    /// Whether all that was posted up to this number is sent.
    [[nodiscard]] bool has_sent(uint64_t number) const { return number <= sent_; }
    [[nodiscard]] uint64_t last_posted() const { return sent_ + to_send_.size(); }
    [[nodiscard]] uint64_t bytes_to_send() const { return bytes_to_send_; }

    /// Takes back the last one posted.
    message unpost();

    /// One packet; 0, EAGAIN, or another errno: ECONNRESET at the end, EPROTO for what is no packet.
    int receive(std::span<uint8_t> place, std::span<const uint8_t> &packet) const;

    arrived_messages arrived;
    message_builder incoming;
    uint64_t last_fed = 0;       // pieces that had arrived everywhere when the latest one did here
    uint32_t watched = 0;        // the events
    bool is_socket_full = false; // something is to be sent that it did not take

    // Of whoever connected.
    std::string name;                                   // that it is connected to
    uint32_t room = 0;                                  // messages that may be sent
    std::set<uint32_t> asked;                           // tokens of requests without an answer
    int ended_by = 0;                                   // why it was closed
    bool is_slow = false;                               // a member that its group has waited for in vain
    bool lacks_some = false;                            // ... and that has not been told that it has missed something
    std::chrono::steady_clock::time_point full_since{}; // a member without room; the epoch where it has some

    // Of whoever listens.
    const unix_listener *listener = nullptr; // null for who connected
    sender_ptr from;
    pid_t process = 0;
    uid_t user = 0;

  private:
    struct outgoing {
        packet_head head;
        message letter;
        uint32_t sent = 0;
        bool begun = false;
    };

    int send_packet(outgoing &one);
    int send_room();

    descriptor socket_;
    std::deque<outgoing> to_send_;
    uint64_t bytes_to_send_ = 0;
    uint64_t sent_ = 0;
};

} // namespace ribkit::platform
