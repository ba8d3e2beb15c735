// The peer is natsConnection_Request and a responder that publishes its answer, both sending at once as ours do.
#include "platform/transport_bench.h"

#include "bench/harness.h"
#include "platform/service_peer.h"

#include <cstdio>
#include <cstdlib>
#include <nats/nats.h>
#include <vector>

using namespace ribkit::bench;

namespace ribkit::platform {

namespace {

void answer(natsConnection *connection, natsSubscription * /*subscription*/, natsMsg *request, void * /*closure*/) {
    natsConnection_Publish(connection, natsMsg_GetReply(request), natsMsg_GetData(request),
                           natsMsg_GetDataLength(request));
    natsMsg_Destroy(request);
}

class plain_client {
  public:
    explicit plain_client(const char *url) : client_(connected(url)), server_(connected(url)) {
        natsConnection_Subscribe(&serving_, server_, "bench.plain", answer, nullptr);
        natsConnection_Flush(server_);
    }
    plain_client(const plain_client &) = delete;
    plain_client &operator=(const plain_client &) = delete;
    ~plain_client() {
        natsSubscription_Destroy(serving_);
        natsConnection_Destroy(client_);
        natsConnection_Destroy(server_);
    }

    void round_trip(const std::vector<uint8_t> &payload) {
        natsMsg *reply = nullptr;
        natsConnection_Request(&reply, client_, "bench.plain", payload.data(), static_cast<int>(payload.size()), 2000);
        keep(reply);
        natsMsg_Destroy(reply);
    }

  private:
    static natsConnection *connected(const char *url) {
        natsOptions *options = nullptr;
        natsConnection *made = nullptr;
        natsOptions_Create(&options);
        natsOptions_SetURL(options, url);
        natsOptions_SetSendAsap(options, true);
        const natsStatus status = natsConnection_Connect(&made, options);
        natsOptions_Destroy(options);
        if (status != NATS_OK) {
            std::fprintf(stderr, "the peer's connection: %s\n", natsStatus_GetText(status));
            std::exit(1);
        }
        return made;
    }

    natsConnection *client_;
    natsConnection *server_;
    natsSubscription *serving_ = nullptr;
};

} // namespace

void nats_rows(const char *url) {
    heading("over a NATS server; peer: its client library's request", "trip");
    if (url == nullptr) {
        missing_row("request and answer", "platform_bench nats://HOST:PORT measures this");
        return;
    }
    for (const size_t size : {64, 1024, 16384}) {
        const std::vector<uint8_t> payload(size, 0x5a);
        const by_service ours{url};
        plain_client peer{url};
        print_trips("request and answer of " + std::to_string(size) + " bytes",
                    compare_trips([&] { ours.round_trip(payload); }, [&] { peer.round_trip(payload); }), 1.15);
    }
}

} // namespace ribkit::platform
