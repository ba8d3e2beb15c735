// Routes beside those of the shortest paths: what a manager has configured, and the way to the switches themselves.
#include "lab/sources/wanted.h"

#include "rib_codes.h"

namespace ribkit::lab {

namespace {

constexpr uint32_t first_controller = 0xfffc00; ///< and the domain

/// Rows are direct and permanent unless somebody says otherwise, which no file can.
model::route route_of(const declared_static &one) {
    const fcRouteEntry &row = one.row;
    return {row.cost, RIB_FLAG_ACTIVE | RIB_FLAG_DIRECT, {{row.if_index, row.domain}}};
}

model::shared_routes controllers(const model::route_table &domains) {
    model::route_table table;
    for (const auto &[to, what] : domains) {
        const uint32_t domain = to.fcid >> 16;
        table.emplace_hint(table.end(), model::destination{first_controller + domain, RIB_MASK_PORT}, what);
    }
    return std::make_shared<const model::route_table>(std::move(table));
}

} // namespace

bool leads_out(const fabric &f, const fabric_port &port, uint32_t vsan) {
    const auto link = f.link_at(port);
    return !link || (f.links()[*link].up && f.links()[*link].carries(vsan));
}

clients::wanted_tables<clients::unicast_table> static_routes(const fabric &f) {
    drawn_tables<clients::unicast_table> drawn;
    for (const declared_static &one : f.declared.statics()) {
        if (one.up && one.via.owner == f.local_index() && leads_out(f, one.via, one.vsan)) {
            drawn[one.vsan][{one.row.destination, one.row.mask}] = route_of(one);
        }
    }
    return shared<clients::unicast_table>(f, std::move(drawn));
}

// VSANs that share their routes share these, too.
clients::wanted_tables<clients::unicast_table> controller_routes(const fabric &f, const fabric_routes &paths) {
    std::map<model::shared_routes, model::shared_routes> made;
    clients::wanted_tables<clients::unicast_table> all;
    for (const uint32_t vsan : f.vsan_ids()) {
        model::shared_routes &routes = made[paths.of(vsan)];
        if (routes == nullptr) {
            routes = controllers(*paths.of(vsan));
        }
        all[vsan] = routes;
    }
    return all;
}

} // namespace ribkit::lab
