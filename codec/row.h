// The rows that layouts are written in: where a field of a message stands, how it is converted, what it is called and
// what it means.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace ribkit::codec {

enum class row_kind : uint8_t {
    words,  // 32-bit words, converted
    half,   // one 16-bit number, converted
    bytes,  // carried unchanged
    masked, // one byte of which only the bits of `mask` are carried
    zero,   // written as zero whatever the source holds
    gap,    // carried by nobody: the destination keeps what it held
    name,   // a string, cut to `mask` characters and zero-filled to its area
    list,   // `count` entries of `entry`
    records // as an open list, but its entries are converted one by one by whoever walks the message
};

/// What a word or a run of bytes means to a reader; plain where the messages give it no meaning.
enum class meaning : uint8_t {
    plain,
    client,
    operation,
    action,
    flags,
    vsan,
    fc_id,
    fc_mask,
    interface,
    label,
    control,
    domain,
    cost,
    count,
    time,
    domains,
    ports,
    text,
};

enum class count_in : uint8_t { none, word, second_byte, constant };

/// Where a list's count stands: in a word, in the second byte (bits 23 to 16) of a word, or nowhere: a constant.
struct count_of {
    count_in where = count_in::none;
    uint16_t at = 0; // the word's offset; the count itself for a constant
};

namespace in {
constexpr count_of word(uint16_t offset) { return {count_in::word, offset}; }
constexpr count_of second_byte(uint16_t offset) { return {count_in::second_byte, offset}; }
constexpr count_of constant(uint16_t count) { return {count_in::constant, count}; }
} // namespace in

struct layout;

/// Some bits of a word or byte that have a name of their own.
struct row_part {
    const char *name = "";
    uint8_t shift = 0; // of its lowest bit
    uint8_t bits = 0;
    const char *vocabulary = ""; // as in a row
};

constexpr row_part part(const char *name, uint8_t shift, uint8_t bits, const char *vocabulary = "") {
    return {name, shift, bits, vocabulary};
}

/// A line of a layout's table. A name is what accessors, traces and displays call the field; what none of them names is
/// called by its kind and offset ("word_16"). Only compilers, tools and tests hold rows: see merged.
struct row {
    row_kind kind{};
    meaning means{};
    uint8_t mask = 0;
    count_of count{};
    uint16_t offset = 0;
    uint16_t size = 0;   // bytes of the message that the row occupies; 0 for an open list, which comes last
    uint16_t stride = 0; // bytes from entry to entry; 0 where each entry says its own size
    uint16_t bound = 0;  // entries of a bounded list, whose unused ones are zero-filled; 0 for an open list
    const char *name = "";
    const layout *entry = nullptr;
    bool continues = false;      // in one run with the row before: see also
    uint8_t shown_more = 0;      // what a reader is shown is the number and this
    const char *until = "";      // of merged rows, the last one's name
    const char *vocabulary = ""; // the function that makes a text of the number, without "_to_str"
    const char *unit = "";
    std::span<const row_part> parts{};

    [[nodiscard]] constexpr uint32_t end() const { return uint32_t{offset} + size; }

    /// Its number has texts.
    [[nodiscard]] constexpr row says(const char *texts) const {
        row with = *this;
        with.vocabulary = texts;
        return with;
    }
    /// Its bits have names; the row refers to them.
    [[nodiscard]] constexpr row split(std::span<const row_part> names) const {
        row with = *this;
        with.parts = names;
        return with;
    }
    [[nodiscard]] constexpr row in(const char *measure) const {
        row with = *this;
        with.unit = measure;
        return with;
    }
    /// Modules and the like are numbered from 0 and shown from 1.
    [[nodiscard]] constexpr row shown_plus_one() const {
        row with = *this;
        with.shown_more = 1;
        return with;
    }
    /// The run of this row and the next.
    [[nodiscard]] constexpr row followed_by(const row &next) const {
        row run = *this;
        run.size = static_cast<uint16_t>(size + next.size);
        run.until = next.name;
        return run;
    }
};

constexpr uint16_t times(uint16_t a, uint16_t b) { return static_cast<uint16_t>(a * b); }

// The rows, as a layout's table writes them.
constexpr row word(uint16_t offset, const char *name, meaning means = meaning::plain) {
    return {.kind = row_kind::words, .means = means, .offset = offset, .size = 4, .name = name};
}
constexpr row half(uint16_t offset, const char *name) {
    return {.kind = row_kind::half, .offset = offset, .size = 2, .name = name};
}
constexpr row bytes(uint16_t offset, uint16_t size, const char *name, meaning means = meaning::plain) {
    return {.kind = row_kind::bytes, .means = means, .offset = offset, .size = size, .name = name};
}
constexpr row masked(uint16_t offset, uint8_t mask, const char *name) {
    return {.kind = row_kind::masked, .mask = mask, .offset = offset, .size = 1, .name = name};
}
constexpr row zero(uint16_t offset, uint16_t size) {
    return {.kind = row_kind::zero, .offset = offset, .size = size, .name = "zero"};
}
constexpr row gap(uint16_t offset, uint16_t size, const char *name = "gap", meaning means = meaning::plain) {
    return {.kind = row_kind::gap, .means = means, .offset = offset, .size = size, .name = name};
}
constexpr row name(uint16_t offset, uint16_t size, uint8_t longest, const char *called) {
    return {.kind = row_kind::name, .mask = longest, .offset = offset, .size = size, .name = called};
}

/// In one run with the row before it: converted, and where bytes are missing reported, as one.
consteval row also(row next) {
    next.continues = true;
    return next;
}

/// An open list: as many entries as its count says, to the end of the message.
constexpr row list(uint16_t offset, const char *name, count_of count, const layout &entry, uint16_t stride) {
    return {.kind = row_kind::list, .count = count, .offset = offset, .stride = stride, .name = name, .entry = &entry};
}
/// A bounded list: room for `bound` entries, zero-filled from the count to the bound.
constexpr row list(uint16_t offset, const char *name, count_of count, const layout &entry, uint16_t stride,
                   uint16_t bound) {
    row bounded = list(offset, name, count, entry, stride);
    bounded.size = times(stride, bound);
    bounded.bound = bound;
    return bounded;
}
/// A list whose number of entries never varies.
constexpr row list(uint16_t offset, const char *name, uint16_t n, const layout &entry, uint16_t stride) {
    return list(offset, name, in::constant(n), entry, stride, n);
}
/// The records that follow an update's header: sized and checked with it, each converted by its own converter.
constexpr row records(uint16_t offset, const char *name, count_of count, const layout &entry) {
    row following = list(offset, name, count, entry, 0);
    following.kind = row_kind::records;
    return following;
}

constexpr bool is_list(const row &r) { return r.kind == row_kind::list || r.kind == row_kind::records; }
constexpr bool is_open(const row &r) { return is_list(r) && r.bound == 0; }

} // namespace ribkit::codec
