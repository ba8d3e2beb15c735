// A query asks for a thousand routes from a key on; the last of an answer is where the next begins.
#include "clients/route_reader.h"

#include "base/text.h"
#include "protocol/queries.h"
#include "protocol/route_messages.h"
#include "rib_check.h"
#include "rib_codes.h"
#include "rib_trace.h"

namespace ribkit::clients {

namespace {

constexpr uint32_t routes_a_query = 1000;

/// Of what is no update: the result that it tells, where it is the RIB's answer to what it cannot use.
uint32_t result_of(std::span<const uint8_t> answer) {
    constexpr size_t size = wire::route_rsp.size;
    return answer.size() == size ? protocol::decode_fcurt_response(answer.first<size>()).result : RIB_OK;
}

/// An update that has passed its check.
std::vector<uint8_t> ask(bus::rib_link &link, const route_reading &wanted, const protocol::unicast_place &from) {
    const uint32_t type = wanted.vsan ? RIBKIT_QUERY_VSAN_ALL : RIBKIT_QUERY_ALL;
    auto query = protocol::encode(protocol::unicast_query{wanted.uuid, type, routes_a_query, from.key, from.owner});
    if (wanted.trace) {
        rib_printf_fcu_query(query.data());
    }
    auto answer = link.ask(RIBKIT_OPCODE_FCURT_QUERY, query);
    const bool is_sound =
        rib_check_fcurt_update(answer.data(), static_cast<uint32_t>(answer.size()), nullptr) == RIB_OK;
    link.take_result(RIBKIT_OPCODE_FCURT_QUERY, is_sound ? RIB_OK : result_of(answer));
    if (!is_sound) {
        bus::rib_link::drop_answer(RIBKIT_OPCODE_FCURT_QUERY, answer.size(), "what came is damaged");
    }
    return answer;
}

/// Of several routes of a destination the reader's own counts, or else the active one.
void keep(model::held_routes &all, const model::route_key &key, model::held_route one, uint32_t reader) {
    const auto [at, is_new] = all.try_emplace(key, one);
    const bool is_active = (one.what.flag & RIB_FLAG_ACTIVE) != 0;
    if (!is_new && (one.uuid == reader || (is_active && at->second.uuid != reader))) {
        at->second = std::move(one);
    }
}

} // namespace

model::held_routes read_routes(bus::rib_link &link, const route_reading &wanted) {
    model::held_routes all;
    protocol::unicast_place from{{wanted.vsan.value_or(0), {}}, 0};
    const uint32_t last = wanted.vsan.value_or(RIB_LAST_VSAN);
    while (from.key.vsan <= last) {
        const auto answer = ask(link, wanted, from);
        const protocol::update_view part(answer.data());
        const auto records = part.list<"route">();
        if (records.empty()) {
            break;
        }
        if (all.size() + records.size() > wanted.most_routes) {
            throw bus::no_answer(base::joined("it has more than ", wanted.most_routes, " routes"));
        }
        for (const protocol::record_view one : records) {
            const protocol::unicast_place place{{part.get<"vsan">(), protocol::destination_of(one)},
                                                part.get<"uuid">()};
            if (place < from || place.key.vsan > last || records.size() > routes_a_query) {
                bus::rib_link::drop_answer(RIBKIT_OPCODE_FCURT_QUERY, answer.size(),
                                           "what came is not what was asked for");
            }
            keep(all, place.key, {place.owner, protocol::route_of(one)}, wanted.uuid);
            from = protocol::place_after(place);
        }
    }
    return all;
}

} // namespace ribkit::clients
