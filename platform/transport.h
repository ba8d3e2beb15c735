// What a transport has to offer so that the message service can stand on it: an endpoint for every open handle. Results
// are 0 or an errno. Everything may be called from several threads at once.
#pragma once

#include "platform/faults/faults.h"
#include "platform/message.h"
#include "qip.h"
#include <chrono>
#include <memory>
#include <span>
#include <string_view>

namespace ribkit::platform {

struct selector {
    enum class kind : uint8_t { incoming, by_token, any_answer, anything };

    kind wanted = kind::incoming;
    uint32_t token = 0;
    bool may_wait = true;
    std::chrono::milliseconds limit{0}; ///< 0: none
};

class endpoint {
  public:
    endpoint() = default;
    endpoint(const endpoint &) = delete;
    endpoint &operator=(const endpoint &) = delete;
    virtual ~endpoint() = default;

    /// With names: what others send does not count where the transport tells senders apart by NAME.
    virtual int listen(const qip_addr &address, uint32_t bound, std::span<const char *const> names) = 0;

    /// A token is asked for by whoever will await the answer.
    virtual int send(const qip_addr &address, message letter, bool may_wait, uint32_t *token) = 0;

    virtual int receive(const selector &selected, message &letter) = 0;

    /// What disturbs its calls and what arrives here.
    [[nodiscard]] const std::shared_ptr<handle_faults> &faults() const { return faults_; }

    /// How often the connection was lost and is there again.
    [[nodiscard]] virtual uint32_t reconnections() const { return 0; }

    /// Ends every wait with ECANCELED and makes every later call fail with it.
    virtual void close() = 0;

  private:
    std::shared_ptr<handle_faults> faults_ = std::make_shared<handle_faults>();
};

using endpoint_ptr = std::shared_ptr<endpoint>;

/// Opens an endpoint by URL: the one table of transports; 0 or an errno. A server may take so long to answer, each
/// time.
int open_endpoint(std::string_view url, std::chrono::milliseconds server_limit, endpoint_ptr &opened);

/// A group's address: any number of endpoints may listen there.
constexpr bool is_group(const qip_addr &address) { return address.sap == 0; }

} // namespace ribkit::platform
