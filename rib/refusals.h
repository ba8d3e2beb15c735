// How often the RIB has refused what, and to whom. It is asked about by result code and client.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

namespace ribkit::rib {

class refusal_counts {
  public:
    /// Clients and codes that are told apart; what goes beyond is in the sums only, so that nobody can make them grow.
    static constexpr size_t most_kinds = 512;
    /// Nobody in particular.
    static constexpr uint32_t all_clients = 0;

    /// Where memory fails a refusal is not counted.
    /// @param client all_clients where it is not known
    void add(uint32_t result, uint32_t client) noexcept;
    /// Refusals with a result code to a client, or to all.
    [[nodiscard]] uint32_t of(uint32_t result, uint32_t client) const;

  private:
    using kind = std::pair<uint32_t, uint32_t>; ///< result and client

    std::map<kind, uint32_t> counts_;
};

} // namespace ribkit::rib
