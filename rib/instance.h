// All that a running RIB knows.
#pragma once

#include "model/fib.h"
#include "model/system.h"
#include "rib/change_logs.h"
#include "rib/refusals.h"
#include "rib/registry.h"
#include "rib/state.h"
#include "rib/vsans.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>

namespace ribkit::rib {

struct instance {
    /// Throws std::bad_alloc.
    /// @param out null, or told what happens to the routes; it must last
    /// @param now seconds since 1970
    instance(const state_options &options, effects *out, uint32_t now) : routes(options, out), created(now) {}

    state routes;
    change_logs logs{};
    registry clients{};
    refusal_counts refused{};
    described_vsans described{};
    std::map<uint32_t, model::module_node> nodes{};    ///< modules as they have told of themselves, by number
    std::array<model::verification, tables> reports{}; ///< by table_id
    uint32_t created;                                  ///< seconds since 1970
    bool notes_requests = false;                       ///< each in a line of history
    std::array<uint32_t, tables> unanswered{};         ///< updates of modules, by table_id
    uint32_t waiting = 0;                              ///< requests that are answered when modules have
    uint32_t unsent = 0;                               ///< notifications that wait for room

    /// Takes a registration, and its distance. Throws std::bad_alloc.
    /// @param heard seconds that pass evenly
    /// @param now seconds since 1970
    /// @return as registry::take
    uint32_t enter(const registration &said, uint64_t heard, uint32_t now);
    /// Forgets a client that was not heard of for too long, and its distance. @return who it was, as
    /// registry::forget_one
    std::optional<registration> lose(uint64_t heard, uint32_t now);

    /// How many routes VSANs have, from one on.
    [[nodiscard]] std::vector<model::vsan_summary> summaries(uint32_t first, size_t most) const;
    /// How much a structure of the RIB's own holds.
    /// @param structure as rib_in_to_str has it
    [[nodiscard]] uint32_t held_in(uint32_t structure) const;
    /// What the RIB keeps, by the kinds of memory.
    [[nodiscard]] std::array<model::memory_pool, model::memory_pools> memory() const;
};

} // namespace ribkit::rib
