// A query asks for a thousand routes from a key on; the last of an answer is where the next begins.
#include "tools/route_reader.h"

#include "rib_check.h"
#include "rib_codes.h"
#include "rib_trace.h"
#include "tools/fcurt_message.h"
#include "tools/fcurt_query.h"
#include "tools/input_error.h"

namespace ribkit::tools {

namespace {

constexpr uint32_t routes_a_query = 1000;

/// Of what is no update: the result that it tells, where it is the RIB's answer to what it cannot use.
uint32_t result_of(std::span<const uint8_t> answer) {
    return answer.size() == RIBKIT_FCURT_RSP_SIZE ? decode_fcurt_response(answer.first<RIBKIT_FCURT_RSP_SIZE>()).result
                                                  : RIB_OK;
}

fcurt_update ask(rib_link &link, const route_reading &wanted, const route_key &from) {
    auto query = encode({wanted.uuid, wanted.vsan ? RIBKIT_QUERY_VSAN_ALL : RIBKIT_QUERY_ALL, routes_a_query, from.vsan,
                         from.to.fcid, from.to.mask});
    if (wanted.trace) {
        rib_printf_fcu_query(query.data());
    }
    const auto answer = link.ask(RIBKIT_OPCODE_FCURT_QUERY, query);
    const bool is_sound =
        rib_check_fcurt_update(answer.data(), static_cast<uint32_t>(answer.size()), nullptr) == RIB_OK;
    link.take_result(RIBKIT_OPCODE_FCURT_QUERY, is_sound ? RIB_OK : result_of(answer));
    if (!is_sound) {
        throw no_answer("what came is damaged");
    }
    return decode_fcurt_update(answer);
}

} // namespace

held_routes read_routes(rib_link &link, const route_reading &wanted) {
    held_routes all;
    route_key from{wanted.vsan.value_or(0), {}};
    while (from.vsan == wanted.vsan.value_or(from.vsan)) {
        const fcurt_update part = ask(link, wanted, from);
        if (part.changes.empty()) {
            break;
        }
        if (all.size() + part.changes.size() > wanted.most_routes) {
            throw no_answer(joined("it has more than ", wanted.most_routes, " routes"));
        }
        for (const route_change &one : part.changes) {
            const route_key key{part.vsan, one.to};
            if (key < from || part.changes.size() > routes_a_query) {
                throw no_answer("what came is not what was asked for");
            }
            all.emplace_hint(all.end(), key, held_route{part.uuid, one.what});
            from = key_after(key);
        }
    }
    return all;
}

} // namespace ribkit::tools
