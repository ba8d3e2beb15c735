// Where wanted routes come from: each source computes those of the local switch from the fabric as it is now, whole.
// Which of them are new is the client's to find.
#pragma once

#include "clients/route_client.h"
#include "lab/fabric.h"
#include "lab/fabric_routes.h"

#include <map>
#include <memory>

namespace ribkit::lab {

/// The tables that are wanted, an own one for each VSAN that has routes.
template <class Table> using drawn_tables = std::map<uint32_t, clients::own_table<Table>>;

/// All VSANs of the fabric; those without routes share a table.
template <class Table> clients::wanted_tables<Table> shared(const fabric &f, drawn_tables<Table> drawn) {
    static const auto nothing = std::make_shared<const clients::own_table<Table>>();
    clients::wanted_tables<Table> all;
    for (const uint32_t vsan : f.vsan_ids()) {
        const auto found = drawn.find(vsan);
        all[vsan] = found == drawn.end() || found->second.empty()
                        ? nothing
                        : std::make_shared<const clients::own_table<Table>>(std::move(found->second));
    }
    return all;
}

/// Static routes: those of the local switch whose interface is there. Frames leave through an interface while its link,
/// where it has one, is up and carries the VSAN.
clients::wanted_tables<clients::unicast_table> static_routes(const fabric &f);

/// A route to the controller of every domain, the way to that domain.
clients::wanted_tables<clients::unicast_table> controller_routes(const fabric &f, const fabric_routes &paths);

/// A route for each group, and the distribution tree of each VSAN that has groups.
clients::wanted_tables<clients::multicast_table> group_routes(const fabric &f);

/// Tunnels along their shortest paths, and what else is declared for the local switch.
clients::wanted_tables<clients::label_table> label_routes(const fabric &f);

/// Whether frames of a VSAN can leave through an interface.
bool leads_out(const fabric &f, const fabric_port &port, uint32_t vsan);

} // namespace ribkit::lab
