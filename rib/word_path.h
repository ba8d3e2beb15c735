// A route of any length: its words stand in a block of their own, behind the numbers of the path units that it takes
// for its ways.
#pragma once

#include "rib/path_space.h"

#include <cstdint>
#include <span>

namespace ribkit::rib {

/// All zero it is a route without words.
struct word_path {
    uint32_t *block; ///< null where there are no words
    uint32_t units;  ///< path units that it takes
    uint32_t first;  ///< words of the first part
    uint32_t second; ///< ... and of the second

    [[nodiscard]] std::span<const uint32_t> first_part() const { return {block + blocks_of(units), first}; }
    [[nodiscard]] std::span<const uint32_t> second_part() const { return {block + blocks_of(units) + first, second}; }

    /// How many blocks so many units are.
    static constexpr uint32_t blocks_of(uint32_t units) { return (units + unit_block - 1) / unit_block; }

    /// Obtains units and a block for two parts, whole or not at all.
    /// @return 0, or the result code of what is full
    uint32_t store(path_space &paths, uint32_t ways, std::span<const uint32_t> a, std::span<const uint32_t> b);
    /// @return 0, or the first result code of what was not taken back
    uint32_t give_back(path_space &paths);
    /// The words only: the path space ends with them.
    void forget();
};

} // namespace ribkit::rib
