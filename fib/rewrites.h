// Which frames change their VSAN, and their addresses with it.
#pragma once

#include "model/fib.h"

#include <cstdint>
#include <map>

namespace ribkit::fib {

struct rewrite {
    model::rewrite_key key;
    model::rewrite_values what;

    bool operator==(const rewrite &) const = default;
};

class rewrites {
  public:
    using entries = std::map<model::rewrite_key, model::rewrite_values>;

    explicit rewrites(uint32_t most) : most_(most) {}

    /// @return 0; RIB_BAD_PARAMETERS where a VSAN is none; RIB_HW_FULL; RIB_OUT_OF_MEMORY
    uint32_t put(const rewrite &one);
    void remove(const model::rewrite_key &key) { entries_.erase(key); }
    /// Removes those of a VSAN, or of every one for VSAN 0. @return how many
    uint32_t remove_all(uint32_t vsan);

    [[nodiscard]] const entries &all() const { return entries_; }

  private:
    uint32_t most_;
    entries entries_;
};

} // namespace ribkit::fib
