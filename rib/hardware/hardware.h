// What stands behind the routes of all tables: a position in the hardware for each destination, path units for the
// next hops of each route, the ports that are used, and what each VSAN has of it.
#pragma once

#include "rib/counted_map.h"
#include "rib/effects.h"
#include "rib/hardware/path_space.h"
#include "rib/hardware/position_space.h"
#include "rib/hardware/rib_spaces.h"

#include <array>
#include <cstdint>
#include <map>
#include <span>

namespace ribkit::rib {

/// A VSAN that has routes.
struct vsan_use {
    uint32_t segment = 0;                  ///< of the positions
    uint32_t changed = 0;                  ///< seconds since 1970: when a route of it changed last
    std::array<uint32_t, tables> routes{}; ///< by table_id
    counted_map domains;                   ///< of the unicast destinations

    [[nodiscard]] bool is_empty() const { return routes[0] + routes[1] + routes[2] == 0; }
};

/// How many routes use an interface.
class port_counts {
  public:
    /// All of them, or none. @return 0; RIB_OUT_OF_MEMORY
    uint32_t add(std::span<const uint32_t> interfaces);
    void remove(std::span<const uint32_t> interfaces);
    [[nodiscard]] bool has(uint32_t if_index) const { return uses_.contains(if_index); }
    [[nodiscard]] uint32_t count() const { return static_cast<uint32_t>(uses_.size()); }
    /// Prints bitmaps of the last byte, which is the port's.
    void show() const;

  private:
    std::map<uint32_t, uint32_t> uses_;
};

class hardware {
  public:
    /// Throws std::bad_alloc.
    /// @param shows_segments whether the allocator of segments prints its table for every boundary that moves
    /// @param out null, or told what moves
    hardware(const rib_spaces &spaces, bool shows_segments, effects *out)
        : paths(spaces.path_units), positions(spaces, shows_segments, out), spaces_(spaces) {}

    /// Obtains a segment for a VSAN without routes. @return 0, or the result code of what is full
    uint32_t enter(uint32_t vsan, vsan_use *&made);
    /// Gives a VSAN's segment back if it has no routes.
    void leave(uint32_t vsan);
    /// Null where it has no routes.
    vsan_use *find(uint32_t vsan);

    [[nodiscard]] const std::map<uint32_t, vsan_use> &vsans() const { return vsans_; }
    [[nodiscard]] const rib_spaces &spaces() const { return spaces_; }
    /// Positions in use.
    [[nodiscard]] uint32_t places() const;
    void show() const;

    path_space paths;
    position_space positions;
    port_counts ports;

  private:
    rib_spaces spaces_;
    std::map<uint32_t, vsan_use> vsans_;
};

} // namespace ribkit::rib
