// A set of 256 numbers as a bitmap, each of which stays in as long as somebody needs it.
#pragma once

#include "rib_mem.h"

#include <array>
#include <cstdint>

namespace ribkit::rib {

class counted_map {
  public:
    // No byte is beyond the last one: the bitmap accepts each.
    void add(uint8_t member) {
        if (uses_[member]++ == 0) {
            bmap_set(bits_.data(), last_byte, member);
        }
    }
    void remove(uint8_t member) {
        if (--uses_[member] == 0) {
            bmap_clr(bits_.data(), last_byte, member);
        }
    }

    [[nodiscard]] bool has(uint8_t member) const { return bmap_is_set(bits_.data(), last_byte, member) != 0; }
    [[nodiscard]] uint32_t count() const { return bmap_count(bits_.data(), length); }
    void show(const char *label) const { bmap_show(bits_.data(), length, label); }

  private:
    static constexpr uint32_t length = 32;
    static constexpr uint32_t last_byte = length - 1;

    std::array<uint8_t, length> bits_{};
    std::array<uint32_t, 256> uses_{};
};

} // namespace ribkit::rib
