// How much a module's tables hold: each its own number of entries, and a VSAN its share of all of them.
#pragma once

#include <cstdint>
#include <map>

namespace ribkit::fib {

struct fib_sizes {
    uint32_t unicast = 1U << 20;
    uint32_t multicast = 1U << 16;
    uint32_t label = 1U << 16;
    uint32_t rewrite = 1U << 12;
    uint32_t per_vsan = 0; ///< entries of the tables of routes; 0: as many as there is room for
};

/// What VSANs have of the tables together.
class vsan_shares {
  public:
    explicit vsan_shares(uint32_t most) : most_(most) {}

    /// Takes room for an entry. @return 0; RIB_VSAN_TCAM_FULL; RIB_OUT_OF_MEMORY
    uint32_t take(uint32_t vsan);
    void give_back(uint32_t vsan);
    [[nodiscard]] const std::map<uint32_t, uint32_t> &all() const { return used_; }

  private:
    uint32_t most_;
    std::map<uint32_t, uint32_t> used_;
};

} // namespace ribkit::fib
