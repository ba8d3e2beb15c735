// A message on its way: what a queue holds and what a reference stands for.
#pragma once

#include "platform/sender.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>

namespace ribkit::platform {

struct message;

/// The way back to whoever sent a request. The last owner's end tells the transport that no answer can come any more.
class return_path {
  public:
    return_path() = default;
    return_path(const return_path &) = delete;
    return_path &operator=(const return_path &) = delete;
    virtual ~return_path() = default;

    /// Takes the answer home, or throws it away where nobody awaits it any more; 0 or an errno.
    virtual int answer(message letter) = 0;
};

struct message {
    static constexpr size_t room_in_front = 16;

    uint32_t opcode = 0;
    uint32_t token = 0; ///< of the request that it is or answers; 0 where no answer is awaited
    uint32_t size = 0;
    int error = 0;                      ///< not 0: no answer but the news that none can come
    bool received = false;              ///< false: a record of something sent, without payload
    std::unique_ptr<uint8_t[]> bytes;   ///< the payload, behind room for what a transport puts in front of it
    std::shared_ptr<return_path> reply; ///< null where no answer is awaited
    sender_ptr from;                    ///< null for an answer

    /// Null where there are no bytes.
    [[nodiscard]] uint8_t *payload() const { return bytes == nullptr ? nullptr : bytes.get() + room_in_front; }
};

inline message new_message(uint32_t opcode, std::span<const uint8_t> payload) {
    if (payload.size() > SIZE_MAX - message::room_in_front) {
        throw std::bad_alloc{};
    }
    message letter;
    letter.opcode = opcode;
    letter.size = static_cast<uint32_t>(payload.size());
    letter.bytes = std::make_unique_for_overwrite<uint8_t[]>(message::room_in_front + payload.size());
    std::copy(payload.begin(), payload.end(), letter.payload());
    return letter;
}

inline message copy_of(const message &original) {
    message copy = new_message(original.opcode, {original.payload(), original.size});
    copy.token = original.token;
    copy.reply = original.reply;
    copy.from = original.from;
    return copy;
}

} // namespace ribkit::platform
