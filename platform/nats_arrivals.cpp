// What comes from the server, on the client library's threads: messages, answers, and the news that none will come.
#include "platform/nats_endpoint.h"

#include "codec/bytes.h"
#include "platform/history.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

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

template <typename Action> void at(void *target, const Action &action) {
    const auto *one = static_cast<const callback_target *>(target);
    if (const auto end = one->end.lock()) {
        action(*end, *one);
    }
}

} // namespace

namespace nats_callbacks {

void forget(void *target) { delete static_cast<callback_target *>(target); }

void on_message(natsConnection * /*connection*/, natsSubscription * /*subscription*/, natsMsg *arrived, void *target) {
    const message_handle owned{arrived};
    at(target, [&](nats_endpoint &end, const callback_target &one) { end.take_in(*arrived, one.way_in); });
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

void nats_endpoint::take_in(natsMsg &arrived, door *way_in) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(natsMsg_GetData(&arrived));
    const auto size = static_cast<size_t>(natsMsg_GetDataLength(&arrived));
    message letter;
    if (size >= nats_head_size) {
        letter = new_message(be32(bytes), {bytes + nats_head_size, size - nats_head_size});
    }
    if (way_in == nullptr) {
        take_answer(arrived, std::move(letter));
        return;
    }
    if (size < nats_head_size) {
        record_event("nats: a message without its head was thrown away");
        return;
    }
    if (const char *reply = natsMsg_GetReply(&arrived); reply != nullptr && *reply != '\0') {
        letter.reply = std::make_shared<way_home>(weak_from_this(), reply);
        letter.token = token_of(reply);
    }
    std::unique_lock locked{office_->lock};
    while (!box_->closed() && !box_->has_room(*way_in, sender_of(letter))) {
        office_->wait_for_room(locked, sender_of(letter));
    }
    box_->put(*way_in, std::move(letter));
}

void nats_endpoint::take_answer(natsMsg &arrived, message letter) {
    const char *subject = natsMsg_GetSubject(&arrived);
    const uint32_t token = token_of(subject);
    const std::scoped_lock lock{office_->lock};
    if (letter.bytes == nullptr) {
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
