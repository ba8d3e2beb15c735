// An endpoint over a NATS server: one connection, one mailbox, and a subscription for its inbox and every address.
#pragma once

#include "platform/local/mailbox.h"
#include "platform/nats/nats_options.h"
#include <atomic>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::platform {

// What the server may refuse to a subject, in its words.
inline constexpr const char *nats_subscribing = "Subscription";
inline constexpr const char *nats_publishing = "Publish";

inline constexpr size_t nats_head_size = 8; // opcode and sender, big-endian, before every payload

template <typename Object, void (*Destroy)(Object *)> struct destroyer {
    void operator()(Object *object) const { Destroy(object); }
};
using options_ptr = std::unique_ptr<natsOptions, destroyer<natsOptions, natsOptions_Destroy>>;
using message_handle = std::unique_ptr<natsMsg, destroyer<natsMsg, natsMsg_Destroy>>;
using connection_ptr = std::unique_ptr<natsConnection, destroyer<natsConnection, natsConnection_Destroy>>;
using subscription_ptr = std::unique_ptr<natsSubscription, destroyer<natsSubscription, natsSubscription_Destroy>>;

class nats_endpoint;

// What a callback of the client library is given; the library says when the last one was made.
struct callback_target {
    std::weak_ptr<nats_endpoint> end;
    door *way_in = nullptr; // null for the inbox
    size_t name_at = 0;     // where the sender's NAME begins in the subject
    bool is_named = false;  // one sender's: its thread may wait for room
};

class nats_endpoint final : public endpoint, public std::enable_shared_from_this<nats_endpoint> {
  public:
    explicit nats_endpoint(nats_place place) : place_(std::move(place)) {}
    ~nats_endpoint() override { shut(); }

    int connect();
    int listen(const qip_addr &address, uint32_t bound, std::span<const char *const> names) override;
    int send(const qip_addr &address, message letter, bool may_wait, uint32_t *token) override;
    int receive(const selector &selected, message &letter) override { return box_->receive(selected, letter); }
    [[nodiscard]] uint32_t reconnections() const override { return reconnections_; }
    void close() override { shut(); }

    int publish(const std::string &subject, const std::string &reply, const message &letter);
    void take_in(natsMsg &arrived, const callback_target &target);
    void lost_connection();
    void found_connection();
    void failed(natsStatus status);

  private:
    class listening_mark;
    class request_mark;

    int subscribe(const std::string &subject, bool one_of_many, callback_target wanted, subscription_ptr &made);
    int subscribe_to_names(const qip_addr &address, std::span<const char *const> names, door *way_in);
    void take_request(natsMsg &arrived, const callback_target &target, message letter);
    sender_ptr sender_named(std::string_view name);
    bool is_settled(const std::string &subject);
    int publish_first(const std::string &subject, const std::string &reply, const message &letter);
    int ready();
    int settle(const std::string &subject, const char *act);
    std::string last_refusal();
    std::string last_refused(const char *act);
    int expect(const std::string &subject, uint32_t &token);
    void take_answer(natsMsg &arrived, std::span<const uint8_t> bytes);
    void shut();

    [[nodiscard]] std::string subject_of(const qip_addr &address) const {
        char text[32];
        std::snprintf(text, sizeof text, ".%08x.%u", address.node, address.sap);
        return place_.prefix + text;
    }

    nats_place place_;
    std::shared_ptr<post_office> office_ = std::make_shared<post_office>();
    std::shared_ptr<mailbox> box_ = std::make_shared<mailbox>(office_, faults());
    bool has_real_time_ = false;
    connection_ptr connection_;
    std::string inbox_; // of the answers: a token follows
    uint32_t sender_ = std::random_device{}();
    std::atomic<uint32_t> reconnections_{0};
    std::mutex settling_; // while the server is asked about a subject; taken before the office's lock

    // Guarded by the office's lock.
    std::vector<subscription_ptr> subscriptions_;
    std::set<std::string> listening_;
    std::set<std::string> settled_;                          // subjects that the server has let us publish to
    std::map<uint32_t, std::string> asked_;                  // the subject that a token's request went to
    size_t most_asked_ = 64;                                 // then those that are awaited no more are forgotten
    std::map<std::string, sender_ptr, std::less<>> senders_; // by NAME
    size_t most_senders_ = 1024;                             // then those who have nothing here are forgotten
};

/// The client library's callbacks; each is given a callback_target.
namespace nats_callbacks {

void on_message(natsConnection *connection, natsSubscription *subscription, natsMsg *arrived, void *target);
void on_disconnect(natsConnection *connection, void *target);
void on_reconnect(natsConnection *connection, void *target);
void on_error(natsConnection *connection, natsSubscription *subscription, natsStatus status, void *target);
void forget(void *target);
void on_closed(natsConnection *connection, void *target);

} // namespace nats_callbacks

} // namespace ribkit::platform
