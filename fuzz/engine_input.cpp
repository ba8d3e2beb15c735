// One input of the engine target: every byte of the exported converters' destination is compared with the naive ones',
// in both directions, from one buffer into another and in place. What the naive ones cannot convert within the input is
// not tried: the converters trust their counts.
#include "codec/message.h"
#include "codec/witness/naive.h"
#include "fuzz/inputs.h"

#include <bit>
#include <cstdlib>
#include <memory>

namespace {

using namespace ribkit;
using namespace ribkit::codec;
using byte_vector = std::vector<uint8_t>;

constexpr witness::order native =
    std::endian::native == std::endian::little ? witness::order::little : witness::order::big;

/// A copy whose end is the end of its memory.
struct exact {
    explicit exact(const byte_vector &content)
        : size(content.size()), bytes(std::make_unique_for_overwrite<uint8_t[]>(size)) {
        std::copy(content.begin(), content.end(), bytes.get());
    }
    size_t size;
    std::unique_ptr<uint8_t[]> bytes;
};

void compare(const message &m, witness::direction way, const byte_vector &source, bool in_place) {
    const witness::pair &model = *witness::find_pair(m.name);
    byte_vector expected = in_place ? source : byte_vector(source.size(), 0xa5);
    witness::outcome wanted{};
    try {
        wanted = witness::convert(model, way, native, in_place ? std::span<const uint8_t>(expected) : source, expected);
    } catch (const witness::past_the_end &) {
        return;
    }
    const exact from(source);
    const exact to(in_place ? source : byte_vector(source.size(), 0xa5));
    const message::converter convert = way == witness::direction::hton ? m.to_network : m.to_host;
    const uint32_t result = convert(in_place ? to.bytes.get() : from.bytes.get(), to.bytes.get());
    const bool same = std::equal(expected.begin(), expected.end(), to.bytes.get());
    if (!same || (model.returns_value(way) && result != wanted.result)) {
        std::abort();
    }
}

} // namespace

int engine_input(const uint8_t *data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const message &m = messages()[*data % messages().size()];
    const byte_vector source(data + 1, data + size);
    for (const bool in_place : {false, true}) {
        compare(m, witness::direction::hton, source, in_place);
        compare(m, witness::direction::ntoh, source, in_place);
    }
    return 0;
}
