// Fault scripts: one line an event, which calls fail and what happens to which message.
//
//   seed NUMBER                    of the random choices; 1 without such a line
//   clock virtual                  waits and delays take no real time
//   fail CALL WHEN ERRNO           CALL: open, listen, send, recv or drop; ERRNO: a name (ETIMEDOUT) or a number
//   drop WHEN                      the message is lost
//   delay WHEN MILLISECONDS        it arrives so much later
//   duplicate WHEN                 it arrives twice
//   reorder WHEN                   it arrives after the next one to the same receiver
//   truncate WHEN BYTES            no more than its first bytes arrive
//
// WHEN is N (the n-th call or message, from 1), "every N", or "one-in N" (at random). Messages are counted as they
// arrive, requests, answers and notifications alike, over all handles that follow the script. A '#' starts a comment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <vector>

namespace ribkit::platform {

enum class service_call : uint8_t { open, listen, send, recv, drop };
inline constexpr size_t service_calls = 5;

/// What happens to one message.
struct disturbance {
    bool lost = false;
    bool twice = false;
    bool behind_the_next = false;
    uint32_t milliseconds_late = 0;
    uint32_t most_bytes = UINT32_MAX;
};

class fault_script {
  public:
    /// Takes the script's text; "" or "LINE: what is wrong".
    std::string parse(const std::string &text);

    /// The line that asks for the virtual clock; 0 without one.
    [[nodiscard]] uint32_t virtual_clock_line() const { return virtual_clock_line_; }

    /// Counts a call; the errno that it fails with, or 0.
    int failure_of(service_call call);

    /// Counts a message.
    disturbance next_message();

  private:
    enum class happening : uint8_t { fail, drop, delay, duplicate, reorder, truncate };
    enum class rhythm : uint8_t { once, every, one_in };

    struct rule {
        happening what;
        service_call call;
        rhythm when;
        uint32_t n;
        uint32_t value;
    };
    using words = std::vector<std::string>;

    std::string parse_line(const words &line);
    std::string parse_rule(const words &line);
    bool happens(const rule &one, uint64_t count);

    std::mutex lock_;
    std::vector<rule> rules_;
    std::mt19937 random_{1};
    uint32_t line_ = 0; // being parsed
    uint32_t virtual_clock_line_ = 0;
    uint64_t messages_ = 0;
    uint64_t calls_[service_calls] = {};
};

} // namespace ribkit::platform
