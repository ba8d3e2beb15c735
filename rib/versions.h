// The topology versions that clients have given for VSANs: a list for each client and VSAN.
#pragma once

#include "rib/request.h"

#include <cstdint>
#include <map>
#include <span>
#include <tuple>
#include <vector>

namespace ribkit::rib {

struct version_key {
    uint32_t uuid;
    uint32_t vsan;

    bool operator==(const version_key &) const = default;
    bool operator<(const version_key &other) const { return std::tie(uuid, vsan) < std::tie(other.uuid, other.vsan); }
};

class version_lists {
  public:
    /// So many lists there can be: whoever can send to the RIB can make up clients.
    static constexpr size_t most = 16384;

    /// Puts a list in place of the one that there is, whole or not at all. @return 0; RIB_HW_FULL where there are too
    /// many, RIB_OUT_OF_MEMORY
    uint32_t add(const version_key &of, std::span<const uint32_t> versions);
    /// @param removed how many versions the list had
    /// @return 0; RIB_NO_ENTRY where there is none
    uint32_t remove(const version_key &of, uint32_t &removed);

    [[nodiscard]] const std::map<version_key, std::vector<uint32_t>> &all() const { return lists_; }

  private:
    std::map<version_key, std::vector<uint32_t>> lists_;
};

} // namespace ribkit::rib
