// Network bytes to fields: one message after the other, each checked before it is shown.
#pragma once

#include "decode/json_writer.h"
#include "decode/kinds.h"
#include "decode/text_writer.h"

#include <optional>

namespace ribkit::decode {

/// A message may have so many bytes.
inline constexpr size_t largest_message = size_t{64} << 20;

/// The message that ended a run.
struct refusal {
    size_t number;   ///< of the message, from 1
    uint64_t offset; ///< where it begins among all bytes
    rib_check_report report;
};

class decoder {
  public:
    /// @param carried what an envelope carries, whatever its operation code says; null where that tells
    /// @param text, json where to; either may be null
    decoder(const kind &what, const kind *carried, text_writer *text, json_writer *json)
        : what_(what), carried_(carried), text_(text), json_(json) {}

    /// Shows the messages that `bytes` begin with. One that is refused is shown as far as it is understood, unless more
    /// bytes may come and help it. @return how many bytes have been shown
    size_t take(std::span<const uint8_t> bytes, bool more);

    /// The refused message, behind which nothing is shown.
    [[nodiscard]] const std::optional<refusal> &refused() const { return refused_; }

  private:
    uint32_t size_of(std::span<const uint8_t> bytes, rib_check_report &report, content &inside) const;
    void show(std::span<const uint8_t> bytes, const content &inside, const rib_check_report *report);

    const kind &what_;
    const kind *carried_;
    text_writer *text_;
    json_writer *json_;
    size_t number_ = 1;
    uint64_t offset_ = 0;
    std::optional<refusal> refused_;
};

/// A kind whose check accepts all of the bytes, as so many messages.
struct guess {
    const kind *what;
    size_t messages;
};

std::vector<guess> guesses(std::span<const uint8_t> bytes);

/// A message of that kind with nothing in it but one entry in each list.
std::vector<uint8_t> empty_message(const kind &what);

/// JSON to start from: that message, without what follows from the rest of it.
std::string template_of(const kind &what);

} // namespace ribkit::decode
