// A route of any length: its words stand in a block of their own, behind the numbers of the path units that it takes
// for its ways.
#pragma once

#include "rib/hardware/hardware.h"

#include <cstdint>
#include <span>

namespace ribkit::rib {

/// What a route of any length says.
struct word_route {
    uint32_t ways;                   ///< a path unit for each
    std::span<const uint32_t> ports; ///< the interfaces that it uses
    std::span<const uint32_t> first; ///< its words, in two parts
    std::span<const uint32_t> second{};
};

/// Where the words are kept. All zero it is a route without any.
struct word_path {
    uint32_t *block; ///< null where there are no words
    uint32_t units;  ///< path units that it takes
    uint32_t first;  ///< words of the first part
    uint32_t second; ///< ... and of the second

    [[nodiscard]] std::span<const uint32_t> first_part() const { return {block + blocks_of(units), first}; }
    [[nodiscard]] std::span<const uint32_t> second_part() const { return {block + blocks_of(units) + first, second}; }

    /// Obtains all that a new route needs, or nothing. @return 0, or the result code of what is full
    uint32_t store(hardware &behind, const word_route &what);
    /// Puts another route in place of this one, or leaves it. @return as store
    /// @param ports the interfaces that this one uses
    uint32_t replace(hardware &behind, std::span<const uint32_t> ports, const word_route &what);
    /// @return 0, or the first result code of what was not taken back
    uint32_t give_back(hardware &behind, std::span<const uint32_t> ports);
    /// Gives the words back, where all else ends.
    void forget();

  private:
    static constexpr uint32_t blocks_of(uint32_t units) { return (units + unit_block - 1) / unit_block; }
    static bool write(word_path &made, const word_route &what);
};

} // namespace ribkit::rib
