// The next hops of all routes in one table: a route has as many consecutive units as it has hops.
#pragma once

#include "rib_mem.h"
#include "tools/routes.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ribkit {

class path_space {
  public:
    /// Throws std::bad_alloc.
    explicit path_space(uint32_t units);
    path_space(const path_space &) = delete;
    path_space &operator=(const path_space &) = delete;
    ~path_space() { bud_destroy(blocks_); }

    /// Obtains units for so many hops; none are needed for none. @return what bud_alloc returns
    uint32_t take(uint32_t hops, uint32_t &path);
    /// @return what bud_free returns
    uint32_t give_back(uint32_t hops, uint32_t path);

    void write(uint32_t path, std::span<const next_hop> hops);
    [[nodiscard]] std::span<const next_hop> read(uint32_t path, uint32_t hops) const;

    [[nodiscard]] uint32_t used() const;
    void show() const { bud_show(blocks_); }

  private:
    struct bud *blocks_;
    std::vector<next_hop> units_; ///< grows with the highest unit taken
};

} // namespace ribkit
