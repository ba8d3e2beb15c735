// A byte buffer that ends (or starts) exactly at an inaccessible page: one byte too many is a fault, not luck.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace ribkit::testing {

class guarded {
  public:
    enum class edge : uint8_t { after, before };

    /// `size` accessible bytes, filled with 0xa5; the inaccessible page follows them (or precedes them).
    explicit guarded(size_t size, edge where = edge::after);
    guarded(std::span<const uint8_t> content, edge where = edge::after);
    guarded(const guarded &) = delete;
    guarded &operator=(const guarded &) = delete;
    ~guarded();

    [[nodiscard]] uint8_t *data() const { return bytes_.data(); }
    [[nodiscard]] size_t size() const { return bytes_.size(); }
    [[nodiscard]] std::span<uint8_t> bytes() const { return bytes_; }

  private:
    uint8_t *map_;
    size_t mapped_;
    std::span<uint8_t> bytes_;
};

} // namespace ribkit::testing
