// The library's converters as the tests call them: by name, one type for all.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace ribkit::witness {

/// Named as in naive.h. A function that returns nothing returns 0 here.
struct exported_pair {
    std::string_view name;
    uint32_t (*hton)(const void *src, void *dst);
    uint32_t (*ntoh)(const void *src, void *dst);
};

std::span<const exported_pair> exported_pairs();

/// The conversions of the management rows: of other types, and one takes its arguments the other way round.
std::span<const exported_pair> exported_rows();

} // namespace ribkit::witness
