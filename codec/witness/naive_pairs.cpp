// Pairs by name, and the way to call one.
#include "codec/witness/naive_pairs.h"

#include <algorithm>

namespace ribkit::witness {

std::span<const pair> pairs() { return all_pairs; }

const pair *find_pair(std::string_view name) {
    const auto *found = std::find_if(std::begin(all_pairs), std::end(all_pairs),
                                     [name](const pair &candidate) { return candidate.name == name; });
    return found == std::end(all_pairs) ? nullptr : found;
}

outcome convert(const pair &what, direction way, order host, std::span<const uint8_t> src, std::span<uint8_t> dst) {
    buffers memory{src, dst};
    const uint32_t result = what.convert(transfer(way, host, memory));
    return {result, memory.reach};
}

} // namespace ribkit::witness
