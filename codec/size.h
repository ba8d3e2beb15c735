// The counts of a message, and the size that they say it has, in network form or in host order. They are trusted.
#pragma once

#include "codec/bytes.h"
#include "codec/layout.h"

namespace ribkit::codec {

/// What a list's count says; the count itself for a constant.
template <std::endian Order> [[gnu::always_inline]] inline uint32_t read_count(count_of count, const uint8_t *message) {
    switch (count.where) {
    case count_in::word:
        return load32<Order>(message + count.at);
    case count_in::second_byte:
        return message[count.at + (Order == std::endian::big ? 1 : 2)];
    default:
        return count.at;
    }
}

/// The size of one message of a layout that ends in an open list, or in none.
template <const layout &L, std::endian Order = std::endian::big>
[[gnu::always_inline]] inline size_t wire_size(const uint8_t *message);

/// The bytes of `count` entries one behind the other.
template <const layout &Entry, std::endian Order>
[[gnu::always_inline]] inline size_t wire_size_of_run(const uint8_t *first, size_t count) {
    constexpr const row &last = Entry.last();
    if constexpr (!is_open(last)) {
        return count * Entry.size;
    } else if constexpr (last.stride == 0) {
        size_t at = 0;
        for (; count != 0; --count) {
            at += wire_size<Entry, Order>(first + at);
        }
        return at;
    } else {
        // Entries of one size follow one another: as long as the guess holds, no step waits for the load of a count.
        size_t at = 0;
        while (count != 0) {
            const uint32_t entries = read_count<Order>(last.count, first + at);
            const size_t size = Entry.size + size_t{last.stride} * entries;
            do {
                at += size;
                if (--count == 0) [[unlikely]] {
                    return at;
                }
            } while (read_count<Order>(last.count, first + at) == entries);
        }
        return at;
    }
}

template <const layout &L, std::endian Order> [[gnu::always_inline]] inline size_t wire_size(const uint8_t *message) {
    constexpr const row &last = L.last();
    if constexpr (!is_open(last)) {
        return L.size;
    } else {
        const uint32_t count = read_count<Order>(last.count, message);
        if constexpr (last.stride == 0) {
            return L.size + wire_size_of_run<*last.entry, Order>(message + L.size, count);
        } else {
            return L.size + size_t{last.stride} * count;
        }
    }
}

} // namespace ribkit::codec
