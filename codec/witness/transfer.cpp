// Byte by byte: no field is moved in any other way.
#include "codec/witness/transfer.h"

#include <algorithm>
#include <array>

namespace ribkit::witness {

uint32_t load_word(order from, const uint8_t *at) {
    if (from == order::big) {
        return uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8 | uint32_t{at[3]};
    }
    return uint32_t{at[3]} << 24 | uint32_t{at[2]} << 16 | uint32_t{at[1]} << 8 | uint32_t{at[0]};
}

void store_word(order to, uint8_t *at, uint32_t value) {
    for (unsigned i = 0; i < 4; ++i) {
        at[to == order::big ? 3 - i : i] = static_cast<uint8_t>(value >> (8 * i));
    }
}

number::number(const transfer &message, size_t offset, bool second_byte)
    : message_(&message), offset_(offset), second_byte_(second_byte) {
    if (message.sending()) {
        sent_ = message.source_word(offset);
    }
}

uint32_t number::operator()() const {
    const uint32_t word = message_->sending() ? sent_ : message_->arrived_word(offset_);
    return second_byte_ ? word >> 16 & 0xff : word;
}

size_t transfer::touch(size_t offset, size_t length, size_t room) const {
    const size_t first = start_ + offset;
    if (first > room || length > room - first) {
        throw past_the_end{};
    }
    memory_->reach = std::max(memory_->reach, first + length);
    return first;
}

const uint8_t *transfer::read(size_t offset, size_t length) const {
    return memory_->src.data() + touch(offset, length, memory_->src.size());
}

uint8_t *transfer::written(size_t offset, size_t length) const {
    return memory_->dst.data() + touch(offset, length, memory_->dst.size());
}

void transfer::word(size_t offset) { put_word(offset, source_word(offset)); }

void transfer::half(size_t offset) {
    const uint8_t *source = read(offset, 2);
    const std::array<uint8_t, 2> held{source[0], source[1]};
    uint8_t *place = written(offset, 2);
    place[0] = held[from() == to() ? 0 : 1];
    place[1] = held[from() == to() ? 1 : 0];
}

void transfer::bytes(size_t offset, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        put_byte(offset + i, source_byte(offset + i));
    }
}

void transfer::zero(size_t offset, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        put_byte(offset + i, 0);
    }
}

void transfer::words(size_t offset, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        word(offset + 4 * i);
    }
}

} // namespace ribkit::witness
