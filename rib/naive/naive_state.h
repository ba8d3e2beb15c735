// What the RIB does, written a second time and as plainly as it can be: a list of all routes of all tables, searched
// from the start. Nothing here is fast, and nothing is shared with what it is compared with.
#pragma once

#include "rib/naive/naive_request.h"
#include "rib/naive/naive_units_rig.h"

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace ribkit::rib {

struct naive_route {
    size_t table;
    uint32_t uuid;
    naive_record what;
    bool marked;
    naive_units::blocks units{};
};

class naive_state {
  public:
    /// @param most_vsans that may have routes at a time
    /// @param blocks of eight places in the hardware, which VSANs take as they need them
    /// @param path_units for the ways of all routes
    /// @param quotas routes of all tables that a client may have
    naive_state(uint32_t most_vsans, uint32_t blocks, uint32_t path_units, std::map<uint32_t, uint32_t> quotas)
        : most_vsans_(most_vsans), blocks_(blocks), units_(path_units), quotas_(std::move(quotas)) {}

    /// @return result, operation, VSAN, accepted, held
    words update(const naive_request &asked);
    void set_distance(uint32_t uuid, std::optional<uint32_t> distance, uint32_t now);

    /// What was told since the last call, one after the other: a route as cause, operation, action, and a line as
    /// all() has it; a VSAN that was suspended or resumed as its number, and 1 or 0.
    std::vector<words> take_told();

    /// The latest 128 changes of a table: each with its number, its time, what a module would be told to do, 1 where a
    /// route is there and 2 where it is gone, and the key.
    [[nodiscard]] const std::deque<words> &log(size_t table) const { return logs_[table]; }

    /// Every route in the order of tables and keys, the active one of each key first, then in the order in which they
    /// would be active: each as table, key, owner; of a unicast route metric and flag, with its active bit; what it
    /// carries and its ways, each with its length before it.
    [[nodiscard]] std::vector<words> all() const;
    /// By client and VSAN.
    [[nodiscard]] const std::map<std::array<uint32_t, 2>, words> &versions() const { return versions_; }
    [[nodiscard]] const std::set<uint32_t> &suspended() const { return suspended_; }
    /// Routes by table, and the time of the last change, of each VSAN that has routes.
    [[nodiscard]] std::map<uint32_t, words> vsans() const;
    /// Routes by table of each client that has any.
    [[nodiscard]] std::map<uint32_t, words> clients() const;
    [[nodiscard]] uint32_t distance_of(uint32_t uuid) const;
    /// Destinations by VSAN, of all tables.
    [[nodiscard]] std::map<uint32_t, std::set<words, by_number>> destinations() const;
    /// Routes, ways of all routes, destinations.
    [[nodiscard]] words in_use() const;

  private:
    using condition = std::function<bool(const naive_route &)>;

    uint32_t apply(const naive_request &asked, const naive_record &record);
    uint32_t add(const naive_request &asked, const naive_record &record);
    [[nodiscard]] uint32_t room_for(const naive_request &asked, const naive_record &record) const;
    uint32_t take_room(const naive_request &asked, const naive_record &record, naive_units::blocks &taken);
    [[nodiscard]] bool has_place_in(uint32_t vsan) const;
    uint32_t remove(const naive_request &asked, const words &key);
    uint32_t remove_group(const naive_request &asked, const naive_record &group);
    uint32_t change(const naive_request &asked, const naive_record &record);
    uint32_t finish(const naive_request &asked, uint32_t &accepted);
    uint32_t remove_each(const naive_request &asked, const condition &which);
    uint32_t replay(const naive_request &asked);
    void suspend(uint32_t vsan, bool on);

    naive_route *find(size_t table, const words &key, uint32_t uuid);
    [[nodiscard]] const naive_route *active(size_t table, const words &key) const;
    [[nodiscard]] bool precedes(const naive_route &a, const naive_route &b) const;
    [[nodiscard]] std::vector<naive_route> in_order(const condition &which) const;
    [[nodiscard]] size_t count(const condition &which) const;
    [[nodiscard]] uint32_t missing(const naive_request &asked, const words &key) const;
    void touch(const naive_request &asked, const words &key, uint32_t action, const std::function<void()> &work);
    void tell(uint32_t cause, uint32_t oper, uint32_t action, words route);
    [[nodiscard]] words line(const naive_route &route) const;

    uint32_t most_vsans_;
    uint32_t blocks_;
    naive_units units_;
    std::map<uint32_t, uint32_t> quotas_;
    std::map<uint32_t, uint32_t> distances_;
    std::vector<naive_route> routes_;
    std::map<std::array<uint32_t, 2>, words> versions_;
    std::set<uint32_t> suspended_;
    std::map<uint32_t, uint32_t> changed_;
    std::vector<words> told_;
    std::array<std::deque<words>, 3> logs_{};
    std::array<uint32_t, 3> logged_{};
    uint32_t now_ = 0;
};

} // namespace ribkit::rib
