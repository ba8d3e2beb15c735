// Updates of one of the three tables: how the changes of a VSAN are put into messages, and what the RIB answers.
#pragma once

#include "bus/rib_link.h"
#include "clients/table_reader.h"
#include "model/table_changes.h"
#include "protocol/route_messages.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::clients {

template <class Table> using change_of = model::table_change<typename Table::key_in_vsan, typename Table::route>;

/// A message, and what is in it.
template <class Table> struct update_part {
    std::span<uint8_t> bytes;
    std::span<const change_of<Table>> changes;
};

template <class Table> class update_writer {
  public:
    /// @param limit of a message, in bytes
    update_writer(uint32_t uuid, size_t limit) : uuid_(uuid), limit_(limit) {}

    /// The next message: as many of the changes as may be in one, whatever the first needs. It lasts until the next
    /// one is written.
    update_part<Table> write(uint32_t vsan, std::span<const change_of<Table>> changes, uint32_t oper);

  private:
    uint32_t uuid_;
    size_t limit_;
    std::vector<uint8_t> room_;
};

/// As --trace shows it: the message, and its routes.
template <class Table> void print_update(std::span<const uint8_t> update);

/// What the RIB has answered to an update. Throws no_answer where that is damaged.
template <class Table> protocol::fcurt_response response_in(std::span<const uint8_t> answer);

extern template class update_writer<unicast_table>;
extern template class update_writer<multicast_table>;
extern template class update_writer<label_table>;

} // namespace ribkit::clients
