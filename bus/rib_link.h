// A client's way to the RIB: requests with their answers, plainly or in envelopes, and the news that the RIB has
// started.
#pragma once

#include "bus/patience.h"
#include "bus/service_handle.h"
#include "rib_wrap.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace ribkit::bus {

/// An answer that says that nothing of a message could be used.
struct refused_message {
    uint32_t opcode = 0; ///< of the message
    uint32_t result = 0;

    bool operator==(const refused_message &) const = default;
    /// Whether it was one.
    explicit operator bool() const { return result != 0; }
};

/// No answer came, or what came or was sent was damaged on the way: nobody knows what the RIB did.
struct no_answer : std::runtime_error {
    explicit no_answer(const std::string &why) : std::runtime_error("no answer from the RIB: " + why) {}
    no_answer(refused_message by_the_rib, const std::string &text) : std::runtime_error(text), refused(by_the_rib) {}

    refused_message refused; ///< where there was one
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

/// A request whose answer is on its way.
struct sent_request {
    uint32_t opcode = 0;
    uint32_t token = 0;
    size_t size = 0; ///< bytes
    std::chrono::steady_clock::time_point at{};
};

struct link_options {
    bool envelopes = false;                     ///< requests and answers travel in CMI envelopes
    std::chrono::milliseconds patience{30'000}; ///< as rib_link::renew_patience
};

/// Whether a RIB answers anything at all, within a second. Prints nothing. Throws link_closed.
bool is_answered(const service_handle &handle);

/// Throws std::runtime_error where a RIB listens on this bus already, however busy: over a server two could listen at
/// one address, and each would be asked. Opens the bus as service_handle does.
void refuse_second_rib(const std::string &url, patience &waiting);

class rib_link {
  public:
    /// Opens the bus as service_handle does, and listens for notifications. Its patience begins here.
    rib_link(const std::string &url, uint32_t uuid, const link_options &options = {});

    /// All that is waited for from now on, together, may take as long as was allowed: server, RIB, answers, pauses.
    void renew_patience();

    /// Waits for the answer as long as patience lasts, and the wrappers wait.
    /// @return the answer's payload. Throws no_answer, or link_closed.
    std::vector<uint8_t> ask(uint32_t opcode, std::span<uint8_t> request);

    /// Sends without waiting, neither for the answer nor for room. @return none where the RIB's queue is full; throws
    /// no_answer, or link_closed.
    std::optional<sent_request> send(uint32_t opcode, std::span<uint8_t> request);

    /// The answer to what was sent, for which it waits as `ask` does, from when that was; whatever else is answered
    /// meanwhile is kept. Throws as `ask`, and then the answer is awaited no more.
    std::vector<uint8_t> take_answer(const sent_request &to);

    /// What the RIB said of a message of which it took nothing, or RIB_OK. Throws no_answer where it refuses what was
    /// sound when it was sent: that was damaged on the way, or this client may send nothing.
    void take_result(uint32_t opcode, uint32_t result);

    /// An answer that cannot be used leaves a line in the history and is gone. Throws no_answer.
    /// @param opcode of what was asked
    /// @param size of the answer, in bytes
    [[noreturn]] static void drop_answer(uint32_t opcode, size_t size, const std::string &why);

    /// Whether the RIB has started since the last call, or may have done so unheard, because the server was lost and
    /// both are there again. Waits for that so long; 0 does not wait. Throws link_closed.
    bool heard_of_start(std::chrono::milliseconds limit = {});

    /// Hands on every notification that is heard from now on, but that the RIB has started; while `heard_of_start` and
    /// pauses listen. None may be missing unless that tells so.
    void hear_notes(std::function<void(uint32_t opcode, std::span<const uint8_t> message)> take) {
        take_note_ = std::move(take);
    }

    /// Looks for a RIB, and waits for one as `await` does. Throws no_answer, or link_closed.
    void find();

    /// A pause before asking again, during which news are heard. @return false, at once, where no patience is left.
    /// Throws link_closed.
    bool pause();

    /// Pauses until the RIB answers, for as long as patience lasts, and says once on standard error that it waits.
    /// @return whether the RIB answers. Throws link_closed.
    bool await();

    /// Says why it asks again, and pauses as `await`. What is refused time after time was not damaged.
    /// @return false where that is so, or no patience is left. Throws link_closed.
    bool await_after(const no_answer &why);

    /// Since the last call.
    link_traffic take_traffic() { return std::exchange(traffic_, {}); }

    /// The bus, as it may be printed.
    [[nodiscard]] const std::string &shown_url() const { return shown_url_; }

    /// What is left of the patience.
    [[nodiscard]] std::chrono::seconds seconds_left() const { return waiting_.seconds_left(); }

    /// From any thread.
    void close() { handle_.close(); }

  private:
    void listen(std::chrono::milliseconds limit);
    void take_notes(std::chrono::milliseconds limit);
    void take_in(qip_ref &note);
    void look_around();

    uint32_t ask(rib_wrap_msg &asked, rib_wrap_msg &answer);
    uint32_t ask_within(std::chrono::milliseconds limit, rib_wrap_msg &asked, rib_wrap_msg &answer);
    uint32_t send_at_once(rib_wrap_msg &asked);
    uint32_t receive(std::chrono::milliseconds limit, uint32_t token, rib_wrap_msg &answer);
    uint32_t open_answer(rib_wrap_msg &answer) const;
    std::vector<uint8_t> taken(uint32_t result, rib_wrap_msg &answer, const sent_request &to);
    [[nodiscard]] std::chrono::milliseconds longest_wait() const;
    int failure_now();

    std::string shown_url_;
    patience waiting_;
    service_handle handle_;
    uint32_t uuid_;
    bool envelopes_;
    refused_message last_refusal_;
    unsigned refusals_in_turn_ = 0; ///< like the last one, with nothing of its kind taken in between
    std::function<void(uint32_t opcode, std::span<const uint8_t> message)> take_note_;
    bool told_ = false;          ///< that it waits, since patience was renewed
    bool started_ = false;       ///< heard of it, told nobody yet
    uint32_t reconnections_ = 0; ///< of the handle, before what is known was heard
    link_traffic traffic_;
};

} // namespace ribkit::bus
