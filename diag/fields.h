// Records as they travel: big-endian fields read by offset, whatever the alignment and the host's byte order.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ribkit {

inline uint32_t be32(const uint8_t *at) {
    uint32_t word;
    std::memcpy(&word, at, sizeof word);
    return std::endian::native == std::endian::big ? word : __builtin_bswap32(word);
}

inline uint16_t be16(const uint8_t *at) { return static_cast<uint16_t>(at[0] << 8 | at[1]); }

class fields {
  public:
    explicit fields(const void *record) : bytes_(static_cast<const uint8_t *>(record)) {}

    [[nodiscard]] uint32_t word(size_t offset) const { return be32(bytes_ + offset); }
    [[nodiscard]] uint32_t half(size_t offset) const { return be16(bytes_ + offset); }
    [[nodiscard]] uint32_t byte(size_t offset) const { return bytes_[offset]; }
    [[nodiscard]] const uint8_t *at(size_t offset) const { return bytes_ + offset; }

  private:
    const uint8_t *bytes_;
};

} // namespace ribkit
