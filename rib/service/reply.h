// What a request is answered with.
#pragma once

#include "rib/request.h"
#include "rib_codes.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace ribkit::rib {

using bytes = std::vector<uint8_t>;

/// A message, or the result code of why there is none.
struct reply {
    uint32_t result = RIB_OK;
    bytes message{};
    std::optional<table_id> compares{}; ///< the answer comes when this table was compared with the modules

    static reply of(bytes message) { return {RIB_OK, std::move(message), {}}; }
    static reply refusal(uint32_t result) { return {result, {}, {}}; }
};

} // namespace ribkit::rib
