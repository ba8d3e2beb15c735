// Records as they travel: big-endian fields read by offset, whatever the alignment and the host's byte order.
#pragma once

#include "codec/bytes.h"

namespace ribkit::diag {

class fields {
  public:
    explicit fields(const void *record) : bytes_(static_cast<const uint8_t *>(record)) {}

    [[nodiscard]] uint32_t word(size_t offset) const { return codec::be32(bytes_ + offset); }
    [[nodiscard]] uint32_t half(size_t offset) const { return codec::be16(bytes_ + offset); }
    [[nodiscard]] uint32_t byte(size_t offset) const { return bytes_[offset]; }
    [[nodiscard]] const uint8_t *at(size_t offset) const { return bytes_ + offset; }

  private:
    const uint8_t *bytes_;
};

} // namespace ribkit::diag
