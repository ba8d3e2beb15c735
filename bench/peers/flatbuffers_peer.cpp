// FlatBuffers as a peer: an update is built back to front in a builder that is kept, and read where it lies.
#include "bench/peers/peers.h"

#include "update_generated.h"
#include <cstring>

namespace ribkit::bench {

size_t flatbuffers_send(const host_update &update, uint8_t *out, size_t /*room*/) {
    static flatbuffers::FlatBufferBuilder builder(1 << 18);
    static std::vector<flatbuffers::Offset<flat::Route>> routes;
    builder.Clear();
    routes.clear();
    for (uint32_t i = 0; i < update.n_route; ++i) {
        const host_route &from = update.routes[i];
        const auto hops = builder.CreateVectorOfStructs(reinterpret_cast<const flat::Hop *>(from.hops), from.n_hop);
        routes.push_back(
            flat::CreateRoute(builder, from.fcid, from.mask, from.carried, from.action, from.metric, from.flag, hops));
    }
    const auto all = builder.CreateVector(routes);
    builder.Finish(flat::CreateUpdate(builder, update.uuid, update.vsan, update.oper, 0, all));
    std::memcpy(out, builder.GetBufferPointer(), builder.GetSize());
    return builder.GetSize();
}

} // namespace ribkit::bench
