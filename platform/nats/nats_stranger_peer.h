// Whoever else is on a server, for the tests over one.
#pragma once

#include <gtest/gtest.h>
#include <nats/nats.h>
#include <string>

namespace ribkit::platform {

/// A client of the server that knows nothing of our messages.
class stranger {
  public:
    explicit stranger(const std::string &url) {
        EXPECT_EQ(natsConnection_ConnectTo(&connection_, url.c_str()), NATS_OK);
    }
    stranger(const stranger &) = delete;
    stranger &operator=(const stranger &) = delete;
    ~stranger() {
        natsSubscription_Destroy(subscription_);
        natsConnection_Destroy(connection_);
    }

    void say(const char *subject, const char *text) {
        EXPECT_EQ(natsConnection_PublishString(connection_, subject, text), NATS_OK);
    }

    void answer(const char *subject) {
        EXPECT_EQ(natsConnection_Subscribe(&subscription_, connection_, subject, answer_shortly, nullptr), NATS_OK);
        EXPECT_EQ(natsConnection_Flush(connection_), NATS_OK);
    }

    void listen(const char *subject) {
        EXPECT_EQ(natsConnection_SubscribeSync(&subscription_, connection_, subject), NATS_OK);
        EXPECT_EQ(natsConnection_Flush(connection_), NATS_OK);
    }

    void ask(const char *subject, const char *inbox, const char *text) {
        EXPECT_EQ(natsConnection_PublishRequestString(connection_, subject, inbox, text), NATS_OK);
    }

    /// The next message; waits for it.
    std::string heard() {
        natsMsg *arrived = nullptr;
        EXPECT_EQ(natsSubscription_NextMsg(&arrived, subscription_, 60000), NATS_OK);
        std::string text{natsMsg_GetData(arrived), static_cast<size_t>(natsMsg_GetDataLength(arrived))};
        natsMsg_Destroy(arrived);
        return text;
    }

  private:
    static void answer_shortly(natsConnection *connection, natsSubscription * /*subscription*/, natsMsg *asked,
                               void * /*closure*/) {
        natsConnection_PublishString(connection, natsMsg_GetReply(asked), "short");
        natsMsg_Destroy(asked);
    }

    natsConnection *connection_ = nullptr;
    natsSubscription *subscription_ = nullptr;
};

} // namespace ribkit::platform
