// The RIB: three tables of routes, what stands behind them, who has them. Requests go in, an answer comes out and the
// effects are told; there is no bus, clock or file here, and with the same requests everything is the same everywhere.
#pragma once

#include "rib/effects.h"
#include "rib/operation.h"
#include "rib/owners.h"
#include "rib/table.h"
#include "rib/versions.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>

namespace ribkit::rib {

/// What is in use, and of how much.
struct rib_memory {
    uint32_t routes = 0; ///< of all tables
    uint32_t path_units = 0;
    uint32_t positions = 0;
    rib_spaces spaces;
};

struct state_options {
    rib_spaces spaces{};
    std::map<uint32_t, uint32_t> quotas{}; ///< how many routes a client may have; those not named have no limit
    bool shows_segments = false;           ///< the allocator of segments prints its table for every boundary that moves
};

class state {
  public:
    /// Throws std::bad_alloc.
    /// @param out null, or told what happens; it must last
    explicit state(const state_options &options = {}, effects *out = nullptr);
    state(const state &) = delete;
    state &operator=(const state &) = delete;

    /// Takes an update of a table. Nothing is changed unless head and all records make sense. Then each record takes
    /// effect by itself or not at all; the result is that of the first without effect: RIB_NO_ENTRY, RIB_OBJECT_OWNED,
    /// or the code of what is full, which is RIB_HW_FULL where it is the client's quota and RIB_OUT_OF_MEMORY where it
    /// is memory.
    /// @tparam Kind unicast, multicast or label
    /// @param changes a range of Kind::change, or of what converts to it, walked twice; an element need not outlive the
    ///        next
    template <class Kind, class Changes> update_answer update(const update_head &head, const Changes &changes) {
        update_work<Kind> work(*this, head);
        for (const auto &one : changes) {
            work.judge(one);
        }
        if (work.begins()) {
            for (const auto &one : changes) {
                work.take(one);
            }
        }
        return work.end();
    }

    /// A client's routes are nearer or farther from now on. Throws std::bad_alloc, and nothing has changed then.
    /// @param distance none: the client's default again
    /// @param now seconds since 1970
    void set_distance(uint32_t uuid, std::optional<uint32_t> distance, uint32_t now);

    /// The table of a kind, to be read.
    template <class Kind> [[nodiscard]] const table<Kind> &routes() const;
    /// Routes that a table of a VSAN has, of all clients.
    [[nodiscard]] uint32_t held(table_id table, uint32_t vsan) const;
    /// Who has routes, a quota or a distance.
    [[nodiscard]] const owners &clients() const { return owners_; }
    [[nodiscard]] const version_lists &versions() const { return versions_; }
    /// VSANs that have routes.
    [[nodiscard]] const std::map<uint32_t, vsan_use> &vsans() const { return hardware_.vsans(); }
    [[nodiscard]] const std::set<uint32_t> &suspended() const { return suspended_; }
    /// The label route that says which labels to push for a unicast destination; null where there is none.
    [[nodiscard]] const table<label>::record *labels_for(const model::route_key &destination) const;

    [[nodiscard]] const hardware &behind() const { return hardware_; }
    [[nodiscard]] rib_memory memory() const;
    /// Prints what is in use.
    void show() const;

  private:
    template <class Kind> friend class update_work;
    template <class Kind> table<Kind> &table_of();
    uint32_t set_suspended(uint32_t vsan, bool suspends);

    effects *out_;
    hardware hardware_;
    owners owners_;
    table<unicast> unicast_;
    table<multicast> multicast_;
    table<label> label_;
    version_lists versions_;
    std::set<uint32_t> suspended_;
};

} // namespace ribkit::rib
