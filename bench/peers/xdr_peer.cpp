// XDR as a peer: the C library's calls, one number after the other, in an order that both sides know.
#include "bench/peers/peers.h"

#include <rpc/xdr.h>

namespace ribkit::bench {

size_t xdr_send(const host_update &update, uint8_t *out, size_t room) {
    XDR stream;
    xdrmem_create(&stream, reinterpret_cast<char *>(out), static_cast<u_int>(room), XDR_ENCODE);
    const auto word = [&stream](uint32_t value) { xdr_uint32_t(&stream, &value); };
    word(update.uuid);
    word(update.vsan);
    word(update.oper);
    word(update.n_route);
    for (uint32_t i = 0; i < update.n_route; ++i) {
        const host_route &from = update.routes[i];
        uint64_t carried = from.carried;
        word(from.fcid);
        word(from.mask);
        xdr_uint64_t(&stream, &carried);
        word(from.action);
        word(from.metric);
        word(from.flag);
        word(from.n_hop);
        for (uint32_t h = 0; h < from.n_hop; ++h) {
            word(from.hops[h].intf);
            word(from.hops[h].domain);
        }
    }
    return xdr_getpos(&stream);
}

} // namespace ribkit::bench
