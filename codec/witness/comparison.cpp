// A destination is compared whole, with what surrounds it, so that a byte too many shows as well as a wrong one.
#include "codec/witness/comparison.h"

#include "codec/witness/random_messages.h"
#include "testing/guarded.h"

#include <algorithm>
#include <iomanip>

namespace ribkit::witness {

namespace {

using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;
using byte_vector = std::vector<uint8_t>;

constexpr size_t margin = 64;

std::string title(const subject &what) {
    return std::string(what.model->name) + (what.way == direction::hton ? " hton" : " ntoh") +
           (what.host == order::little ? ", little-endian host" : ", big-endian host");
}

AssertionResult same_bytes(std::span<const uint8_t> found, std::span<const uint8_t> wanted, size_t start) {
    const auto [at, other] = std::mismatch(found.begin(), found.end(), wanted.begin());
    if (at == found.end()) {
        return AssertionSuccess();
    }
    return AssertionFailure() << "offset " << at - found.begin() - static_cast<ptrdiff_t>(start) << ": 0x" << std::hex
                              << unsigned{*at} << " instead of 0x" << unsigned{*other};
}

AssertionResult same_result(const subject &what, uint32_t found, uint32_t wanted) {
    if (!what.model->returns_value(what.way) || found == wanted) {
        return AssertionSuccess();
    }
    return AssertionFailure() << "returned " << found << " instead of " << wanted;
}

enum class verdict : uint8_t { same, different, out_of_room };

struct trial {
    const char *name;
    bool in_place;
    size_t src_offset, dst_offset;
    uint8_t pattern;
};

/// A message with a margin before and behind it, moved to an offset.
byte_vector framed(std::span<const uint8_t> message, size_t offset, uint8_t pattern) {
    byte_vector area(margin + offset + message.size() + margin, pattern);
    std::copy(message.begin(), message.end(), area.begin() + static_cast<ptrdiff_t>(margin + offset));
    return area;
}

struct areas {
    byte_vector src, dst;
    size_t src_start, dst_start;

    areas(std::span<const uint8_t> message, const trial &how)
        : src(framed(message, how.src_offset, 0x3c)), src_start(margin + how.src_offset),
          dst_start(margin + (how.in_place ? how.src_offset : how.dst_offset)) {
        dst = how.in_place ? src : byte_vector(margin + how.dst_offset + message.size() + margin);
        for (size_t i = 0; i < dst.size() && !how.in_place; ++i) {
            dst[i] = static_cast<uint8_t>(how.pattern + 37 * i); // no word reads the same both ways
        }
    }
};

verdict attempt(const subject &what, std::span<const uint8_t> message, const trial &how, AssertionResult &said) {
    areas model(message, how);
    areas found(message, how);
    const byte_vector src_before = found.src;
    const std::span room(model.dst.data() + model.dst_start, message.size());
    const std::span from = how.in_place ? room : std::span(model.src.data() + model.src_start, message.size());
    outcome expected{};
    try {
        expected = convert(*what.model, what.way, what.host, from, room);
    } catch (const past_the_end &) {
        return verdict::out_of_room;
    }
    uint8_t *dst = found.dst.data() + found.dst_start;
    const uint32_t result = what.convert(how.in_place ? dst : found.src.data() + found.src_start, dst);
    said = same_bytes(found.dst, model.dst, found.dst_start);
    said = said ? same_result(what, result, expected.result) : said;
    said = said ? same_bytes(found.src, src_before, found.src_start) : said;
    return said ? verdict::same : verdict::different;
}

/// A message in the form that the direction reads.
byte_vector message_for(const subject &what, std::mt19937 &random) {
    return random_message(what.model->name, what.way == direction::hton ? what.host : order::big, random);
}

std::vector<trial> trials(const subject &what, std::mt19937 &random) {
    const auto any = [&random](size_t limit) { return random() % limit; };
    std::vector<trial> all{{"into a second buffer", false, 0, 0, 0xa5}, {"in place", true, 0, 0, 0}};
    if (!what.aligned) {
        all.push_back(
            {"into a second buffer at odd addresses", false, 1 + any(31), 1 + any(31), static_cast<uint8_t>(any(256))});
        all.push_back({"in place at an odd address", true, 1 + 2 * any(16), 0, 0});
    }
    return all;
}

} // namespace

AssertionResult agrees_at_random(const subject &what, unsigned rounds, uint32_t seed) {
    std::mt19937 random(seed);
    unsigned tried = 0;
    unsigned out_of_room = 0;
    for (unsigned round = 0; round < rounds; ++round) {
        const byte_vector message = message_for(what, random);
        for (const trial &how : trials(what, random)) {
            AssertionResult said = AssertionSuccess();
            const verdict found = attempt(what, message, how, said);
            ++tried;
            out_of_room += found == verdict::out_of_room ? 1 : 0;
            if (found == verdict::different || (found == verdict::out_of_room && !how.in_place)) {
                return AssertionFailure() << title(what) << ' ' << how.name << ", round " << round << ": "
                                          << (found == verdict::different ? said.message() : "no room for the model");
            }
        }
    }
    if (4 * out_of_room > tried) {
        return AssertionFailure() << title(what) << ": " << out_of_room << " of " << tried << " had no room";
    }
    return AssertionSuccess();
}

AssertionResult agrees_at_the_edge(const subject &what, unsigned rounds, uint32_t seed) {
    using ::ribkit::testing::guarded;
    std::mt19937 random(seed);
    for (unsigned round = 0; round < rounds; ++round) {
        const byte_vector message = message_for(what, random);
        byte_vector model(message.size(), 0xa5);
        const outcome expected = convert(*what.model, what.way, what.host, message, model);
        const std::span source(message.data(), what.aligned ? (expected.reach + 3) / 4 * 4 : expected.reach);
        for (const auto edge : {guarded::edge::after, guarded::edge::before}) {
            const guarded src(source, edge);
            const guarded dst(source.size(), edge);
            AssertionResult said = same_result(what, what.convert(src.data(), dst.data()), expected.result);
            said = said ? same_bytes(dst.bytes(), model, 0) : said;
            if (!said) {
                return AssertionFailure() << title(what) << " at the edge, round " << round << ": " << said.message();
            }
        }
    }
    return AssertionSuccess();
}

namespace {

AssertionResult golden_run(const subject &what, const golden &vector, bool in_place) {
    const byte_vector message = vector.source(what.way, what.host);
    areas found(message, {"", in_place, what.aligned ? size_t{0} : size_t{1}, 0, 0xa5});
    byte_vector wanted = found.dst;
    const std::span room(wanted.data() + found.dst_start, message.size());
    vector.expect(what.way, what.host, room);
    uint8_t *dst = found.dst.data() + found.dst_start;
    const uint32_t result = what.convert(in_place ? dst : found.src.data() + found.src_start, dst);
    AssertionResult said = same_bytes(found.dst, wanted, found.dst_start);
    if (said && vector.returns) {
        said = same_result(what, result, *vector.returns);
    }
    return said ? said
                : AssertionFailure() << title(what) << (in_place ? " in place" : "") << ", " << vector.title << ": "
                                     << said.message();
}

} // namespace

AssertionResult agrees_with_golden(const subject &what, const golden &vector) {
    AssertionResult said = AssertionSuccess();
    if (vector.goes(what.way) && vector.apart) {
        said = golden_run(what, vector, false);
    }
    return said && vector.goes(what.way) && vector.in_place ? golden_run(what, vector, true) : said;
}

} // namespace ribkit::witness
