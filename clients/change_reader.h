// All that changes in the RIB's tables, as it changes: what the RIB tells, and where that may be incomplete, what is
// different from before. No change is told twice, and nothing that changes nothing.
#pragma once

#include "clients/table_reader.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace ribkit::clients {

struct held_counts {
    size_t unicast = 0, multicast = 0, label = 0;
};

/// What is done with what is read.
struct change_listener {
    /// Routes that have changed: an update message of one client and VSAN, which has passed its check.
    std::function<void(uint32_t opcode, std::span<const uint8_t> update)> changed;
    /// All routes have been read, and what was different is told.
    std::function<void(const held_counts &held)> read;
    /// Some changes may be missing; the tables are read again.
    std::function<void(const std::string &why)> missed;
};

class change_reader {
  public:
    /// @param link of the client `uuid`, which the reader has for itself and keeps registered
    change_reader(bus::rib_link &link, uint32_t uuid, change_listener listener);

    /// Reads the tables. Throws no_answer, refused_question and link_closed.
    void start();

    /// Waits for changes until the link is closed, and throws link_closed then; also refused_question. A RIB that does
    /// not answer is waited for.
    void follow();

  private:
    template <class Table> using held_table = std::map<std::pair<typename Table::key, uint32_t>, typename Table::route>;
    using held_tables = std::tuple<held_table<unicast_table>, held_table<multicast_table>, held_table<label_table>>;

    void listen(std::chrono::milliseconds limit);
    void hear(uint32_t opcode, std::span<const uint8_t> message);
    template <class Table> void take(std::span<const uint8_t> message);
    void miss(const std::string &why);
    void say_alive();
    void read_again();
    template <class Table> held_table<Table> read() const;
    template <class Table, class View> std::vector<bool> keep(View update);
    template <class Table> void tell_differences(const held_tables &before) const;

    bus::rib_link &link_;
    uint32_t uuid_;
    change_listener listener_;
    held_tables held_;
    std::optional<std::chrono::steady_clock::time_point> said_; ///< when it registered last, with this RIB
    bool misses_ = false;
    bool reads_ = false; ///< what is heard is part of what is being read
    bool knows_ = false; ///< the tables have been read once
};

} // namespace ribkit::clients
