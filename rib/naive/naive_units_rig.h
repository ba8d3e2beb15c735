// The path units behind the routes of the naive model, from an allocator that is as naive.
#pragma once

#include "mem/buddy/naive_buddy.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace ribkit::rib {

class naive_units {
  public:
    /// Where units are: how many, and the first.
    using blocks = std::vector<std::pair<uint32_t, uint32_t>>;

    explicit naive_units(uint32_t units) : left_(units) {}

    /// Units for so many ways, sixteen at a time. @return whether there were so many
    bool take(uint32_t ways, blocks &taken) {
        constexpr uint32_t most = 16;
        for (uint32_t size = std::min(ways, most); size != 0; size = std::min(ways, most)) {
            uint32_t first = 0;
            if (left_.alloc(size, &first) != 0) {
                give_back(taken);
                return false;
            }
            taken.emplace_back(size, first);
            ways -= size;
        }
        return true;
    }
    void give_back(blocks &taken) {
        for (const auto &[size, first] : std::exchange(taken, {})) {
            left_.free(size, first);
        }
    }

  private:
    mem::naive::buddy left_;
};

} // namespace ribkit::rib
