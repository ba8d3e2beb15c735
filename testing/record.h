// Records in network form, put together field by field, most significant byte first on every host.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace ribkit::testing {

class record {
  public:
    record() = default;
    record(std::initializer_list<uint32_t> words) {
        for (const uint32_t value : words) {
            word(value);
        }
    }

    record &byte(uint32_t value) {
        bytes_.push_back(static_cast<uint8_t>(value));
        return *this;
    }
    record &half(uint32_t value) { return byte(value >> 8).byte(value); }
    record &word(uint32_t value) { return half(value >> 16).half(value); }
    record &words(std::initializer_list<uint32_t> values) {
        for (const uint32_t value : values) {
            word(value);
        }
        return *this;
    }
    /// `room` bytes: the string, and zeros behind it.
    record &name(std::string_view value, size_t room) {
        bytes_.insert(bytes_.end(), value.begin(), value.end());
        bytes_.resize(bytes_.size() + room - value.size());
        return *this;
    }
    /// Zeros up to `size` bytes in all.
    record &fill_to(size_t size) {
        bytes_.resize(size);
        return *this;
    }
    record &add(const record &other) {
        bytes_.insert(bytes_.end(), other.bytes_.begin(), other.bytes_.end());
        return *this;
    }

    [[nodiscard]] const uint8_t *data() const { return bytes_.data(); }
    [[nodiscard]] size_t size() const { return bytes_.size(); }

  private:
    std::vector<uint8_t> bytes_;
};

} // namespace ribkit::testing
