// The interface-index service as the tests see it: an index of type T prints as "if<hex>"; what it answers can be set.
#pragma once

#include <cstdint>
#include <string>

namespace ribkit::testing {

struct fake_interfaces {
    uint8_t type = 1;        ///< stored by if_index_get_type for every index
    int result = 0;          ///< returned by if_index_get_type
    std::string suffix = {}; ///< appended to every name; "\n" plays a platform that ends its names with a newline
    uint32_t asked = 0;      ///< the index whose type was asked for last
};

/// The one service of this process; assign `{}` to reset it.
fake_interfaces &interfaces();

} // namespace ribkit::testing
