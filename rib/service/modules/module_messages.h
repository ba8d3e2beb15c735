// Updates for modules as messages, and their answers as what the follower takes.
#pragma once

#include "protocol/fib/fib_messages.h"
#include "rib/modules/module_update.h"
#include "rib/service/reply.h"

#include <cstdint>
#include <span>
#include <variant>

namespace ribkit::rib {

class module_message final : public update_sink {
  public:
    /// Throws std::bad_alloc.
    module_message();

    void begin(const module_head &head) override;
    added add(const module_path<unicast> &path) override;
    added add(const module_path<multicast> &path) override;
    added add(const module_path<label> &path) override;

    [[nodiscard]] table_id table() const { return table_; }
    [[nodiscard]] uint32_t opcode() const;
    [[nodiscard]] std::span<const uint8_t> message() const;

  private:
    /// By table_id, behind nothing.
    using any_update = std::variant<std::monostate, protocol::label_fib_update, protocol::multicast_fib_update,
                                    protocol::unicast_fib_update>;

    bytes room_;
    table_id table_{};
    any_update now_;
};

/// What a module's answer to an update says. Throws std::bad_alloc.
/// @param sequence of the update: an answer that names another one is damaged
verdict verdict_of(table_id table, uint32_t sequence, std::span<const uint8_t> answer);

} // namespace ribkit::rib
