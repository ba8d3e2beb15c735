// The 24-bit address space of a fabric: the domains' addresses, a gap, the domain controllers, the well-known
// addresses, and the broadcast address at the end.
#pragma once

#include "rib_codes.h"

namespace ribkit::codec {

inline constexpr uint32_t first_domain_address = 0x010000;
inline constexpr uint32_t last_domain_address = 0xefffff;
inline constexpr uint32_t first_controller_address = 0xfffb00;
inline constexpr uint32_t last_controller_address = 0xfffbff;
inline constexpr uint32_t broadcast_address = 0xffffff; // the last there is

} // namespace ribkit::codec
