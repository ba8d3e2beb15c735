// What the RIB and a module tell each other beside routes: the module's record with its ports, VSANs, which frames
// change their VSAN.
#pragma once

#include "codec/messages/info.h"
#include "model/fib.h"
#include "protocol/fib/fib_messages.h"
#include "protocol/system_messages.h"

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace ribkit::protocol {

/// A module's record, its FIB's instance, and its ports behind them.
bytes module_message(const model::module_node &node);
/// Of a message that has passed its check.
model::module_node module_of(std::span<const uint8_t> message);

/// Modules with the first 64 ports of each, as the RIB tells of them.
bytes system_info(std::span<const model::module_node> modules);
std::vector<model::module_node> modules_of(codec::view<wire::sys_info> info);
/// A module's record, alone.
bytes node_info(const model::module_node &node);

/// A port's record, alone.
bytes port_message(const model::module_port &port);
model::module_port port_of(codec::view<wire::port> port);

/// VSANs with their settings, for a module; an attribute of 0 changes nothing.
bytes vsan_update(uint32_t sequence, std::span<const std::pair<uint32_t, model::vsan_attributes>> vsans);

struct rewrite_path {
    model::rewrite_key key;
    model::rewrite_values what;

    bool operator==(const rewrite_path &) const = default;
};

/// An update of what changes its VSAN.
bytes rewrite_update(const model::fib_head &head, std::span<const rewrite_path> paths);
/// Its head, which the routes' updates have as well.
model::fib_head head_of(codec::view<wire::vsan_rewrite_update> head);
/// Of an update that has passed its check.
std::vector<rewrite_path> rewrites_of(std::span<const uint8_t> update);

bytes rewrite_answer(const model::fib_answer &answer);
model::fib_answer answer_of(codec::view<wire::vsan_rewrite_rsp> answer);

} // namespace ribkit::protocol
