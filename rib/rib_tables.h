// The RIB's route tables, and what an update message does to them.
#pragma once

#include "model/routes.h"
#include "protocol/route_messages.h"
#include "rib/rib_spaces.h"
#include "rib/route_store.h"
#include "rib_check.h"

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <tuple>
#include <vector>

namespace ribkit::rib {

class rib_tables {
  public:
    /// Throws std::bad_alloc.
    /// @param quotas how many routes a client may have; those not named have no limit
    explicit rib_tables(const rib_spaces &spaces = {}, const move_display &shown = {},
                        const std::map<uint32_t, uint32_t> &quotas = {});

    /// Takes an update message from anywhere: nothing is stored unless all of it is sound. Then each record takes
    /// effect by itself or not at all; one that changes or deletes a route that is not there, and one for which
    /// something is full, are passed over. The result is that of the first such: RIB_NO_ENTRY, or the code of what is
    /// full: RIB_HW_FULL where it is the client's quota, RIB_OUT_OF_MEMORY where it is memory.
    /// @param may_speak null, or asked whether the sender may use the update's client identity: RIB_BAD_PARAMETERS
    ///        where not
    /// @param why null, or filled where the message's size and its counts disagree
    protocol::fcurt_response take_update(std::span<const uint8_t> message,
                                         const std::function<bool(uint32_t)> &may_speak = {},
                                         rib_check_report *why = nullptr);

    /// An update of the routes from the query's key on, as many as it wants and as fit into a message: all of one VSAN
    /// and one client. None where the query is at the end of the tables, or of its VSAN's. Throws std::bad_alloc.
    [[nodiscard]] std::vector<uint8_t> answer(protocol::query_view query) const;

    [[nodiscard]] model::held_routes routes() const;
    [[nodiscard]] uint32_t held(uint32_t vsan) const;
    [[nodiscard]] const route_store &store() const { return store_; }

  private:
    /// Of a client with a quota.
    struct client_use {
        uint32_t most;
        uint32_t routes = 0;
    };

    uint32_t take(protocol::update_view update, protocol::record_view change);
    uint32_t add(const model::route_key &key, uint32_t uuid, protocol::record_view what);
    uint32_t replace(route_record &held, uint32_t uuid, protocol::record_view what);
    client_use *use_of(uint32_t uuid);
    bool has_room(uint32_t uuid);
    void count(uint32_t uuid, int32_t more);
    [[nodiscard]] model::route_values read(const route_record &record) const;

    route_store store_;
    std::map<model::route_key, route_record *> index_;
    std::map<uint32_t, client_use> uses_;
};

} // namespace ribkit::rib
