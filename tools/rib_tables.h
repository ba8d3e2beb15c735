// The RIB's route tables, and what an update message does to them.
#pragma once

#include "rib_check.h"
#include "tools/fcurt_message.h"
#include "tools/routes.h"

#include <cstdint>
#include <map>
#include <span>
#include <tuple>
#include <vector>

namespace ribkit {

struct route_key {
    uint32_t vsan;
    destination to;

    bool operator<(const route_key &other) const { return std::tie(vsan, to) < std::tie(other.vsan, other.to); }
};

struct held_route {
    uint32_t uuid; ///< the client that added it
    route what;
};

class rib_tables {
  public:
    /// Takes an update message from anywhere: nothing is stored unless all of it is sound. Then each record takes
    /// effect by itself; one that changes or deletes a route that is not there is passed over, and the result is
    /// RIB_NO_ENTRY.
    /// @param why null, or filled where the message's size and its counts disagree
    fcurt_response take_update(std::span<const uint8_t> message, rib_check_report *why = nullptr);

    [[nodiscard]] const std::map<route_key, held_route> &routes() const { return routes_; }
    [[nodiscard]] uint32_t held(uint32_t vsan) const;

  private:
    bool take(const fcurt_update &update, const route_change &change);

    std::map<route_key, held_route> routes_;
    std::map<uint32_t, uint32_t> held_; ///< routes by VSAN
};

/// The route as an entry of the RIB's tables in network form, which rib_show_fcu displays.
std::vector<uint8_t> ucast_entry(const route_key &key, const held_route &held);

} // namespace ribkit
