// A module of the local switch, as the fabric file says it is.
#pragma once

#include "fib/space.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace ribkit::lab {

inline constexpr uint32_t usual_ports = 8;

struct fabric_module {
    uint32_t number; ///< from 1
    std::string name{};
    fib::fib_sizes sizes{};
    uint32_t ports = usual_ports;
    std::chrono::milliseconds slow{0}; ///< how long each answer takes
};

} // namespace ribkit::lab
