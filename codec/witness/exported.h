// The conversions of the management rows, which are no messages, as the tests call them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace ribkit::witness {

/// Named as in naive.h.
struct exported_pair {
    std::string_view name;
    uint32_t (*hton)(const void *src, void *dst);
    uint32_t (*ntoh)(const void *src, void *dst);
};

/// The conversions of the management rows: of other types, and one takes its arguments the other way round.
std::span<const exported_pair> exported_rows();

} // namespace ribkit::witness
