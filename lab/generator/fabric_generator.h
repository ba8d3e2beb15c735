// Fabrics of any size, written as fabric files: the same plan gives the same file everywhere.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace ribkit::lab {

enum class fabric_shape : uint8_t {
    core_edge, ///< pairs of core switches, every core linked to every other; each edge switch to both of one pair
    ring,      ///< every switch is linked to the next
    mesh,      ///< a ring, and twice as many links across it between switches drawn at random
};

struct fabric_plan {
    uint32_t switches = 239; ///< 2 to 239
    uint32_t vsans = 16;     ///< 1 to 4095
    fabric_shape shape = fabric_shape::core_edge;
    uint32_t seed = 1;   ///< draws domains, the local switch, who is linked to whom, what is declared, and what happens
    uint32_t events = 0; ///< times that something happens, every two seconds twice: links fail and come back, or else
                         ///< whatever there is comes, goes and changes
    uint32_t groups = 0; ///< multicast groups of two to four members, 256 at most
    uint32_t labels = 0; ///< tunnels
    uint32_t statics = 0; ///< routes to single ports
    uint32_t modules = 0; ///< of the local switch
};

/// The words of the command line, in the order of the shapes.
inline constexpr std::array<std::string_view, 3> shape_names{"core-edge", "ring", "mesh"};
std::string_view shape_name(fabric_shape shape);
fabric_shape shape_named(std::string_view name); ///< one of shape_names

/// The text of a fabric file.
std::string generate_fabric(const fabric_plan &plan);

} // namespace ribkit::lab
