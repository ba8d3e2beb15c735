// The same update through other formats: each takes the host form that ribkit converts, and writes its own bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ribkit::bench {

/// A unicast route record in host form.
struct host_hop {
    uint32_t intf, domain;
};
struct host_route {
    uint32_t fcid, mask;
    uint64_t carried;
    uint32_t action, metric, flag, n_hop;
    host_hop hops[4];
};
/// Header words of an update, and where its routes are.
struct host_update {
    uint32_t uuid, vsan, oper, n_route;
    const host_route *routes;
};

/// Writes the update into `out`, which is large enough. @return its bytes in that format
using sender = size_t (*)(const host_update &update, uint8_t *out, size_t room);

size_t capnp_send(const host_update &update, uint8_t *out, size_t room);
size_t flatbuffers_send(const host_update &update, uint8_t *out, size_t room);
size_t protobuf_send(const host_update &update, uint8_t *out, size_t room);
size_t xdr_send(const host_update &update, uint8_t *out, size_t room);

} // namespace ribkit::bench
