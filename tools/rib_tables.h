// The RIB's route tables, and what an update message does to them.
#pragma once

#include "rib_check.h"
#include "tools/fcurt_message.h"
#include "tools/fcurt_query.h"
#include "tools/rib_spaces.h"
#include "tools/route_store.h"
#include "tools/routes.h"

#include <cstdint>
#include <map>
#include <span>
#include <tuple>
#include <vector>

namespace ribkit {

class rib_tables {
  public:
    /// With `trace`, a line is printed for every route that moves in the hardware. Throws std::bad_alloc.
    explicit rib_tables(const rib_spaces &spaces = {}, bool trace = false) : store_(spaces, trace) {}

    /// Takes an update message from anywhere: nothing is stored unless all of it is sound. Then each record takes
    /// effect by itself or not at all; one that changes or deletes a route that is not there, and one for which
    /// something is full, are passed over. The result is that of the first such: RIB_NO_ENTRY, or the code of what is
    /// full.
    /// @param why null, or filled where the message's size and its counts disagree
    fcurt_response take_update(std::span<const uint8_t> message, rib_check_report *why = nullptr);

    /// Routes from the query's key on, as many as it wants and as fit into a message: all of one VSAN and one client.
    /// None where the query is at the end of the tables, or of its VSAN's.
    [[nodiscard]] fcurt_update answer(const fcurt_query &query) const;

    [[nodiscard]] held_routes routes() const;
    [[nodiscard]] uint32_t held(uint32_t vsan) const;
    [[nodiscard]] const route_store &store() const { return store_; }

  private:
    uint32_t take(const fcurt_update &update, const route_change &change);
    [[nodiscard]] route read(const route_record &record) const;

    route_store store_;
    std::map<route_key, route_record *> index_;
};

/// The route as an entry of the RIB's tables in network form, which rib_show_fcu displays.
std::vector<uint8_t> ucast_entry(const route_key &key, const held_route &held);

} // namespace ribkit
