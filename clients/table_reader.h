// Reads the RIB's tables route by route, whoever owns them, a query after the other.
#pragma once

#include "bus/rib_link.h"
#include "model/label.h"
#include "model/multicast.h"
#include "model/routes.h"
#include "protocol/route_messages.h"
#include "ribkit_rib.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace ribkit::clients {

// The three tables: what a route is found by, and what it says.

struct unicast_table {
    using key = model::route_key;
    using route = model::route;
    using key_in_vsan = model::destination; ///< in a VSAN's own table
    using values = model::route_values;

    static constexpr const codec::layout &message = wire::fcurt_update;
    static constexpr const char *name = "unicast";
    static constexpr uint32_t update = RIBKIT_OPCODE_FCURT_UPDATE;
    static constexpr uint32_t query = RIBKIT_OPCODE_FCURT_QUERY;
    static constexpr uint32_t note = RIBKIT_OPCODE_FCURT_NOTE;

    static const key_in_vsan &in_vsan(const key &where) { return where.to; }
};

struct multicast_table {
    using key = model::multicast_key;
    using route = model::multicast_route;
    using key_in_vsan = model::destination; ///< in a VSAN's own table
    using values = model::multicast_values;

    static constexpr const codec::layout &message = wire::fcmrt_update;
    static constexpr const char *name = "multicast";
    static constexpr uint32_t update = RIBKIT_OPCODE_FCMRT_UPDATE;
    static constexpr uint32_t query = RIBKIT_OPCODE_FCMRT_QUERY;
    static constexpr uint32_t note = RIBKIT_OPCODE_FCMRT_NOTE;

    static const key_in_vsan &in_vsan(const key &where) { return where.to; }
};

struct label_table {
    using key = model::label_key;
    using route = model::label_route;
    using key_in_vsan = model::label_key; ///< in a VSAN's own table
    using values = model::label_values;

    static constexpr const codec::layout &message = wire::fclrt_update;
    static constexpr const char *name = "label";
    static constexpr uint32_t update = RIBKIT_OPCODE_FCLRT_UPDATE;
    static constexpr uint32_t query = RIBKIT_OPCODE_FCLRT_QUERY;
    static constexpr uint32_t note = RIBKIT_OPCODE_FCLRT_NOTE;

    static const key_in_vsan &in_vsan(const key &where) { return where; }
};

/// What a route says, for whoever keeps it.
inline model::route copied(const model::route_values &what) {
    return {what.metric, what.flag, {what.hops.begin(), what.hops.end()}, what.carried};
}
inline model::multicast_route copied(const model::multicast_values &what) {
    return {{what.members.begin(), what.members.end()}};
}
inline model::label_route copied(const model::label_values &what) {
    return {{what.sources.begin(), what.sources.end()}, {what.hops.begin(), what.hops.end()}};
}

template <class Table> struct table_reading {
    uint32_t uuid;                            ///< of the client that asks
    std::optional<uint32_t> vsan{};           ///< none: all
    std::optional<typename Table::key> key{}; ///< the routes of this key only
    bool active = false;                      ///< of the routes of a destination the active one only; unicast
    size_t most_routes = size_t{1} << 22;     ///< beyond which reading ends: no RIB has as many
    bool trace = false;                       ///< print each query
};

/// What it is called with lasts until it returns.
template <class Table>
using route_taker =
    std::function<void(uint32_t owner, const typename Table::key &key, const typename Table::values &what)>;

/// Calls `take` for each route, in the table's order. Throws no_answer, also where it has more than `most_routes`,
/// refused_question and link_closed; then some routes have been taken, and what was made of them is of no use.
template <class Table>
void read_table(bus::rib_link &link, const table_reading<Table> &wanted, const route_taker<Table> &take);

extern template void read_table(bus::rib_link &, const table_reading<unicast_table> &,
                                const route_taker<unicast_table> &);
extern template void read_table(bus::rib_link &, const table_reading<multicast_table> &,
                                const route_taker<multicast_table> &);
extern template void read_table(bus::rib_link &, const table_reading<label_table> &, const route_taker<label_table> &);

} // namespace ribkit::clients
