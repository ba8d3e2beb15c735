// One connection an endpoint. What arrives goes into the same mailbox as in process, on the client library's threads;
// a subject's thread waits where its queue is full. A message's payload follows eight bytes: opcode and sender,
// big-endian. News that come later than a send (nobody listens, not permitted, connection lost) end the waits for its
// answer.
#include "platform/nats_transport.h"

#include "codec/bytes.h"
#include "platform/clock.h"
#include "platform/nats_endpoint.h"

#include <cerrno>
#include <climits>

namespace ribkit::platform {

using namespace nats_callbacks;

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
    const natsStatus status = natsConnection_Connect(&connected, made);
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
    return subscribe(inbox_ + "*", false, nullptr);
}

int nats_endpoint::subscribe(const std::string &subject, bool one_of_many, door *way_in) {
    const std::scoped_lock one_at_a_time{settling_};
    auto target = std::make_unique<callback_target>(callback_target{weak_from_this(), way_in});
    natsSubscription *made = nullptr;
    const natsStatus status =
        one_of_many && !place_.queue.empty()
            ? natsConnection_QueueSubscribe(&made, connection_.get(), subject.c_str(), place_.queue.c_str(), on_message,
                                            target.get())
            : natsConnection_Subscribe(&made, connection_.get(), subject.c_str(), on_message, target.get());
    if (status != NATS_OK) {
        return errno_of(status);
    }
    natsSubscription_SetOnCompleteCB(made, forget, target.release());
    subscription_ptr subscription{made};
    if (const int error = settle(subject, nats_subscribing); error != 0) {
        return error;
    }
    const std::scoped_lock lock{office_->lock};
    subscriptions_.push_back(std::move(subscription));
    return 0;
}

// What the client library says of its last error lies where it writes the next one, from its own thread: a text that
// reads the same twice is whole.
std::string nats_endpoint::last_refusal() {
    std::string before;
    std::string now;
    do {
        const char *text = nullptr;
        before.swap(now);
        now =
            natsConnection_GetLastError(connection_.get(), &text) == NATS_NOT_PERMITTED && text != nullptr ? text : "";
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
    const natsStatus status = natsConnection_FlushTimeout(connection_.get(), server_limit);
    return status == NATS_OK && last_refused(act) == subject ? EACCES : errno_of(status);
}

int nats_endpoint::listen(const qip_addr &address, uint32_t bound, std::span<const char *const> /*names*/) {
    const std::string subject = subject_of(address);
    door *way_in = nullptr;
    {
        const std::scoped_lock lock{office_->lock};
        if (box_->closed()) {
            return ECANCELED;
        }
        if (!listening_.insert(subject).second) {
            return EADDRINUSE;
        }
        way_in = &box_->add_door(bound);
    }
    const int error = subscribe(subject, !is_group(address), way_in);
    if (error != 0) {
        const std::scoped_lock lock{office_->lock};
        listening_.erase(subject);
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
    do {
        ++last_token_;
    } while (last_token_ == 0 || box_->awaits(last_token_));
    token = last_token_;
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

int nats_endpoint::send(const qip_addr &address, message letter, bool /*may_wait*/, uint32_t *token) {
    const std::string subject = subject_of(address);
    int error = token == nullptr ? 0 : expect(subject, *token);
    if (error == 0) {
        const std::string reply = token == nullptr ? "" : inbox_ + std::to_string(*token);
        error = is_settled(subject) ? publish(subject, reply, letter) : publish_first(subject, reply, letter);
    }
    if (error != 0 && token != nullptr) {
        const std::scoped_lock lock{office_->lock};
        box_->expect_no_more(*token);
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
    ended.clear();
    if (connection_ != nullptr) {
        natsConnection_Close(connection_.get());
    }
    if (has_real_time_) {
        release_real_time();
    }
}

int open_nats(std::string_view url, endpoint_ptr &opened) {
    nats_place place;
    if (!parse_nats_url(url, place)) {
        return EINVAL;
    }
    auto end = std::make_shared<nats_endpoint>(std::move(place));
    const int error = end->connect();
    if (error == 0) {
        opened = std::move(end);
    }
    return error;
}

} // namespace ribkit::platform
