// A query asks for a thousand routes from a key on; the last of an answer is where the next begins.
#include "clients/route_reader.h"

#include "base/text.h"
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
std::vector<uint8_t> ask(bus::rib_link &link, const route_reading &wanted, const model::route_key &from) {
    const uint32_t type = wanted.vsan ? RIBKIT_QUERY_VSAN_ALL : RIBKIT_QUERY_ALL;
    auto query = protocol::write_query(wanted.uuid, type, routes_a_query, from);
    if (wanted.trace) {
        rib_printf_fcu_query(query.data());
    }
    auto answer = link.ask(RIBKIT_OPCODE_FCURT_QUERY, query);
    const bool is_sound =
        rib_check_fcurt_update(answer.data(), static_cast<uint32_t>(answer.size()), nullptr) == RIB_OK;
    link.take_result(RIBKIT_OPCODE_FCURT_QUERY, is_sound ? RIB_OK : result_of(answer));
    if (!is_sound) {
        throw bus::no_answer("what came is damaged");
    }
    return answer;
}

} // namespace

model::held_routes read_routes(bus::rib_link &link, const route_reading &wanted) {
    model::held_routes all;
    model::route_key from{wanted.vsan.value_or(0), {}};
    while (from.vsan == wanted.vsan.value_or(from.vsan)) {
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
            const model::route_key key{part.get<"vsan">(), protocol::destination_of(one)};
            if (key < from || records.size() > routes_a_query) {
                throw bus::no_answer("what came is not what was asked for");
            }
            all.emplace_hint(all.end(), key, model::held_route{part.get<"uuid">(), protocol::route_of(one)});
            from = model::key_after(key);
        }
    }
    return all;
}

} // namespace ribkit::clients
