// Cap'n Proto as a peer: an update is built in one segment that is kept, and read where it lies.
#include "bench/peers/peers.h"

#include "update.capnp.h"
#include <capnp/message.h>
#include <capnp/serialize.h>
#include <kj/io.h>

namespace ribkit::bench {

size_t capnp_send(const host_update &update, uint8_t *out, size_t room) {
    // One segment from the start, as its own documents advise where speed matters.
    static kj::Array<capnp::word> scratch = kj::heapArray<capnp::word>(1 << 16);
    memset(scratch.begin(), 0, scratch.size() * sizeof(capnp::word));
    capnp::MallocMessageBuilder message(scratch);
    auto root = message.initRoot<Update>();
    root.setUuid(update.uuid);
    root.setVsan(update.vsan);
    root.setOper(update.oper);
    auto routes = root.initRoutes(update.n_route);
    for (uint32_t i = 0; i < update.n_route; ++i) {
        const host_route &from = update.routes[i];
        auto to = routes[i];
        to.setFcid(from.fcid);
        to.setMask(from.mask);
        to.setCarried(from.carried);
        to.setAction(from.action);
        to.setMetric(from.metric);
        to.setFlag(from.flag);
        auto hops = to.initHops(from.n_hop);
        for (uint32_t h = 0; h < from.n_hop; ++h) {
            hops[h].setIntf(from.hops[h].intf);
            hops[h].setDomain(from.hops[h].domain);
        }
    }
    kj::ArrayOutputStream stream(kj::arrayPtr(out, room));
    capnp::writeMessage(stream, message);
    return stream.getArray().size();
}

} // namespace ribkit::bench
