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
    record(std::initializer_list<uint32_t> words);

    record &byte(uint32_t value);
    record &half(uint32_t value);
    record &word(uint32_t value);
    record &words(std::initializer_list<uint32_t> values);
    /// `room` bytes: the string, and zeros behind it.
    record &name(std::string_view value, size_t room);
    /// Zeros up to `size` bytes in all.
    record &fill_to(size_t size);
    record &add(const record &other);

    [[nodiscard]] const uint8_t *data() const { return bytes_.data(); }
    [[nodiscard]] size_t size() const { return bytes_.size(); }

  private:
    std::vector<uint8_t> bytes_;
};

} // namespace ribkit::testing
