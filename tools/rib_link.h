// A client's way to the RIB: requests with their answers, plainly or in envelopes, and the news that the RIB has
// started.
#pragma once

#include "tools/pauses.h"
#include "tools/service_handle.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace ribkit {

/// No answer came, or what came was damaged on the way: nobody knows what the RIB did.
struct no_answer : std::runtime_error {
    explicit no_answer(const std::string &why) : std::runtime_error("no answer from the RIB: " + why) {}
};

/// The link was closed while somebody waited.
struct link_closed : std::runtime_error {
    link_closed() : std::runtime_error("stopped") {}
};

/// A result code as the displays name it; that of a failed call of the service as the system does.
std::string result_text(uint32_t result);

/// What went over the link, of the requests that were answered.
struct link_traffic {
    size_t messages = 0;
    size_t bytes_sent = 0, bytes_received = 0;
};

struct link_options {
    bool envelopes = false; ///< requests and answers travel in CMI envelopes
    std::chrono::milliseconds patience{0};
};

/// Whether a RIB answers anything at all, within a second. Prints nothing. Throws link_closed.
bool is_answered(const service_handle &handle);

/// Throws std::runtime_error where a RIB listens on this bus already, however busy: over a server two could listen at
/// one address, and each would be asked. Opens the bus as service_handle does.
void refuse_second_rib(const std::string &url, std::chrono::milliseconds patience);

class rib_link {
  public:
    /// Opens the bus as service_handle does, and listens for notifications.
    rib_link(const std::string &url, uint32_t uuid, const link_options &options = {});

    /// @return the answer's payload. Throws no_answer, or link_closed.
    std::vector<uint8_t> ask(uint32_t opcode, std::span<uint8_t> request);

    /// Whether the RIB has started since the last call, or may have done so unheard, because the server was lost and
    /// both are there again. Waits for that so long; 0 does not wait. Throws link_closed.
    bool heard_of_start(std::chrono::milliseconds limit = {});

    /// Whether the RIB answers now. Throws link_closed.
    [[nodiscard]] bool is_answered() const { return ribkit::is_answered(handle_); }

    /// Pauses until the RIB answers, for as long as patience lasts. @return whether it does. Throws link_closed.
    bool await(pauses &trying);

    /// Since the last call.
    link_traffic take_traffic() { return std::exchange(traffic_, {}); }

    /// From any thread.
    void close() { handle_.close(); }

  private:
    void listen(std::chrono::milliseconds limit);
    void take_notes(std::chrono::milliseconds limit);
    void look_around();

    service_handle handle_;
    uint32_t uuid_;
    bool envelopes_;
    bool started_ = false;       ///< heard of it, told nobody yet
    uint32_t reconnections_ = 0; ///< of the handle, before what is known was heard
    link_traffic traffic_;
};

} // namespace ribkit
