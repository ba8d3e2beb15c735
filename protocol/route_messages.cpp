// Every word is written and read where it stands, in network order.
#include "protocol/route_messages.h"

#include "protocol/uses.h"

using namespace ribkit::codec;

namespace ribkit::protocol {

bool add_route(const update_writer &update, uint32_t action, const model::destination &to,
               const model::route_values &what) {
    const auto record = update.add<"route">();
    record.set<"fcid">(to.fcid).set<"mask">(to.mask).set<"action">(action);
    const auto &[rctl, rctl_mask, rewrite, a, b, c, d, e] = what.carried;
    record.set<"rctl">(rctl).set<"rctl_mask">(rctl_mask).set<"byte_10">(rewrite);
    record.set_bytes<"bytes_11">(std::array{a, b, c, d, e});
    record.set<"metric">(what.metric).set<"flag">(what.flag);
    for (const model::next_hop &hop : what.hops) {
        record.add<"hop">().set<"intf">(hop.if_index).set<"domain">(hop.domain);
    }
    if (!update.is_whole()) {
        update.take_back<"route">(record);
        return false;
    }
    return true;
}

model::destination destination_in(record_view record) {
    const uint32_t mask = record.get<"mask">();
    return {record.get<"fcid">() & mask, mask};
}

model::route route_of(record_view record) {
    model::route what{record.get<"metric">(), record.get<"flag">(), {}, carried_by(record)};
    const auto hops = record.list<"hop">();
    what.hops.reserve(hops.size());
    for (const auto hop : hops) {
        what.hops.push_back({hop.get<"intf">(), hop.get<"domain">()});
    }
    return what;
}

std::array<uint8_t, wire::route_rsp.size> encode(const fcurt_response &response) {
    std::array<uint8_t, wire::route_rsp.size> bytes;
    writer<wire::route_rsp>(bytes)
        .set<use<wire::route_rsp, "result">>(response.result)
        .set<use<wire::route_rsp, "oper">>(response.oper)
        .set<use<wire::route_rsp, "vsan">>(response.vsan)
        .set<use<wire::route_rsp, "accepted">>(response.accepted)
        .set<use<wire::route_rsp, "held">>(response.held);
    return bytes;
}

fcurt_response decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size> bytes) {
    const view<wire::route_rsp> response(bytes.data());
    return {response.get<use<wire::route_rsp, "result">>(), response.get<use<wire::route_rsp, "oper">>(),
            response.get<use<wire::route_rsp, "vsan">>(), response.get<use<wire::route_rsp, "accepted">>(),
            response.get<use<wire::route_rsp, "held">>()};
}

} // namespace ribkit::protocol
