// What the routes of the RIB are made of: records in a pool, next hops in the path space, a position in the hardware,
// a bitmap of the domains that are reached, and the ports that are used.
#pragma once

#include "protocol/route_messages.h"
#include "rib/counted_map.h"
#include "rib/path_space.h"
#include "rib/position_space.h"
#include "rib/rib_spaces.h"
#include "rib/route_record.h"
#include "rib_mem.h"

#include <cstdint>
#include <map>
#include <memory>
#include <span>

namespace ribkit::rib {

/// What is in use, and of how much.
struct rib_memory {
    uint32_t routes = 0;
    uint32_t path_units = 0;
    uint32_t positions = 0;
    rib_spaces spaces;
};

/// A VSAN that has routes.
struct vsan_store {
    uint32_t segment = 0; ///< of the positions
    uint32_t routes = 0;
    counted_map domains; ///< of the destinations
};

class route_store {
  public:
    /// Throws std::bad_alloc.
    route_store(const rib_spaces &spaces, const move_display &shown);

    /// Stores a new route whole, or nothing of it. @return 0, or the result code of what is full
    uint32_t add(const model::route_key &key, uint32_t uuid, protocol::record_view what, route_record *&made);
    /// Puts another route in place of a record's, or leaves it. @return 0, or the result code of what is full
    uint32_t replace(route_record &record, uint32_t uuid, protocol::record_view what);
    /// Gives the record back, and all that it has. @return 0, or the first result code of what was not taken back
    uint32_t remove(route_record &record);

    [[nodiscard]] std::span<const model::next_hop> hops(const route_record &record) const {
        return paths_.read(record.path, record.hops);
    }
    [[nodiscard]] const std::map<uint32_t, vsan_store> &vsans() const { return vsans_; }
    [[nodiscard]] const position_space &positions() const { return positions_; }
    [[nodiscard]] bool uses_port(uint32_t if_index) const;
    [[nodiscard]] uint32_t ports() const { return static_cast<uint32_t>(ports_.size()); }
    [[nodiscard]] rib_memory memory() const;
    void show() const;

  private:
    struct pool_end {
        void operator()(struct pool *ended) const { pool_destroy(ended); }
    };

    uint32_t enter(uint32_t vsan);
    void leave(uint32_t vsan);
    uint32_t equip(route_record &record, protocol::record_view what);
    uint32_t strip(route_record &record);
    uint32_t add_ports(std::span<const model::next_hop> hops);
    void remove_ports(std::span<const model::next_hop> hops);
    void show_ports() const;

    rib_spaces spaces_;
    std::unique_ptr<struct pool, pool_end> records_;
    path_space paths_;
    position_space positions_;
    std::map<uint32_t, vsan_store> vsans_;
    std::map<uint32_t, uint32_t> ports_; ///< how many next hops, by interface index
};

} // namespace ribkit::rib
