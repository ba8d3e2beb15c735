// One connection an endpoint. What arrives goes into the same mailbox as in process, on the client library's threads;
// a subject's thread waits where its queue is full. A message's payload follows eight bytes: opcode and sender,
// big-endian. News that come later than a send (nobody listens, not permitted, connection lost) end the waits for its
// answer.
#include "platform/nats_transport.h"

#include "codec/bytes.h"
#include "platform/history.h"
#include "platform/mailbox.h"
#include "platform/nats_options.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <set>

namespace ribkit::platform {

namespace {

constexpr size_t head_size = 8;
constexpr int64_t settle_limit = 5000; // milliseconds that the server may take to say yes or no

template <typename Object, void (*Destroy)(Object *)> struct destroyer {
    void operator()(Object *object) const { Destroy(object); }
};
using options_ptr = std::unique_ptr<natsOptions, destroyer<natsOptions, natsOptions_Destroy>>;
using message_handle = std::unique_ptr<natsMsg, destroyer<natsMsg, natsMsg_Destroy>>;
using connection_ptr = std::unique_ptr<natsConnection, destroyer<natsConnection, natsConnection_Destroy>>;
using subscription_ptr = std::unique_ptr<natsSubscription, destroyer<natsSubscription, natsSubscription_Destroy>>;

// The last word of an inbox's subject; 0 where it is no number.
uint32_t token_of(const char *subject) {
    const char *dot = std::strrchr(subject, '.');
    return dot == nullptr ? 0 : static_cast<uint32_t>(std::strtoul(dot + 1, nullptr, 10));
}

class nats_endpoint;

// What a callback of the client library is given; the library says when the last one was made.
struct callback_target {
    std::weak_ptr<nats_endpoint> end;
    door *way_in = nullptr; // null for the inbox
};

void forget(void *target) { delete static_cast<callback_target *>(target); }

class nats_endpoint final : public endpoint, public std::enable_shared_from_this<nats_endpoint> {
  public:
    explicit nats_endpoint(nats_place place) : place_(std::move(place)) {}
    ~nats_endpoint() override { shut(); }

    int connect();
    int listen(const qip_addr &address, uint32_t bound) override;
    int send(const qip_addr &address, message letter, bool may_wait, uint32_t *token) override;
    int answer(const message &request, message letter) override {
        return request.reply == nullptr ? 0 : request.reply->answer(std::move(letter));
    }
    int receive(const selector &selected, message &letter) override { return box_->receive(selected, letter); }
    void close() override { shut(); }

    int publish(const std::string &subject, const std::string &reply, const message &letter);
    void take_in(natsMsg &arrived, door *way_in);
    void lost_connection();
    void reconnected(int64_t most);
    void failed(natsStatus status);

  private:
    int subscribe(const std::string &subject, bool one_of_many, door *way_in);
    int ready(const std::string &subject, size_t size);
    int settle(const std::string &subject);
    int expect(const std::string &subject, uint32_t &token);
    void take_answer(natsMsg &arrived, message letter);
    void shut();

    [[nodiscard]] std::string subject_of(const qip_addr &address) const {
        char text[32];
        std::snprintf(text, sizeof text, ".%08x.%u", address.node, address.sap);
        return place_.prefix + text;
    }

    nats_place place_;
    std::shared_ptr<post_office> office_ = std::make_shared<post_office>();
    std::shared_ptr<mailbox> box_ = std::make_shared<mailbox>(office_);
    connection_ptr connection_;
    std::string inbox_; // of the answers: a token follows
    uint32_t sender_ = std::random_device{}();

    // Guarded by the office's lock.
    std::vector<subscription_ptr> subscriptions_;
    std::set<std::string> listening_;
    std::set<std::string> settled_;         // subjects that the server has let us publish to
    std::set<std::string> forbidden_;       // and those that it has not
    std::map<uint32_t, std::string> asked_; // the subject that an awaited token's request went to
    uint32_t last_token_ = 0;
    int64_t most_ = 0; // bytes that the server takes in one message
};

class way_home final : public return_path {
  public:
    way_home(std::weak_ptr<nats_endpoint> end, std::string subject)
        : end_(std::move(end)), subject_(std::move(subject)) {}

    int answer(message letter) override {
        const auto end = end_.lock();
        return end == nullptr ? ECANCELED : end->publish(subject_, "", letter);
    }

  private:
    std::weak_ptr<nats_endpoint> end_;
    std::string subject_;
};

template <typename Action> void at(void *target, const Action &action) {
    const auto *one = static_cast<const callback_target *>(target);
    if (const auto end = one->end.lock()) {
        action(*end, *one);
    }
}

void on_message(natsConnection * /*connection*/, natsSubscription * /*subscription*/, natsMsg *arrived, void *target) {
    const message_handle owned{arrived};
    at(target, [&](nats_endpoint &end, const callback_target &one) { end.take_in(*arrived, one.way_in); });
}

void on_disconnect(natsConnection * /*connection*/, void *target) {
    at(target, [](nats_endpoint &end, const callback_target &) { end.lost_connection(); });
}

void on_reconnect(natsConnection *connection, void *target) {
    at(target,
       [=](nats_endpoint &end, const callback_target &) { end.reconnected(natsConnection_GetMaxPayload(connection)); });
}

void on_error(natsConnection * /*connection*/, natsSubscription * /*subscription*/, natsStatus status, void *target) {
    at(target, [&](nats_endpoint &end, const callback_target &) { end.failed(status); });
}

void on_closed(natsConnection * /*connection*/, void *target) { forget(target); }

int nats_endpoint::connect() {
    natsOptions *made = nullptr;
    if (natsOptions_Create(&made) != NATS_OK) {
        return ENOMEM;
    }
    const options_ptr options{made};
    auto target = std::make_unique<callback_target>(callback_target{weak_from_this()});
    natsStatus status = set_nats_options(made, place_);
    if (status == NATS_OK) {
        natsOptions_SetDisconnectedCB(made, on_disconnect, target.get());
        natsOptions_SetReconnectedCB(made, on_reconnect, target.get());
        natsOptions_SetErrorHandler(made, on_error, target.get());
        natsOptions_SetClosedCB(made, on_closed, target.get());
        natsConnection *connected = nullptr;
        status = natsConnection_Connect(&connected, made);
        connection_.reset(connected);
    }
    if (status != NATS_OK) {
        return errno_of(status);
    }
    static_cast<void>(target.release()); // the closed connection forgets it
    natsInbox *inbox = nullptr;
    if (natsInbox_Create(&inbox) != NATS_OK) {
        return ENOMEM;
    }
    most_ = natsConnection_GetMaxPayload(connection_.get());
    inbox_ = std::string{inbox} + ".";
    natsInbox_Destroy(inbox);
    return subscribe(inbox_ + "*", false, nullptr);
}

int nats_endpoint::subscribe(const std::string &subject, bool one_of_many, door *way_in) {
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
    if (const int error = settle(subject); error != 0) {
        return error;
    }
    const std::scoped_lock lock{office_->lock};
    subscriptions_.push_back(std::move(subscription));
    return 0;
}

// Waits until the server has seen all that was sent, and asks whether it refused this subject.
int nats_endpoint::settle(const std::string &subject) {
    const natsStatus status = natsConnection_FlushTimeout(connection_.get(), settle_limit);
    const char *text = nullptr;
    if (status == NATS_OK && natsConnection_GetLastError(connection_.get(), &text) == NATS_NOT_PERMITTED &&
        text != nullptr && std::strstr(text, ('"' + subject + '"').c_str()) != nullptr) {
        return EACCES;
    }
    return errno_of(status);
}

int nats_endpoint::listen(const qip_addr &address, uint32_t bound) {
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

int nats_endpoint::ready(const std::string &subject, size_t size) {
    const natsConnStatus status = natsConnection_Status(connection_.get());
    const std::scoped_lock lock{office_->lock};
    if (box_->closed()) {
        return ECANCELED;
    }
    if (forbidden_.contains(subject)) {
        return EACCES;
    }
    if (status != NATS_CONN_STATUS_CONNECTED) {
        return ENOTCONN;
    }
    return static_cast<int64_t>(size + head_size) > most_ ? EMSGSIZE : 0;
}

int nats_endpoint::publish(const std::string &subject, const std::string &reply, const message &letter) {
    if (const int error = ready(subject, letter.size); error != 0) {
        return error;
    }
    std::vector<uint8_t> bytes(head_size + letter.size);
    store32<std::endian::big>(bytes.data(), letter.opcode);
    store32<std::endian::big>(bytes.data() + 4, sender_);
    std::copy_n(letter.payload.get(), letter.size, bytes.data() + head_size);
    const auto size = static_cast<int>(bytes.size());
    const natsStatus status =
        reply.empty()
            ? natsConnection_Publish(connection_.get(), subject.c_str(), bytes.data(), size)
            : natsConnection_PublishRequest(connection_.get(), subject.c_str(), reply.c_str(), bytes.data(), size);
    return errno_of(status);
}

int nats_endpoint::expect(const std::string &subject, uint32_t &token) {
    const std::scoped_lock lock{office_->lock};
    do {
        ++last_token_;
    } while (last_token_ == 0 || box_->awaits(last_token_));
    token = last_token_;
    std::erase_if(asked_, [this](const auto &one) { return !box_->awaits(one.first); });
    asked_[token] = subject;
    return box_->expect(token);
}

// The first message to a subject waits for the server's word, so that a refusal is known at once.
int nats_endpoint::send(const qip_addr &address, message letter, bool /*may_wait*/, uint32_t *token) {
    const std::string subject = subject_of(address);
    int error = token == nullptr ? 0 : expect(subject, *token);
    if (error == 0) {
        error = publish(subject, token == nullptr ? "" : inbox_ + std::to_string(*token), letter);
    }
    bool first = false;
    {
        const std::scoped_lock lock{office_->lock};
        first = error == 0 && settled_.insert(subject).second;
    }
    error = first ? settle(subject) : error;
    if (error != 0) {
        const std::scoped_lock lock{office_->lock};
        settled_.erase(subject);
        if (token != nullptr) {
            box_->expect_no_more(*token);
        }
    }
    return error;
}

void nats_endpoint::take_in(natsMsg &arrived, door *way_in) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(natsMsg_GetData(&arrived));
    const auto size = static_cast<size_t>(natsMsg_GetDataLength(&arrived));
    message letter;
    if (size >= head_size) {
        letter = new_message(be32(bytes), {bytes + head_size, size - head_size});
    }
    if (way_in == nullptr) {
        take_answer(arrived, std::move(letter));
        return;
    }
    if (size < head_size) {
        record_event("nats: a message without its head was thrown away");
        return;
    }
    if (const char *reply = natsMsg_GetReply(&arrived); reply != nullptr && *reply != '\0') {
        letter.reply = std::make_shared<way_home>(weak_from_this(), reply);
        letter.token = token_of(reply);
    }
    std::unique_lock locked{office_->lock};
    while (!box_->closed() && !way_in->has_room()) {
        office_->wait_for_room(locked);
    }
    box_->put(*way_in, std::move(letter));
}

void nats_endpoint::take_answer(natsMsg &arrived, message letter) {
    const char *subject = natsMsg_GetSubject(&arrived);
    const uint32_t token = token_of(subject);
    const std::scoped_lock lock{office_->lock};
    if (letter.payload == nullptr) {
        box_->fail(token, natsMsg_IsNoResponders(&arrived) ? ENOTCONN : EBADMSG);
        return;
    }
    letter.token = token;
    box_->put_answer(std::move(letter));
}

void nats_endpoint::lost_connection() {
    record_event("nats: connection lost");
    const std::scoped_lock lock{office_->lock};
    settled_.clear();
    forbidden_.clear();
    box_->fail_all(ECONNRESET);
}

void nats_endpoint::reconnected(int64_t most) {
    record_event("nats: connected again");
    const std::scoped_lock lock{office_->lock};
    most_ = most;
}

void nats_endpoint::failed(natsStatus status) {
    record_event(std::string{"nats: "} + natsStatus_GetText(status));
    const char *text = nullptr;
    if (status != NATS_NOT_PERMITTED || natsConnection_GetLastError(connection_.get(), &text) != status ||
        text == nullptr) {
        return;
    }
    const char *start = std::strchr(text, '"');
    const char *end = std::strrchr(text, '"');
    if (start == nullptr || start == end || std::strstr(text, "Publish") == nullptr) {
        return;
    }
    const std::string subject{start + 1, end};
    const std::scoped_lock lock{office_->lock};
    forbidden_.insert(subject);
    for (const auto &[token, asked] : asked_) {
        if (asked == subject) {
            box_->fail(token, EACCES);
        }
    }
}

void nats_endpoint::shut() {
    std::vector<message> unread;
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
}

} // namespace

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
