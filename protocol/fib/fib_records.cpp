// One message of the catalogue behind the other; what is read has passed the check of the whole.
#include "protocol/fib/fib_records.h"

#include <algorithm>
#include <array>

namespace ribkit::protocol {

using codec::view;
using codec::writer;

namespace {

void write_node(std::span<uint8_t> room, const model::module_node &node) {
    const writer<wire::node> record(room);
    record.set<"module">(static_cast<uint8_t>(node.number - 1)).set<"type">(node.type).set<"sup_state">(node.sup_state);
    record.set<"ports">(static_cast<uint16_t>(node.ports.size())).set<"node">(node.node).set<"address">(node.address);
    record.set<"fib_state">(static_cast<uint32_t>(node.state));
}

void write_sync(std::span<uint8_t> room, const model::module_node &node) {
    const writer<wire::fib_sync> sync(room);
    sync.set<use<wire::fib_sync, "module">>(static_cast<uint8_t>(node.number - 1));
    sync.set<use<wire::fib_sync, "instance">>(node.instance).set<use<wire::fib_sync, "sequence">>(node.sequence);
    sync.set<use<wire::fib_sync, "entries">>(node.entries);
}

model::module_node node_of(view<wire::node> record) {
    return {.number = record.shown<"module">(),
            .type = record.get<"type">(),
            .sup_state = record.get<"sup_state">(),
            .node = record.get<"node">(),
            .address = record.get<"address">(),
            .state = static_cast<model::fib_state>(record.get<"fib_state">())};
}

void write_port(std::span<uint8_t> room, const model::module_port &port) {
    const writer<wire::port> record(room);
    record.set<"type">(port.type).set<"slot">(port.slot).set<"port">(port.port).set<"channel">(port.channel);
    record.set<"status">(port.status).set<"bundle">(static_cast<uint8_t>(port.in_bundle ? UINT8_MAX : 0));
    record.set<"d_idx">(port.index).set<"intf">(port.if_index).set<"mode">(port.mode).set<"vsan">(port.vsan);
    record.set<"iod">(port.in_order);
}

constexpr size_t ports_at = wire::node.size + wire::fib_sync.size;

void write_rewrite(std::span<uint8_t> room, const rewrite_path &one) {
    const auto &[key, what] = one;
    const writer<wire::vsan_rewrite_path> path(room);
    path.set<use<wire::vsan_rewrite_path, "vsan">>(key.vsan).set<use<wire::vsan_rewrite_path, "intf">>(key.if_index);
    path.set<use<wire::vsan_rewrite_path, "source">>(key.source.fcid);
    path.set<use<wire::vsan_rewrite_path, "source_mask">>(key.source.mask);
    path.set<use<wire::vsan_rewrite_path, "to">>(key.to.fcid);
    path.set<use<wire::vsan_rewrite_path, "to_mask">>(key.to.mask);
    path.set<use<wire::vsan_rewrite_path, "new_vsan">>(what.vsan);
    path.set<use<wire::vsan_rewrite_path, "new_source">>(what.source);
    path.set<use<wire::vsan_rewrite_path, "new_to">>(what.to);
}

rewrite_path rewrite_of(view<wire::vsan_rewrite_path> path) {
    const uint32_t source_mask = path.get<use<wire::vsan_rewrite_path, "source_mask">>();
    const uint32_t to_mask = path.get<use<wire::vsan_rewrite_path, "to_mask">>();
    return {{path.get<use<wire::vsan_rewrite_path, "vsan">>(),
             path.get<use<wire::vsan_rewrite_path, "intf">>(),
             {path.get<use<wire::vsan_rewrite_path, "source">>() & source_mask, source_mask},
             {path.get<use<wire::vsan_rewrite_path, "to">>() & to_mask, to_mask}},
            {path.get<use<wire::vsan_rewrite_path, "new_vsan">>(),
             path.get<use<wire::vsan_rewrite_path, "new_source">>(),
             path.get<use<wire::vsan_rewrite_path, "new_to">>()}};
}

} // namespace

bytes module_message(const model::module_node &node) {
    bytes message(ports_at + node.ports.size() * wire::port.size);
    const std::span<uint8_t> room(message);
    write_node(room, node);
    write_sync(room.subspan(wire::node.size), node);
    for (size_t i = 0; i < node.ports.size(); i++) {
        write_port(room.subspan(ports_at + i * wire::port.size), node.ports[i]);
    }
    return message;
}

model::module_node module_of(std::span<const uint8_t> message) {
    const view<wire::node> record(message.data());
    const view<wire::fib_sync> sync(message.data() + wire::node.size);
    model::module_node node = node_of(record);
    node.instance = sync.get<use<wire::fib_sync, "instance">>();
    node.sequence = sync.get<use<wire::fib_sync, "sequence">>();
    node.entries = sync.get<use<wire::fib_sync, "entries">>();
    for (size_t i = 0; i < record.get<"ports">(); i++) {
        node.ports.push_back(port_of(view<wire::port>(message.data() + ports_at + i * wire::port.size)));
    }
    return node;
}

bytes system_info(std::span<const model::module_node> modules) {
    bytes message(wire::sys_info.size + modules.size() * wire::module_entry.size);
    const codec::writable_view<wire::sys_info> info(message.data());
    info.set<"n_module">(static_cast<uint32_t>(modules.size()));
    const auto entries = info.list<"module">();
    for (size_t i = 0; i < modules.size(); i++) {
        const model::module_node &node = modules[i];
        const auto ports = entries[i].list<"port">();
        std::array<uint8_t, 4> present{};
        write_node({entries[i].list<"node">()[0].data(), wire::node.size}, node);
        for (size_t port = 0; port < std::min<size_t>(node.ports.size(), ports.size()); port++) {
            write_port({ports[port].data(), wire::port.size}, node.ports[port]);
            if (port < 8 * present.size()) {
                present[port / 8] |= static_cast<uint8_t>(1U << port % 8);
            }
        }
        entries[i].set_bytes<"ports">(present);
    }
    return message;
}

std::vector<model::module_node> modules_of(view<wire::sys_info> info) {
    std::vector<model::module_node> all;
    for (const auto entry : info.list<"module">()) {
        const view<wire::node> record = entry.list<"node">()[0];
        model::module_node node = node_of(record);
        const auto ports = entry.list<"port">();
        for (size_t i = 0; i < std::min<size_t>(record.get<"ports">(), ports.size()); i++) {
            node.ports.push_back(port_of(ports[i]));
        }
        all.push_back(std::move(node));
    }
    return all;
}

bytes node_info(const model::module_node &node) {
    bytes message(wire::node.size);
    write_node(message, node);
    return message;
}

bytes port_message(const model::module_port &port) {
    bytes message(wire::port.size);
    write_port(message, port);
    return message;
}

model::module_port port_of(view<wire::port> port) {
    return {port.get<"type">(),   port.get<"slot">(),        port.get<"port">(),  port.get<"channel">(),
            port.get<"status">(), port.get<"bundle">() != 0, port.get<"d_idx">(), port.get<"intf">(),
            port.get<"mode">(),   port.get<"vsan">(),        port.get<"iod">()};
}

bytes vsan_update(uint32_t sequence, std::span<const std::pair<uint32_t, model::vsan_attributes>> vsans) {
    bytes message = vsan_info(vsans);
    codec::writable_view<wire::vsan_update>(message.data()).set<use<wire::vsan_update, "sequence">>(sequence);
    return message;
}

bytes rewrite_update(const model::fib_head &head, std::span<const rewrite_path> paths) {
    bytes message(wire::vsan_rewrite_update.size + paths.size() * wire::vsan_rewrite_path.size);
    const std::span<uint8_t> room(message);
    const writer<wire::vsan_rewrite_update> update(room);
    update.set<use<wire::vsan_rewrite_update, "oper">>(head.oper);
    update.set<use<wire::vsan_rewrite_update, "vsan">>(head.vsan);
    update.set<use<wire::vsan_rewrite_update, "n_path">>(static_cast<uint32_t>(paths.size()));
    update.set<use<wire::vsan_rewrite_update, "sequence">>(head.sequence);
    for (size_t i = 0; i < paths.size(); i++) {
        write_rewrite(room.subspan(wire::vsan_rewrite_update.size + i * wire::vsan_rewrite_path.size), paths[i]);
    }
    return message;
}

model::fib_head head_of(view<wire::vsan_rewrite_update> head) {
    return {head.get<use<wire::vsan_rewrite_update, "oper">>(), head.get<use<wire::vsan_rewrite_update, "vsan">>(),
            head.get<use<wire::vsan_rewrite_update, "sequence">>()};
}

std::vector<rewrite_path> rewrites_of(std::span<const uint8_t> update) {
    std::vector<rewrite_path> paths;
    for (auto left = update.subspan(wire::vsan_rewrite_update.size); !left.empty();
         left = left.subspan(wire::vsan_rewrite_path.size)) {
        paths.push_back(rewrite_of(view<wire::vsan_rewrite_path>(left.data())));
    }
    return paths;
}

bytes rewrite_answer(const model::fib_answer &answer) {
    bytes message(wire::vsan_rewrite_rsp.size);
    const writer<wire::vsan_rewrite_rsp> said(message);
    said.set<use<wire::vsan_rewrite_rsp, "result">>(answer.result);
    said.set<use<wire::vsan_rewrite_rsp, "oper">>(answer.oper);
    said.set<use<wire::vsan_rewrite_rsp, "vsan">>(answer.vsan);
    said.set<use<wire::vsan_rewrite_rsp, "accepted">>(answer.accepted);
    said.set<use<wire::vsan_rewrite_rsp, "sequence">>(answer.sequence);
    return message;
}

model::fib_answer answer_of(view<wire::vsan_rewrite_rsp> answer) {
    return {answer.get<use<wire::vsan_rewrite_rsp, "result">>(), answer.get<use<wire::vsan_rewrite_rsp, "oper">>(),
            answer.get<use<wire::vsan_rewrite_rsp, "vsan">>(), answer.get<use<wire::vsan_rewrite_rsp, "accepted">>(),
            answer.get<use<wire::vsan_rewrite_rsp, "sequence">>()};
}

} // namespace ribkit::protocol
