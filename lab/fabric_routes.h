// The routes of a whole fabric while its links change. VSANs that the same links carry have the same routes: they share
// one table, computed once, and computed again only after an event that can change it.
#pragma once

#include "lab/fabric.h"
#include "model/routes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace ribkit::lab {

/// Domains to which no path is left in a VSAN.
struct unreachable_domains {
    uint32_t vsan;
    std::vector<uint32_t> domains; ///< in the order of the switches

    bool operator==(const unreachable_domains &) const = default;
};

class fabric_routes {
  public:
    /// Called with how many VSANs are done, of how many.
    using progress = std::function<void(size_t done, size_t total)>;

    /// Brings the routes up to date with the fabric. From one call to the next only the state and the cost of its links
    /// may change.
    void follow(const fabric &f, const progress &say);

    /// The table is never changed: the same address is the same table. Of a VSAN of the fabric.
    [[nodiscard]] const model::shared_routes &of(uint32_t vsan) const { return all_.at(vsan); }
    [[nodiscard]] const model::wanted_routes &all() const { return all_; }

    /// Routes of all VSANs.
    [[nodiscard]] size_t size() const;

    /// What was reached before the last `follow` and is not any more; after the first, what never was. By VSAN.
    [[nodiscard]] const std::vector<unreachable_domains> &lost() const { return lost_; }

    /// How often shortest paths were computed.
    [[nodiscard]] size_t computations() const { return computations_; }

  private:
    /// What VSANs with the same links have in common.
    struct topology {
        std::vector<size_t> links; ///< indices, ascending
        std::vector<uint32_t> vsans;
        model::shared_routes routes;
        std::vector<uint32_t> costs; ///< to each switch
    };
    struct link_state {
        bool up;
        uint32_t cost;

        bool operator==(const link_state &) const = default;
    };

    void find_topologies(const fabric &f);
    [[nodiscard]] std::vector<size_t> changed_links(const fabric &f) const;
    [[nodiscard]] bool is_touched(const topology &t, const fabric &f, size_t link) const;
    void compute(topology &t, const fabric &f);
    void note_lost(const topology &t, const fabric &f, const std::vector<uint32_t> &costs);

    std::vector<topology> topologies_;
    model::wanted_routes all_;
    std::vector<link_state> links_; ///< as they were when the routes were computed
    std::vector<unreachable_domains> lost_;
    size_t computations_ = 0;
};

} // namespace ribkit::lab
