// The next hops of all routes in one table: a route has as many consecutive units as it has hops.
#pragma once

#include "model/routes.h"
#include "rib/hardware/rib_spaces.h"
#include "rib_mem.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ribkit::rib {

class path_space {
  public:
    /// Throws std::bad_alloc.
    explicit path_space(uint32_t units);
    path_space(const path_space &) = delete;
    path_space &operator=(const path_space &) = delete;
    ~path_space() { bud_destroy(blocks_); }

    /// Obtains units for so many hops; none are needed for none. @return what bud_alloc returns, or RIB_OUT_OF_MEMORY
    uint32_t take(uint32_t hops, uint32_t &path);
    /// @return what bud_free returns
    uint32_t give_back(uint32_t hops, uint32_t path);

    /// Obtains units that nothing is written to, as blocks of which all but the last are whole: their first units.
    /// All of them, or none. @return what bud_alloc returns
    uint32_t reserve(uint32_t units, uint32_t *blocks);
    /// @return the first result of bud_free that is not 0
    uint32_t release(uint32_t units, const uint32_t *blocks);

    void write(uint32_t path, std::span<const model::next_hop> hops);
    [[nodiscard]] std::span<const model::next_hop> read(uint32_t path, uint32_t hops) const;

    [[nodiscard]] uint32_t used() const;
    void show() const { bud_show(blocks_); }

  private:
    /// As many units as the allocator carves at once: no block of it crosses a chunk's end.
    struct chunk {
        std::array<model::next_hop, unit_block> units;
        uint32_t used = 0;
    };

    uint32_t hold(uint32_t hops, uint32_t path);
    void let_go(uint32_t hops, uint32_t path);

    struct bud *blocks_;
    std::vector<std::unique_ptr<chunk>> chunks_; ///< up to the last with a unit in use; null where none is
};

} // namespace ribkit::rib
