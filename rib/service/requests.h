// What the RIB answers from what it knows: a row a request.
#pragma once

#include "rib/service/system_queries.h"
#include "rib_check.h"

#include <cstdint>
#include <span>
#include <string>

namespace ribkit::rib {

struct request_handler {
    uint32_t opcode;
    /// As the functions of rib_check.h.
    uint32_t (*check)(const void *message, uint32_t size, rib_check_report *report);
    /// The client that the sender of a message that passed its check says it is.
    uint32_t (*client)(const uint8_t *message);
    /// Throws std::bad_alloc.
    reply (*answer)(instance &rib, const uint8_t *message, const arrival &came);
};

/// Why a message did not pass its check.
std::string text_of(const rib_check_report &why);

std::span<const request_handler> request_handlers();

/// Null where there is none.
const request_handler *find_handler(uint32_t opcode);

} // namespace ribkit::rib
