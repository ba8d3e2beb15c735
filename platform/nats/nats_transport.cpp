// One connection an endpoint. What arrives goes into the same mailbox as in process, on the client library's threads;
// where the thread of a sender's own subscription waits for room. A message's payload follows eight bytes: opcode and a
// number, big-endian. News that come later than a send (nobody listens, not permitted, connection lost) end the waits
// for its answer.
#include "platform/transports.h"

#include "codec/bytes.h"
#include "platform/clock.h"
#include "platform/nats/nats_endpoint.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <iterator>

using namespace ribkit::codec;

namespace ribkit::platform {

using namespace nats_callbacks;

static constexpr int most_pending = 65536; // messages and bytes of a subscription that wait for its thread
static constexpr int most_bytes_pending = 64 << 20;

// The client library leaves out a signature whose first byte is zero, and the server refuses: it is asked again.
static natsStatus open_connection(natsConnection *&opened, natsOptions *options) {
    natsStatus status = natsConnection_Connect(&opened, options);
    for (int more = is_identity_signed() ? 3 : 0; status == NATS_CONNECTION_AUTH_FAILED && more > 0; --more) {
        status = natsConnection_Connect(&opened, options);
    }
    return status;
}

int nats_endpoint::connect() {
    has_real_time_ = claim_real_time(); // which the server keeps
    if (!has_real_time_) {
        return ENOTSUP;
    }
    natsOptions *made = nullptr;
    if (natsOptions_Create(&made) != NATS_OK) {
        return ENOMEM;
    }
    const options_ptr options{made};
    if (const int error = set_nats_options(made, place_); error != 0) {
        return error;
    }
    auto target = std::make_unique<callback_target>(callback_target{weak_from_this()});
    natsOptions_SetDisconnectedCB(made, on_disconnect, target.get());
    natsOptions_SetReconnectedCB(made, on_reconnect, target.get());
    natsOptions_SetErrorHandler(made, on_error, target.get());
    natsOptions_SetClosedCB(made, on_closed, target.get());
    natsConnection *connected = nullptr;
    const natsStatus status = open_connection(connected, made);
    connection_.reset(connected);
    if (status == NATS_NO_SERVER && !is_resolved(place_)) {
        return EHOSTUNREACH;
    }
    if (const int error = errno_of(status); error != 0) {
        return error == ENOTCONN ? ECONNREFUSED : error; // it hung up
    }
    static_cast<void>(target.release()); // the closed connection forgets it
    natsInbox *inbox = nullptr;
    if (natsInbox_Create(&inbox) != NATS_OK) {
        return ENOMEM;
    }
    inbox_ = std::string{inbox} + ".";
    natsInbox_Destroy(inbox);
    subscription_ptr answers;
    if (const int error = subscribe(inbox_ + "*", false, {}, answers); error != 0) {
        return error;
    }
    const std::scoped_lock lock{office_->lock};
    subscriptions_.push_back(std::move(answers));
    return 0;
}

int nats_endpoint::subscribe(const std::string &subject, bool one_of_many, callback_target wanted,
                             subscription_ptr &made) {
    const std::scoped_lock one_at_a_time{settling_};
    auto target = std::make_unique<callback_target>(std::move(wanted));
    target->end = weak_from_this();
    natsSubscription *subscription = nullptr;
    const natsStatus status =
        one_of_many && !place_.queue.empty()
            ? natsConnection_QueueSubscribe(&subscription, connection_.get(), subject.c_str(), place_.queue.c_str(),
                                            on_message, target.get())
            : natsConnection_Subscribe(&subscription, connection_.get(), subject.c_str(), on_message, target.get());
    if (status != NATS_OK) {
        return errno_of(status);
    }
    natsSubscription_SetOnCompleteCB(subscription, forget, target.release());
    made.reset(subscription);
    natsSubscription_SetPendingLimits(subscription, most_pending, most_bytes_pending);
    return settle(subject, nats_subscribing);
}

// All of them or none. Those that end for want of another are kept for as long as the connection reads.
int nats_endpoint::subscribe_to_names(const qip_addr &address, std::span<const char *const> names, door *way_in) {
    const std::string stem = subject_of(address) + ".";
    std::vector<subscription_ptr> made;
    std::set<std::string_view> each{names.begin(), names.end()}; // two subscriptions of one name would double messages
    if (each.empty()) {
        each.insert("*");
    }
    int error = 0;
    for (auto name = each.begin(); error == 0 && name != each.end(); ++name) {
        const callback_target wanted{{}, way_in, stem.size(), !names.empty()};
        error = subscribe(stem + std::string{*name}, !is_group(address), wanted, made.emplace_back());
    }
    for (const subscription_ptr &one : made) {
        if (error != 0 && one != nullptr) {
            natsSubscription_Unsubscribe(one.get());
        }
    }
    const std::scoped_lock lock{office_->lock};
    subscriptions_.insert(subscriptions_.end(), std::make_move_iterator(made.begin()),
                          std::make_move_iterator(made.end()));
    return error;
}

// What the client library says of its last error lies where it writes the next one, from its own thread: a text that
// reads the same twice is whole.
std::string nats_endpoint::last_refusal() {
    std::string before;
    std::string now;
    do {
        const char *text = nullptr;
        before.swap(now);
        now = natsConnection_GetLastError(connection_.get(), &text) == NATS_NOT_PERMITTED ? text : "";
    } while (now != before);
    return now;
}

// The subject that the server refused last, by a text like: Permissions Violation for Publish to "SUBJECT".
std::string nats_endpoint::last_refused(const char *act) {
    const std::string said = last_refusal();
    if (said.find(act) == std::string::npos) {
        return "";
    }
    const size_t start = said.find('"') + 1;
    return said.substr(start, said.find('"', start) - start);
}

// Waits until the server has seen all that was sent, and asks whether it refused this, with `settling_` held: only its
// last refusal is known.
int nats_endpoint::settle(const std::string &subject, const char *act) {
    const natsStatus status = natsConnection_FlushTimeout(connection_.get(), place_.server_limit.count());
    return status == NATS_OK && last_refused(act) == subject ? EACCES : errno_of(status);
}

/// Forgets an address that nothing came of.
class nats_endpoint::listening_mark {
  public:
    listening_mark(nats_endpoint &end, const std::string &subject) : end_(end), subject_(subject) {}
    listening_mark(const listening_mark &) = delete;
    listening_mark &operator=(const listening_mark &) = delete;
    ~listening_mark() {
        const std::scoped_lock lock{end_.office_->lock};
        if (!stays_) {
            end_.listening_.erase(subject_);
        }
    }

    void stay() { stays_ = true; }

  private:
    nats_endpoint &end_;
    const std::string &subject_;
    bool stays_ = false;
};

int nats_endpoint::listen(const qip_addr &address, uint32_t bound, std::span<const char *const> names) {
    const std::string subject = subject_of(address);
    door *way_in = nullptr;
    {
        const std::scoped_lock lock{office_->lock};
        if (box_->closed()) {
            return ECANCELED;
        }
        if (listening_.contains(subject)) {
            return EADDRINUSE;
        }
        way_in = &box_->add_door(bound);
        listening_.insert(subject);
    }
    listening_mark mark{*this, subject};
    const int error = subscribe_to_names(address, names, way_in);
    if (error == 0) {
        mark.stay();
    }
    return error;
}

int nats_endpoint::ready() {
    const natsConnStatus status = natsConnection_Status(connection_.get());
    const std::scoped_lock lock{office_->lock};
    if (box_->closed()) {
        return ECANCELED;
    }
    return status == NATS_CONN_STATUS_CONNECTED ? 0 : ENOTCONN;
}

int nats_endpoint::publish(const std::string &subject, const std::string &reply, const message &letter) {
    if (const int error = ready(); error != 0) {
        return error;
    }
    const uint64_t size = uint64_t{nats_head_size} + letter.size;
    if (size > INT_MAX) {
        return EMSGSIZE;
    }
    static_assert(nats_head_size <= message::room_in_front);
    uint8_t *bytes = letter.payload() - nats_head_size;
    store32<std::endian::big>(bytes, letter.opcode);
    store32<std::endian::big>(bytes + 4, sender_);
    const natsStatus status =
        reply.empty() ? natsConnection_Publish(connection_.get(), subject.c_str(), bytes, static_cast<int>(size))
                      : natsConnection_PublishRequest(connection_.get(), subject.c_str(), reply.c_str(), bytes,
                                                      static_cast<int>(size));
    return errno_of(status);
}

int nats_endpoint::expect(const std::string &subject, uint32_t &token) {
    const std::scoped_lock lock{office_->lock};
    token = box_->new_token();
    if (asked_.size() >= most_asked_) {
        std::erase_if(asked_, [this](const auto &one) { return !box_->awaits(one.first); });
        most_asked_ = 2 * asked_.size() + 64;
    }
    asked_[token] = subject;
    return box_->expect(token);
}

bool nats_endpoint::is_settled(const std::string &subject) {
    const std::scoped_lock lock{office_->lock};
    return settled_.contains(subject);
}

// The first message to a subject waits for the server's word, so that a refusal is known at once.
int nats_endpoint::publish_first(const std::string &subject, const std::string &reply, const message &letter) {
    const std::scoped_lock one_at_a_time{settling_};
    int error = publish(subject, reply, letter);
    error = error == 0 ? settle(subject, nats_publishing) : error;
    if (error == 0) {
        const std::scoped_lock lock{office_->lock};
        settled_.insert(subject);
    }
    return error;
}

/// A request that was not sent awaits no answer.
class nats_endpoint::request_mark {
  public:
    request_mark(nats_endpoint &end, const uint32_t *token) : end_(end), token_(token) {}
    request_mark(const request_mark &) = delete;
    request_mark &operator=(const request_mark &) = delete;
    ~request_mark() {
        if (token_ != nullptr) {
            const std::scoped_lock lock{end_.office_->lock};
            end_.box_->expect_no_more(*token_);
        }
    }

    void stay() { token_ = nullptr; }

  private:
    nats_endpoint &end_;
    const uint32_t *token_;
};

int nats_endpoint::send(const qip_addr &address, message letter, bool /*may_wait*/, uint32_t *token) {
    const std::string subject = subject_of(address) + "." + place_.name;
    if (const int error = token == nullptr ? 0 : expect(subject, *token); error != 0) {
        return error;
    }
    request_mark mark{*this, token};
    std::string reply;
    if (token != nullptr) {
        reply = inbox_ + std::to_string(*token);
    }
    const int error = is_settled(subject) ? publish(subject, reply, letter) : publish_first(subject, reply, letter);
    if (error == 0) {
        mark.stay();
    }
    return error;
}

void nats_endpoint::shut() {
    mailbox::leftovers unread;
    std::vector<subscription_ptr> ended;
    {
        const std::scoped_lock lock{office_->lock};
        if (box_->closed()) {
            return;
        }
        unread = box_->close();
        ended.swap(subscriptions_);
    }
    // First the connection, whose end waits for the thread that reads: it hands a message to a subscription without
    // keeping it, and a destroyed one would still be given what arrives just then.
    if (connection_ != nullptr) {
        natsConnection_Close(connection_.get());
    }
    ended.clear();
    if (has_real_time_) {
        release_real_time();
    }
}

int open_nats(std::string_view url, std::chrono::milliseconds server_limit, endpoint_ptr &opened) {
    nats_place place;
    if (!parse_nats_url(url, place)) {
        return EINVAL;
    }
    place.server_limit = std::clamp(server_limit, std::chrono::milliseconds{1}, longest_server_limit);
    auto end = std::make_shared<nats_endpoint>(std::move(place));
    const int error = end->connect();
    if (error == 0) {
        opened = std::move(end);
    }
    return error;
}

} // namespace ribkit::platform
