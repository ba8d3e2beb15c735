// A register's worth of bytes: 8, 16 or 32 of them loaded, shuffled within each 16, combined and stored. Each
// instruction set that is made of them specialises the lanes (isa_avx2.h, isa_neon.h).
#pragma once

#include <cstddef>
#include <cstdint>

namespace ribkit::codec {

template <size_t Width> struct lane;

/// The widest lane that fits `size` bytes.
constexpr size_t lane_width(size_t size) { return size >= 32 ? 32 : size >= 16 ? 16 : 8; }

} // namespace ribkit::codec
