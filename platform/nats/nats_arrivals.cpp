// What comes from the server, on the client library's threads: messages, answers, and the news that none will come.
#include "platform/nats/nats_endpoint.h"

#include "codec/bytes.h"
#include "platform/history.h"
#include "platform/names.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>

using namespace ribkit::codec;

namespace ribkit::platform {

namespace {

// The last word of an inbox's subject; 0 where it is no number.
uint32_t token_of(const char *subject) {
    const char *dot = std::strrchr(subject, '.');
    return dot == nullptr ? 0 : static_cast<uint32_t>(std::strtoul(dot + 1, nullptr, 10));
}

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

// Nothing may be thrown at the client library.
template <typename Action> void at(void *target, const Action &action) noexcept {
    const auto *one = static_cast<const callback_target *>(target);
    if (const auto end = one->end.lock()) {
        try {
            action(*end, *one);
        } catch (const std::exception &) { // memory; what was sent is lost, as anywhere on the way
            record_event("nats: no memory for what arrived");
        }
    }
}

} // namespace

namespace nats_callbacks {

void forget(void *target) { const std::unique_ptr<callback_target> ended{static_cast<callback_target *>(target)}; }

void on_message(natsConnection * /*connection*/, natsSubscription * /*subscription*/, natsMsg *arrived, void *target) {
    const message_handle owned{arrived};
    at(target, [&](nats_endpoint &end, const callback_target &one) { end.take_in(*arrived, one); });
}

void on_disconnect(natsConnection * /*connection*/, void *target) {
    at(target, [](nats_endpoint &end, const callback_target &) { end.lost_connection(); });
}

void on_reconnect(natsConnection * /*connection*/, void *target) {
    at(target, [](nats_endpoint &end, const callback_target &) { end.found_connection(); });
}

void on_error(natsConnection * /*connection*/, natsSubscription * /*subscription*/, natsStatus status, void *target) {
    at(target, [&](nats_endpoint &end, const callback_target &) { end.failed(status); });
}

void on_closed(natsConnection * /*connection*/, void *target) { forget(target); }

} // namespace nats_callbacks

void nats_endpoint::take_in(natsMsg &arrived, const callback_target &target) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(natsMsg_GetData(&arrived));
    const auto size = static_cast<size_t>(natsMsg_GetDataLength(&arrived));
    const bool has_head = size >= nats_head_size;
    if (target.way_in == nullptr) {
        take_answer(arrived, has_head ? std::span{bytes, size} : std::span<const uint8_t>{});
    } else if (has_head) {
        take_request(arrived, target, new_message(be32(bytes), {bytes + nats_head_size, size - nats_head_size}));
    } else {
        record_event("nats: a message without its head was thrown away");
    }
}

// Who has a subscription of his own waits in its thread; the others may not be kept waiting, so that what cannot be
// held back is lost.
void nats_endpoint::take_request(natsMsg &arrived, const callback_target &target, message letter) {
    const std::string_view name = std::string_view{natsMsg_GetSubject(&arrived)}.substr(target.name_at);
    if (!is_name(name)) {
        record_event("nats: a message of nobody who has a name was thrown away");
        return;
    }
    if (const char *reply = natsMsg_GetReply(&arrived); reply != nullptr) {
        letter.reply = std::make_shared<way_home>(weak_from_this(), reply);
        letter.token = token_of(reply);
    }
    std::unique_lock locked{office_->lock};
    letter.from = sender_named(name);
    const uint32_t sender = sender_of(letter);
    while (target.is_named && !box_->closed() && !box_->has_room(*target.way_in, sender)) {
        office_->wait_for_room(locked, sender);
    }
    if (target.is_named || box_->can_hold_back(*target.way_in, letter)) {
        box_->put(*target.way_in, std::move(letter));
    } else if (box_->is_first_lost(*target.way_in, sender)) {
        record_event("nats: more than can be held back for " + letter.from->name + ", messages lost");
    }
}

sender_ptr nats_endpoint::sender_named(std::string_view name) {
    const auto known = senders_.find(name);
    if (known != senders_.end()) {
        return known->second;
    }
    if (senders_.size() >= most_senders_) {
        std::erase_if(senders_, [](const auto &one) { return one.second.use_count() == 1; });
        most_senders_ = 2 * senders_.size() + 1024;
    }
    return senders_.emplace(name, new_sender(std::string{name})).first->second;
}

// No head, no answer: the server says that nobody listens, or a stranger answers. An answer that there is no memory for
// ends the wait, too.
void nats_endpoint::take_answer(natsMsg &arrived, std::span<const uint8_t> bytes) {
    const uint32_t token = token_of(natsMsg_GetSubject(&arrived));
    int error = natsMsg_IsNoResponders(&arrived) ? ENOTCONN : EBADMSG;
    try {
        if (!bytes.empty()) {
            message letter = new_message(be32(bytes.data()), bytes.subspan(nats_head_size));
            letter.token = token;
            const std::scoped_lock lock{office_->lock};
            box_->put_answer(std::move(letter));
            return;
        }
    } catch (const std::bad_alloc &) {
        error = ENOMEM;
    }
    const std::scoped_lock lock{office_->lock};
    box_->fail(token, error);
}

void nats_endpoint::lost_connection() {
    record_event("nats: connection lost");
    const std::scoped_lock lock{office_->lock};
    settled_.clear();
    box_->fail_all(ECONNRESET);
}

void nats_endpoint::found_connection() {
    record_event("nats: connected again");
    ++reconnections_;
}

void nats_endpoint::failed(natsStatus status) {
    record_event(std::string{"nats: "} + natsStatus_GetText(status));
    const std::string subject = status == NATS_NOT_PERMITTED ? last_refused(nats_publishing) : "";
    if (subject.empty()) {
        return;
    }
    const std::scoped_lock lock{office_->lock};
    settled_.erase(subject);
    for (const auto &[token, asked] : asked_) {
        if (asked == subject) {
            box_->fail(token, EACCES);
        }
    }
}

} // namespace ribkit::platform
