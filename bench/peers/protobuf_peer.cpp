// Protocol Buffers as a peer: an update becomes an object and back; the object is kept, so that its memory is.
#include "bench/peers/peers.h"

#include "update.pb.h"

namespace ribkit::bench {

size_t protobuf_send(const host_update &update, uint8_t *out, size_t /*room*/) {
    static proto::Update message; // kept, so that its memory is
    message.Clear();
    message.set_uuid(update.uuid);
    message.set_vsan(update.vsan);
    message.set_oper(update.oper);
    for (uint32_t i = 0; i < update.n_route; ++i) {
        const host_route &from = update.routes[i];
        proto::Route *to = message.add_routes();
        to->set_fcid(from.fcid);
        to->set_mask(from.mask);
        to->set_carried(from.carried);
        to->set_action(from.action);
        to->set_metric(from.metric);
        to->set_flag(from.flag);
        for (uint32_t h = 0; h < from.n_hop; ++h) {
            proto::Hop *hop = to->add_hops();
            hop->set_intf(from.hops[h].intf);
            hop->set_domain(from.hops[h].domain);
        }
    }
    const size_t size = message.ByteSizeLong();
    message.SerializeWithCachedSizesToArray(out);
    return size;
}

} // namespace ribkit::bench
