// An endpoint among the processes of one machine: a socket for every address that it listens at, a connection to every
// address that it sends to, one for everybody who sends to it, one mailbox, and a thread for what arrives while nobody
// calls. Whoever calls looks for arrivals himself first.
#pragma once

#include "platform/local/mailbox.h"
#include "platform/unix/unix_connection.h"
#include "platform/unix/unix_place.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <sys/epoll.h>
#include <thread>
#include <vector>

namespace ribkit::platform {

struct unix_listener {
    taken_name name;
    qip_addr address;
    uint32_t bound;
    door *way_in;
    std::vector<std::string> senders; ///< whose messages are wanted; empty: everybody's
};

/// What messages that wait for a reader need of their endpoint, which they may outlive.
class unix_waker {
  public:
    int open();
    void wake() const; ///< the thread that serves the endpoint
    void sleep() const;
    [[nodiscard]] int number() const { return event_.get(); }

    std::atomic<size_t> unread_bytes{0};

  private:
    descriptor event_;
};

/// Memory may be what has just failed.
void record_quietly(const char *text);

class unix_endpoint final : public endpoint, public std::enable_shared_from_this<unix_endpoint> {
  public:
    using connection_ptr = std::shared_ptr<unix_connection>;
    using locked = std::unique_lock<std::mutex>;

    explicit unix_endpoint(unix_place place) : place_(std::move(place)) {}
    ~unix_endpoint() override { shut(); }

    int start();
    int listen(const qip_addr &address, uint32_t bound, std::span<const char *const> names) override;
    int send(const qip_addr &address, message letter, bool may_wait, uint32_t *token) override;
    int receive(const selector &selected, message &letter) override;
    [[nodiscard]] uint32_t reconnections() const override { return reconnections_; }
    void close() override { shut(); }

    int send_answer(const connection_ptr &to, message letter);

  private:
    int send_to_one(const std::string &name, message letter, bool may_wait, uint32_t token, locked &lock);
    int send_to_group(const qip_addr &group, message letter, bool may_wait, uint32_t token, locked &lock);
    int find(const std::string &name, connection_ptr &found);
    int find_members(const qip_addr &group, std::vector<connection_ptr> &found);
    bool has_room(const connection_ptr &to);
    bool is_given_up(const connection_ptr &member);
    int post(const connection_ptr &to, message &letter, uint32_t token);
    int wait_until_sent(const connection_ptr &to, uint64_t number, locked &lock);

    void serve();
    void look_for_arrivals();
    void handle(std::span<const epoll_event> events);
    void handle(const epoll_event &event);
    void accept_from(unix_listener &listener);
    void accept_later(const unix_listener &listener);
    void accept_again();
    int accept_one(const unix_listener &listener, descriptor socket);
    int refusal_of(const unix_listener &listener, const unix_connection &sender) const;
    bool has_full_queue(const unix_connection &from) const;
    void read(const connection_ptr &from);
    bool take_packet(const connection_ptr &from, std::span<const uint8_t> packet);
    bool take_piece(const connection_ptr &from, const packet_head &head, std::span<const uint8_t> piece);
    void make_room_for_pieces();
    void take_message(const connection_ptr &from, message letter);
    void take_answer(unix_connection &from, message letter);
    void flush(const connection_ptr &to);
    void was_read(message &letter);
    void settle(const connection_ptr &from);
    void settle_all();
    void drop(const connection_ptr &lost, int reason);
    void watch(unix_connection &one);
    int find_user_name(uid_t user, const std::string *&name);
    void shut();
    void send_the_rest();

    unix_place place_;
    std::shared_ptr<post_office> office_ = std::make_shared<post_office>();
    std::shared_ptr<mailbox> box_ = std::make_shared<mailbox>(office_, faults());
    std::shared_ptr<unix_waker> waker_ = std::make_shared<unix_waker>();
    std::unique_ptr<uint8_t[]> packet_room_ = std::make_unique_for_overwrite<uint8_t[]>(packet_size);
    bool has_real_time_ = false;
    descriptor events_;       // what is watched
    descriptor accept_timer_; // since there were no descriptors for those who connect
    std::thread thread_;
    std::atomic<uint32_t> reconnections_{0};

    // Guarded by the office's lock.
    std::condition_variable changed_; // room to send, or a connection
    std::map<int, std::unique_ptr<unix_listener>> listeners_;
    std::map<int, connection_ptr> connections_;
    std::map<std::string, connection_ptr> to_; // by the name that they are connected to
    std::set<std::string> lost_;               // names that there was a connection to
    std::vector<connection_ptr> owing_;        // whose messages were read, which they may not know
    std::map<uid_t, std::string> user_names_;
    size_t senders_ = 0;                                  // connections of others to us
    uint64_t pieces_ = 0;                                 // that have arrived
    uint64_t held_pieces_ = 0;                            // bytes of messages that are not whole
    std::chrono::steady_clock::time_point shortage_said_; // of descriptors, the last time
};

} // namespace ribkit::platform
