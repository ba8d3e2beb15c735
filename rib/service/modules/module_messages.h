// Updates for modules as messages, and their answers as what the follower takes.
#pragma once

#include "codec/messages/info.h"
#include "protocol/fib/fib_messages.h"
#include "protocol/queries.h"
#include "rib/modules/module_update.h"
#include "rib/service/reply.h"

#include <cstdint>
#include <span>
#include <variant>

namespace ribkit::rib {

/// A question about differences.
struct module_question {
    protocol::bytes_of<wire::verf_query> bytes{};
    [[nodiscard]] uint32_t size() const { return static_cast<uint32_t>(bytes.size()); }
};

class module_message final : public update_sink {
  public:
    /// Throws std::bad_alloc.
    module_message();

    void begin(const module_head &head) override;
    added add(const module_path<unicast> &path) override;
    added add(const module_path<multicast> &path) override;
    added add(const module_path<label> &path) override;
    void ask(const any_key &from, uint32_t sequence) override;

    [[nodiscard]] table_id table() const { return table_; }
    [[nodiscard]] bool is_question() const { return std::holds_alternative<module_question>(now_); }
    [[nodiscard]] uint32_t opcode() const;
    [[nodiscard]] std::span<const uint8_t> message() const;

  private:
    using any_message = std::variant<module_question, protocol::label_fib_update, protocol::multicast_fib_update,
                                     protocol::unicast_fib_update>;

    bytes room_;
    table_id table_{};
    any_message now_;
};

/// The comparison of a table with the modules, as rib_verf_to_str has it.
constexpr uint32_t compared(table_id table) {
    return table == table_id::label       ? protocol::compared_labels
           : table == table_id::multicast ? protocol::compared_multicast
                                          : protocol::compared_unicast;
}

/// What a module's answer to an update says. Throws std::bad_alloc.
/// @param sequence of the update: an answer that names another one is damaged
verdict verdict_of(table_id table, uint32_t sequence, std::span<const uint8_t> answer);
/// ... to a question. Throws std::bad_alloc.
verdict findings_of(table_id table, std::span<const uint8_t> answer);

} // namespace ribkit::rib
