// What a module answers to each message that it takes: one row an opcode.
#pragma once

#include "fib/service/module.h"
#include "protocol/fib/fib_checks.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::fib {

using bytes = std::vector<uint8_t>;

struct message_handler {
    uint32_t opcode;
    protocol::whole_check *check;
    /// Of a message that has passed its check. Throws std::bad_alloc.
    bytes (*answer)(module &of, std::span<const uint8_t> message);
};

std::span<const message_handler> message_handlers();
/// Null where there is none.
const message_handler *find_handler(uint32_t opcode);

/// The answer that says why there is no other.
bytes refusal(uint32_t result);

} // namespace ribkit::fib
