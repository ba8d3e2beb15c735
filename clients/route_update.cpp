// The message gets as much room as its record takes.
#include "clients/route_update.h"

#include "protocol/table_messages.h"
#include "rib_codes.h"

namespace ribkit::clients {

namespace {

/// A message with the record that `add` adds, and room for it.
template <const codec::layout &Update, class Add>
std::vector<uint8_t> message_of(uint32_t client, uint32_t vsan, size_t most, const Add &add) {
    std::vector<uint8_t> bytes(Update.size + most);
    const codec::writer<Update> update(bytes);
    update.template set<"uuid">(client).template set<"vsan">(vsan).template set<"oper">(RIB_OPER_UPDATE);
    add(update);
    bytes.resize(update.size());
    return bytes;
}

} // namespace

std::vector<uint8_t> update_with(uint32_t client, uint32_t action, const model::route_key &key,
                                 const model::route_values &what) {
    return message_of<wire::fcurt_update>(client, key.vsan, protocol::record_size(what),
                                          [&](const auto &to) { protocol::add_route(to, action, key.to, what); });
}

std::vector<uint8_t> update_with(uint32_t client, uint32_t action, const model::multicast_key &key,
                                 const model::multicast_values &what) {
    return message_of<wire::fcmrt_update>(client, key.vsan, protocol::record_size(what),
                                          [&](const auto &to) { protocol::add_route(to, action, key.to, what); });
}

std::vector<uint8_t> update_with(uint32_t client, uint32_t action, const model::label_key &key,
                                 const model::label_values &what) {
    return message_of<wire::fclrt_update>(client, key.vsan, protocol::record_size(what),
                                          [&](const auto &to) { protocol::add_route(to, action, key, what); });
}

} // namespace ribkit::clients
