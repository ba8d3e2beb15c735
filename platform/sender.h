// Who sent a message, as far as the transport vouches for it: what the sender says of itself is in the payload.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace ribkit::platform {

struct sender {
    uint32_t number;  ///< never 0, and nobody else's in this process
    std::string name; ///< empty where the transport knows none
};

using sender_ptr = std::shared_ptr<const sender>;

inline sender_ptr new_sender(std::string name) {
    static std::atomic<uint32_t> last{0};
    uint32_t number = ++last;
    while (number == 0) {
        number = ++last;
    }
    return std::make_shared<const sender>(sender{number, std::move(name)});
}

} // namespace ribkit::platform
