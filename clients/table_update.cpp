// What is different between the tables is how updates are printed, and how their answers are checked.
#include "clients/table_update.h"

#include "protocol/table_messages.h"
#include "rib_check.h"
#include "rib_codes.h"
#include "rib_trace.h"

#include <algorithm>

namespace ribkit::clients {

namespace {

template <class Table> struct update_of;
template <> struct update_of<unicast_table> {
    static constexpr auto check_answer = rib_check_fcurt_rsp;
    static constexpr auto print = rib_printf_fcurt_update;
    static constexpr auto print_route = rib_printf_fcurt;
};
template <> struct update_of<multicast_table> {
    static constexpr auto check_answer = rib_check_fcmrt_rsp;
    static constexpr auto print = rib_printf_fcmrt_update;
    static constexpr auto print_route = rib_printf_fcmrt;
};
template <> struct update_of<label_table> {
    static constexpr auto check_answer = rib_check_fclrt_rsp;
    static constexpr auto print = rib_printf_fclrt_update;
    static constexpr auto print_route = rib_printf_fclrt;
};

} // namespace

template <class Table>
update_part<Table> update_writer<Table>::write(uint32_t vsan, std::span<const change_of<Table>> changes,
                                               uint32_t oper) {
    const size_t first = changes.empty() ? 0 : protocol::record_size(changes[0].what);
    room_.resize(std::max(limit_, Table::message.size + first));
    const codec::writer<Table::message> update(room_);
    update.template set<"uuid">(uuid_).template set<"vsan">(vsan).template set<"oper">(oper);
    const size_t added = protocol::add_routes(update, changes);
    return {std::span(room_).first(update.size()), changes.first(added)};
}

template <class Table> void print_update(std::span<const uint8_t> update) {
    const codec::view<Table::message> message(update.data());
    update_of<Table>::print(message.size(), message.data());
    for (const auto record : message.template list<"route">()) {
        update_of<Table>::print_route(message.data(), record.data());
    }
}

template <class Table> protocol::fcurt_response response_in(std::span<const uint8_t> answer) {
    if (update_of<Table>::check_answer(answer.data(), static_cast<uint32_t>(answer.size()), nullptr) != RIB_OK) {
        bus::rib_link::drop_answer(Table::update, answer.size(), bus::result_text(RIB_MISSING_RESPONSE));
    }
    return protocol::decode_fcurt_response(answer.template first<wire::route_rsp.size>());
}

template class update_writer<unicast_table>;
template class update_writer<multicast_table>;
template class update_writer<label_table>;
template void print_update<unicast_table>(std::span<const uint8_t>);
template void print_update<multicast_table>(std::span<const uint8_t>);
template void print_update<label_table>(std::span<const uint8_t>);
template protocol::fcurt_response response_in<unicast_table>(std::span<const uint8_t>);
template protocol::fcurt_response response_in<multicast_table>(std::span<const uint8_t>);
template protocol::fcurt_response response_in<label_table>(std::span<const uint8_t>);

} // namespace ribkit::clients
