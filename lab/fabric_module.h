// A module of the local switch, as the fabric file says it is, and what becomes of it.
#pragma once

#include "fib/space.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ribkit::lab {

inline constexpr uint32_t usual_ports = 8;

struct fabric_module {
    uint32_t number; ///< from 1
    std::string name{};
    fib::fib_sizes sizes{};
    uint32_t ports = usual_ports;
    std::chrono::milliseconds slow{0}; ///< how long each answer takes
};

enum class module_turn : uint8_t {
    comes_up,  ///< as it was when it is upgrading, empty when it was gone
    goes_down, ///< it leaves the switch
    upgrades,  ///< it takes nothing until it comes up, and forgets nothing
    restarts,  ///< it is there at once, empty
};

/// The words of the fabric file, in the order of the turns.
inline constexpr std::array<std::string_view, 4> module_turn_names{"up", "down", "upgrading", "restarting"};
constexpr std::string_view module_turn_name(module_turn one) { return module_turn_names[static_cast<size_t>(one)]; }

/// For how many entries a module has room from now on; what is left out stays as it is.
struct module_room {
    std::optional<uint32_t> unicast{}, multicast{}, label{}, per_vsan{};

    [[nodiscard]] bool says_something() const { return unicast || multicast || label || per_vsan; }
    void give(fib::fib_sizes &sizes) const {
        sizes.unicast = unicast.value_or(sizes.unicast);
        sizes.multicast = multicast.value_or(sizes.multicast);
        sizes.label = label.value_or(sizes.label);
        sizes.per_vsan = per_vsan.value_or(sizes.per_vsan);
    }
};

} // namespace ribkit::lab
