// Fields are appended byte by byte, so that no host's byte order comes in.
#include "testing/record.h"

namespace ribkit::testing {

record::record(std::initializer_list<uint32_t> words) { this->words(words); }

record &record::byte(uint32_t value) {
    bytes_.push_back(static_cast<uint8_t>(value));
    return *this;
}

record &record::half(uint32_t value) { return byte(value >> 8).byte(value); }

record &record::word(uint32_t value) { return half(value >> 16).half(value); }

record &record::words(std::initializer_list<uint32_t> values) {
    for (const uint32_t value : values) {
        word(value);
    }
    return *this;
}

record &record::name(std::string_view value, size_t room) {
    bytes_.insert(bytes_.end(), value.begin(), value.end());
    bytes_.resize(bytes_.size() + room - value.size());
    return *this;
}

record &record::fill_to(size_t size) {
    bytes_.resize(size);
    return *this;
}

record &record::add(const record &other) {
    bytes_.insert(bytes_.end(), other.bytes_.begin(), other.bytes_.end());
    return *this;
}

} // namespace ribkit::testing
